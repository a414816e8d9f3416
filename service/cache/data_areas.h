// The cache: marking what the host watches, storing what the host wrote.
#ifndef DOV417MODBUS_DATA_AREAS_H
#define DOV417MODBUS_DATA_AREAS_H

#include <QList>
#include <QString>

#include "protocol/register_table.h"
#include "records.h"

// Index of the unit's record, created at the end of the list if it is missing.
int getIndexOfDataArea(int station, QString area, int address, QList<_DATA_>& list);

// Marks the views that a host address covers. -1 for an unknown register name, else 0.
int _setDataAreaMonitorFlag(int station, QString regName, int address, int length);

// Stores a host write as pending and announces what it changes.
void write_saveDataToArea(int station, QString regName, int address, int length,
                          unsigned char* data);

// The same for any row of a register table.
void markViews(const RegisterType& type, int station, int address, int length);
void storeWrite(const RegisterType& type, int station, const QString& regName, int address,
                int length, const unsigned char* data);

// How the values of a register type lie in the units of its area.
enum UnitLayout {
    wordUnits,       // a 16-bit value a unit
    wordsOverBytes,  // a 16-bit value over two byte units
    dwordUnits,      // a 32-bit value a unit
    dwordsOverWords, // a 32-bit value over two word units: "R_D"
    dwordsOverBytes, // a 32-bit value over four byte units
    singleUnits,     // a value of one byte a unit
    bitsOfUnits,     // a value a bit of a word or byte unit
    noUnits
};

UnitLayout layoutOf(const RegisterType& type);

// What marking and reading do with the values of a layout (not for bitsOfUnits and noUnits).
struct ValueShape {
    int lengthPerValue; // what one value counts in a host's length
    int unitsPerValue;
    int firstFlag; // view flag of the value's first unit, the next units take the next flags
    int bytesPerUnit;
};

const ValueShape& shapeOf(UnitLayout layout);

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
