#include "protocol/register_table.h"

#include "protocol/function_codes.h"
#include "protocol/init_order.h"

namespace {

QString latin1(const char* text)
{
    return QString::fromLatin1(text);
}

} // namespace

DOV417_BEFORE_DRIVER const QString REG_LIST[registerTypeCount] = {
    latin1("I_bit"), latin1("Q_bit"), latin1("M_bit"), latin1("R_bit"),
    latin1("I_W"),   latin1("Q_W"),   latin1("M_W"),   latin1("R_W"),
    latin1("R_D"),   latin1("T"),     latin1("C")};

#define ROW(format, lowest, highest, dataBits, access, unitBits, timerCounter)                     \
    {                                                                                              \
        latin1(format), latin1(lowest), latin1(highest), latin1(dataBits), latin1(access),         \
            latin1(unitBits), latin1(timerCounter)                                                 \
    }

// The highest double word is one below the highest word: its second word is still in the area.
DOV417_BEFORE_DRIVER const QString ADDRESS_RANGE_PRO[registerTypeCount][rangeFieldCount] = {
    ROW("DDD.DD", "0.0", "127.15", "1", "RW", "16", "0"),   // I_bit
    ROW("DDD.DD", "0.0", "127.15", "1", "RW", "16", "0"),   // Q_bit
    ROW("DDD.DD", "0.0", "127.15", "1", "RW", "16", "0"),   // M_bit
    ROW("DDDD.DD", "0.0", "3999.15", "1", "RW", "16", "0"), // R_bit
    ROW("DDD", "0", "127", "16", "RW", "16", "0"),          // I_W
    ROW("DDD", "0", "127", "16", "RW", "16", "0"),          // Q_W
    ROW("DDD", "0", "127", "16", "RW", "16", "0"),          // M_W
    ROW("DDDD", "0", "3999", "16", "RW", "16", "0"),        // R_W
    ROW("DDDD", "0", "3998", "32", "RW", "16", "0"),        // R_D
    ROW("DDD", "0", "127", "16", "RW", "16", "1"),          // T
    ROW("DDD", "0", "127", "16", "RW", "16", "1")};         // C

#undef ROW

const int ADDRESS_RANGE_FUNC[registerTypeCount][2] = {
    {readCoils, 0x0000},            // I_bit
    {readCoils, 0x0800},            // Q_bit
    {readCoils, 0x1000},            // M_bit
    {readHoldingRegisters, 0x0500}, // R_bit
    {readCoils, 0x0000},            // I_W
    {readCoils, 0x0800},            // Q_W
    {readCoils, 0x1000},            // M_W
    {readHoldingRegisters, 0x0500}, // R_W
    {readHoldingRegisters, 0x0500}, // R_D
    {readHoldingRegisters, 0x0180}, // T
    {readHoldingRegisters, 0x0200}, // C
};

QString areaOf(const QString& regName)
{
    const int underscore = static_cast<int>(regName.indexOf(QLatin1Char('_')));
    return underscore < 0 ? regName : regName.left(underscore);
}

static ValueKind kindOf(int dataBits, bool bitNamed)
{
    switch (dataBits) {
    case 1:
        return bitNamed ? bitOfUnit : namedBit;
    case 8:
        return bitNamed ? bitOfUnit : byteValue;
    case 16:
        return wordValue;
    case 32:
        return dwordValue;
    }
    return noValue;
}

RegisterType deriveRegisterType(const QString& name, const QString (&row)[rangeFieldCount],
                                int functionCode, int baseAddress)
{
    RegisterType type;
    type.name = name;
    type.area = areaOf(name);
    type.wordName = name;
    if (type.area.size() != name.size()) {
        type.wordName = type.area;
        type.wordName.append(QLatin1String("_W"));
    }
    type.dataBits = row[dataBitsField].toInt();
    type.unitBits = row[unitBitsField].toInt();
    type.timerCounter = row[timerCounterField].toInt();
    type.bitNamed = name.contains(QLatin1String("_bit"));
    type.lowByteFirst = type.area == QLatin1String("I") || type.area == QLatin1String("Q") ||
                        type.area == QLatin1String("M");
    type.values = kindOf(type.dataBits, type.bitNamed);
    type.functionCode = functionCode;
    type.baseAddress = baseAddress;
    return type;
}

namespace {

struct RegisterTypes {
    RegisterTypes()
    {
        for (int i = 0; i < registerTypeCount; ++i) {
            rows[i] = deriveRegisterType(REG_LIST[i], ADDRESS_RANGE_PRO[i],
                                         ADDRESS_RANGE_FUNC[i][0], ADDRESS_RANGE_FUNC[i][1]);
            shareName(rows[i].wordName);
        }
    }

    // One text a name: it is found by its place.
    static void shareName(QString& name)
    {
        for (int i = 0; i < registerTypeCount; ++i) {
            if (REG_LIST[i] == name) {
                name = REG_LIST[i];
            }
        }
    }

    RegisterType rows[registerTypeCount];
};

DOV417_BEFORE_DRIVER const RegisterTypes types;

} // namespace

const RegisterType& registerType(int index)
{
    return types.rows[index];
}
