// Where what a host names lies among the cached units of an area.
#ifndef DOV417MODBUS_UNIT_LAYOUT_H
#define DOV417MODBUS_UNIT_LAYOUT_H

#include <QString>

#include "protocol/register_table.h"

// What marking and reading do with values of one kind.
struct ValueShape {
    int lengthPerValue; // units of a host's length that one value takes
    int unitsPerValue;
    int firstFlag; // view flag of the value's first unit, the next units take the next flags
};

// What a call of the host covers: bits of a bit type, else 16-bit words.
struct HostRange {
    const RegisterType& type;
    int station;
    const QString& regName;
    int address;
    int length;
};

// Where a bit address lies. A bit below address 0 may fall outside of its unit: it does not exist.
struct BitPlace {
    BitPlace(int address, int unitBits)
        : unit(address / unitBits), bit(address % unitBits), byte(bit / 8), bitInByte(bit % 8)
    {
    }

    bool exists() const
    {
        return bit >= 0;
    }

    int unit;
    int bit;
    int byte;
    int bitInByte;
};

#endif
