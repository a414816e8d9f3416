// The host's reads, from the cache only.
#ifndef DOV417MODBUS_READING_VALUES_H
#define DOV417MODBUS_READING_VALUES_H

#include "protocol/register_table.h"
#include "records.h"

// intf_getData for any row of a register table.
void readUnits(const RegisterType& type, int station, int address, int length, unsigned char* out);

#endif
