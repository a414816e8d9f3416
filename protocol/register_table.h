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

// How the values of a register type lie in the units of its area.
enum UnitLayout {
    wordUnits,       // a 16-bit value a unit: the word types of this controller
    wordsOverBytes,  // a 16-bit value over two byte units
    dwordUnits,      // a 32-bit value a unit
    dwordsOverWords, // a 32-bit value over two word units: "R_D"
    dwordsOverBytes, // a 32-bit value over four byte units
    byteUnits,       // a value of one byte a unit
    namedUnits,      // a value of one bit a unit, under a name without "_bit"
    bitsOfUnits,     // a value a bit of a word or byte unit: the bit types of this controller
    noUnits
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
    UnitLayout layout;
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
