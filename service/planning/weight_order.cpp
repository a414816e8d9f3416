#include "planning/weight_order.h"

#include "protocol.h"
#include "protocol/address_text.h"

int getRegAddressWeight(int station, QString regName, int address, int)
{
    return addressWeight(driver.regNames, station, regName, address);
}
