// The controller's memory as the host sees it: eleven register types.
#ifndef DOV417MODBUS_REGISTER_TABLE_H
#define DOV417MODBUS_REGISTER_TABLE_H

#include <QString>

enum {
    registerTypeCount = 11
};

// Columns of ADDRESS_RANGE_PRO.
enum RangeField {
    addressFormat = 0,     // "DDD": a number, radix by the last letter; "DDD.DD": word.bit
    lowestAddress = 1,     // text in the type's own format
    highestAddress = 2,    // text in the type's own format
    dataBitsField = 3,     // "1", "16" or "32"
    accessField = 4,       // "R", "W" or "RW"
    unitBitsField = 5,     // width of one address unit
    timerCounterField = 6, // "1": announced under the area name alone
    rangeFieldCount = 7
};

extern const QString REG_LIST[registerTypeCount];
extern const QString ADDRESS_RANGE_PRO[registerTypeCount][rangeFieldCount];

// Modbus function code of a read and base address in the slave.
extern const int ADDRESS_RANGE_FUNC[registerTypeCount][2];

// What a host's values of a register type are.
enum ValueKind {
    wordValue,
    dwordValue, // over two units of this controller: "R_D"
    byteValue,
    namedBit, // a unit a bit, under a name without "_bit"
    bitOfUnit,
    noValue,
    valueKindCount
};

// A row of the tables with its texts turned into numbers, once.
struct RegisterType {
    QString name;
    QString area;     // the name up to its first "_"
    QString wordName; // of the area's words, by which cyclic reads go; the name where it has no "_"
    int dataBits;
    int unitBits;
    int timerCounter;
    bool bitNamed;     // the name contains "_bit"
    bool lowByteFirst; // in a reply: coils arrive with the first one in bit 0 of the first byte
    ValueKind values;
    int functionCode;
    int baseAddress;
};

const RegisterType& registerType(int index);

// The derivation itself, for any row.
RegisterType deriveRegisterType(const QString& name, const QString (&row)[rangeFieldCount],
                                int functionCode, int baseAddress);

// "M" for "M_bit" and "M_W", "T" for "T".
QString areaOf(const QString& regName);

#endif
