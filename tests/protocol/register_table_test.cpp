#include "protocol/register_table.h"

#include <set>

#include "protocol/frame_building.h"
#include <gtest/gtest.h>

#include "made_records.h"

namespace {

struct ManualRow {
    const char* name;
    const char* fields[rangeFieldCount];
    int functionCode;
    int baseAddress;
    const char* area;
    int dataBits;
    int timerCounter;
    bool bitNamed;
};

// What the controller's manual says.
const ManualRow manual[registerTypeCount] = {
    {"I_bit", {"DDD.DD", "0.0", "127.15", "1", "RW", "16", "0"}, 1, 0x0000, "I", 1, 0, true},
    {"Q_bit", {"DDD.DD", "0.0", "127.15", "1", "RW", "16", "0"}, 1, 0x0800, "Q", 1, 0, true},
    {"M_bit", {"DDD.DD", "0.0", "127.15", "1", "RW", "16", "0"}, 1, 0x1000, "M", 1, 0, true},
    {"R_bit", {"DDDD.DD", "0.0", "3999.15", "1", "RW", "16", "0"}, 3, 0x0500, "R", 1, 0, true},
    {"I_W", {"DDD", "0", "127", "16", "RW", "16", "0"}, 1, 0x0000, "I", 16, 0, false},
    {"Q_W", {"DDD", "0", "127", "16", "RW", "16", "0"}, 1, 0x0800, "Q", 16, 0, false},
    {"M_W", {"DDD", "0", "127", "16", "RW", "16", "0"}, 1, 0x1000, "M", 16, 0, false},
    {"R_W", {"DDDD", "0", "3999", "16", "RW", "16", "0"}, 3, 0x0500, "R", 16, 0, false},
    {"R_D", {"DDDD", "0", "3998", "32", "RW", "16", "0"}, 3, 0x0500, "R", 32, 0, false},
    {"T", {"DDD", "0", "127", "16", "RW", "16", "1"}, 3, 0x0180, "T", 16, 1, false},
    {"C", {"DDD", "0", "127", "16", "RW", "16", "1"}, 3, 0x0200, "C", 16, 1, false},
};

TEST(RegisterTable, JoinedNamesAreTheElevenInTableOrder)
{
    QStringList names;
    for (int i = 0; i < registerTypeCount; ++i) {
        names.append(REG_LIST[i]);
    }
    EXPECT_EQ(text(names.join(name(","))), "I_bit,Q_bit,M_bit,R_bit,I_W,Q_W,M_W,R_W,R_D,T,C");
}

TEST(RegisterTable, HasTheSevenTextsOfEveryType)
{
    for (int i = 0; i < registerTypeCount; ++i) {
        SCOPED_TRACE(manual[i].name);
        EXPECT_EQ(text(REG_LIST[i]), manual[i].name);
        for (int field = 0; field < rangeFieldCount; ++field) {
            EXPECT_EQ(text(ADDRESS_RANGE_PRO[i][field]), manual[i].fields[field])
                << "field " << field;
        }
    }
}

TEST(RegisterTable, HasFunctionCodeAndBaseAddressOfEveryType)
{
    for (int i = 0; i < registerTypeCount; ++i) {
        SCOPED_TRACE(manual[i].name);
        EXPECT_EQ(ADDRESS_RANGE_FUNC[i][0], manual[i].functionCode);
        EXPECT_EQ(ADDRESS_RANGE_FUNC[i][1], manual[i].baseAddress);
    }
}

TEST(RegisterTable, NumbersOfEveryTypeAreThoseOfItsTexts)
{
    for (int i = 0; i < registerTypeCount; ++i) {
        SCOPED_TRACE(manual[i].name);
        const RegisterType& type = registerType(i);
        EXPECT_EQ(text(type.name), manual[i].name);
        EXPECT_EQ(text(type.area), manual[i].area);
        EXPECT_EQ(type.dataBits, manual[i].dataBits);
        EXPECT_EQ(type.unitBits, 16);
        EXPECT_EQ(type.timerCounter, manual[i].timerCounter);
        EXPECT_EQ(type.bitNamed, manual[i].bitNamed);
        EXPECT_EQ(type.functionCode, manual[i].functionCode);
        EXPECT_EQ(type.baseAddress, manual[i].baseAddress);
    }
}

TEST(RegisterTable, RowOfAnotherWidthIsDerivedFromItsOwnTexts)
{
    const QString bytes[rangeFieldCount] = {name("HHH"), name("0"), name("1ff"), name("8"),
                                            name("R"),   name("8"), name("0")};
    const RegisterType byteType = deriveRegisterType(name("V_B"), bytes, 3, 0x2000);
    EXPECT_EQ(text(byteType.name), "V_B");
    EXPECT_EQ(text(byteType.area), "V");
    EXPECT_EQ(byteType.dataBits, 8);
    EXPECT_EQ(byteType.unitBits, 8);
    EXPECT_EQ(byteType.timerCounter, 0);
    EXPECT_FALSE(byteType.bitNamed);
    EXPECT_EQ(byteType.functionCode, 3);
    EXPECT_EQ(byteType.baseAddress, 0x2000);

    const QString doubles[rangeFieldCount] = {name("DDD"), name("0"),  name("99"), name("32"),
                                              name("W"),   name("32"), name("1")};
    const RegisterType doubleType = deriveRegisterType(name("HC"), doubles, 1, 7);
    EXPECT_EQ(text(doubleType.area), "HC");
    EXPECT_EQ(doubleType.dataBits, 32);
    EXPECT_EQ(doubleType.unitBits, 32);
    EXPECT_EQ(doubleType.timerCounter, 1);
    EXPECT_EQ(doubleType.functionCode, 1);
    EXPECT_EQ(doubleType.baseAddress, 7);
}

TEST(RegisterTable, TextThatIsNoNumberCountsAsZero)
{
    const QString row[rangeFieldCount] = {name("DDD"), name("0"), name("9"),   name("wide"),
                                          name("RW"),  name(""),  name("0x10")};
    const RegisterType type = deriveRegisterType(name("V_W"), row, 3, 0);
    EXPECT_EQ(type.dataBits, 0);
    EXPECT_EQ(type.unitBits, 0);
    EXPECT_EQ(type.timerCounter, 0);
}

TEST(RegisterTable, BitNameIsRecognisedAnywhereInTheNameAndByCase)
{
    const struct {
        const char* name;
        bool bitNamed;
    } rows[] = {{"M_bit", true},  {"M_bit_2", true}, {"_bitmap", true}, {"M_Bit", false},
                {"M_BIT", false}, {"bit", false},    {"Mbit", false},   {"", false}};
    for (const auto& row : rows) {
        EXPECT_EQ(deriveRegisterType(name(row.name), ADDRESS_RANGE_PRO[0], 1, 0).bitNamed,
                  row.bitNamed)
            << row.name;
    }
}

TEST(RegisterTable, AreaIsTheNameUpToItsFirstUnderscore)
{
    const struct {
        const char* name;
        const char* area;
    } rows[] = {{"M_bit", "M"}, {"M_W", "M"}, {"R_D", "R"},      {"T", "T"}, {"C", "C"},
                {"A_B_C", "A"}, {"_W", ""},   {"Long_", "Long"}, {"", ""}};
    for (const auto& row : rows) {
        EXPECT_EQ(text(areaOf(name(row.name))), row.area) << row.name;
    }
}

TEST(RegisterTable, BitWordAndDoubleViewsOfOneMemoryShareItsArea)
{
    std::set<std::string> areas;
    for (int i = 0; i < registerTypeCount; ++i) {
        areas.insert(text(areaOf(REG_LIST[i])));
    }
    EXPECT_EQ(areas, (std::set<std::string>{"C", "I", "M", "Q", "R", "T"}));
}

// Bytes 2 and 3 of a write: the item's place in the slave.
TEST(ModbusAddress, OfAnItemIsItsBasePlusItsAddress)
{
    const struct {
        const char* regName;
        int address;
        const char* frame;
    } rows[] = {
        {"I_bit", 0, "01 05 00 00 FF 00"},    // coil 0
        {"Q_bit", 0, "01 05 08 00 FF 00"},    // word 0 bit 0: coil 2048
        {"M_bit", 2047, "01 05 17 FF FF 00"}, // word 127 bit 15: coil 6143
        {"R_W", 3999, "01 06 14 9F 00 01"},   // register 5279
        {"R_D", 3998, "01 06 14 9E 00 01"},   // register 5278
        {"T", 0, "01 06 01 80 00 01"},        // register 384
        {"C", 127, "01 06 02 7F 00 01"},      // register 639
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.regName);
        QList<FRAME_PRO> frames;
        frameWrite(request(row.regName, row.address, 1, 1, {1, 0}), frames);
        ASSERT_EQ(frames.size(), 1);
        EXPECT_EQ(frameHex(frames.at(0)), toHex(withCrc(row.frame)));
    }
}

} // namespace
