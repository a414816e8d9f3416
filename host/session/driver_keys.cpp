#include "session/driver_keys.h"

namespace dov417 {

KEY_ADDRESS keyOf(const Address& address)
{
    KEY_ADDRESS key = KEY_ADDRESS();
    key.stationNo = address.station;
    key.regName = QString::fromStdString(address.regName);
    key.address = address.first;
    key.length = address.length;
    key.bitFlag = address.width == Width::bit ? bitItems : 0;
    return key;
}

} // namespace dov417
