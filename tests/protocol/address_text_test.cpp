#include "protocol/address_text.h"

#include <QStringList>
#include <climits>

#include <gtest/gtest.h>

#include "made_records.h"

namespace {

TEST(RegisterIndex, IsThePlaceInTheTable)
{
    const char* const names[] = {"I_bit", "Q_bit", "M_bit", "R_bit", "I_W", "Q_W",
                                 "M_W",   "R_W",   "R_D",   "T",     "C"};
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(getIndexFromRegName(name(names[i])), i) << names[i];
    }
}

TEST(RegisterIndex, OfANameThatIsNotInTheTableIsMinusOne)
{
    const char* const names[] = {"R_d", "i_bit",  "I_BIT", "",   "R_W ", " R_W",
                                 "R",   "M_bits", "T_W",   "R_", "c",    "I_bit,Q_bit"};
    for (const char* wrong : names) {
        EXPECT_EQ(getIndexFromRegName(name(wrong)), -1) << wrong;
    }
    EXPECT_EQ(getIndexFromRegName(QString()), -1);
    EXPECT_EQ(getIndexFromRegName(QString(million, QLatin1Char('T'))), -1);
}

TEST(BitAddressOfText, IsSixteenTimesTheWordPlusTheBit)
{
    const struct {
        const char* text;
        const char* regName;
        int address;
    } rows[] = {
        {"127.15", "I_bit", 2047},
        {"3999.15", "R_bit", 63999},
        {"0.0", "Q_bit", 0},
        {"12.5", "M_bit", 197},
        {"007.03", "M_bit", 115},
        // No register's range is known here, not even the sixteen bits of a word.
        {"3.16", "M_bit", 64},
        {"4.0", "M_bit", 64},
        {"3.-1", "M_bit", 47},
        {"-1.5", "M_bit", -11},
        {"4000.0", "I_bit", 64000},
        // Any name with "_bit" in it, wherever.
        {"2.3", "X_bit", 35},
        {"2.3", "my_bitmap", 35},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(addr_str2int(name(row.text), name(row.regName)), row.address)
            << row.text << " on " << row.regName;
    }
}

TEST(BitAddressOfText, IsMinusOneForATextThatIsNotWordPointBit)
{
    const char* const texts[] = {"12",   "1.2.3", "1.x",           "x.1",          "",    ".",
                                 "1.",   ".1",    "1,5",           "1.0x1",        "a.5", "..",
                                 "1..5", "1.5.",  "99999999999.0", "0.99999999999"};
    for (const char* bad : texts) {
        EXPECT_EQ(addr_str2int(name(bad), name("M_bit")), -1) << bad;
    }
    EXPECT_EQ(addr_str2int(QString(), name("I_bit")), -1);
}

TEST(BitAddressOfText, IsZeroOnAnyOtherRegisterWhateverTheText)
{
    for (const char* regName : {"R_W", "T", "M_Bit", "M_BIT", "", "bit"}) {
        EXPECT_EQ(addr_str2int(name("1.5"), name(regName)), 0) << regName;
        EXPECT_EQ(addr_str2int(name("no address"), name(regName)), 0) << regName;
    }
}

TEST(BitAddressOfText, WrapsAroundWhereItPasses32Bits)
{
    EXPECT_EQ(addr_str2int(name("134217728.0"), name("M_bit")), INT_MIN);
    EXPECT_EQ(addr_str2int(name("268435456.7"), name("M_bit")), 7);
    EXPECT_EQ(addr_str2int(name("-134217728.0"), name("M_bit")), INT_MIN);
    EXPECT_EQ(addr_str2int(name("134217727.2147483647"), name("M_bit")), -17);
}

TEST(BitAddressOfText, TakesAMillionCharacters)
{
    EXPECT_EQ(addr_str2int(QString(million, QLatin1Char('.')), name("M_bit")), -1);
    EXPECT_EQ(addr_str2int(QString(million, QLatin1Char('1')), name("M_bit")), -1);
    EXPECT_EQ(addr_str2int(QString(million, QLatin1Char('9')) + name(".1"), name("M_bit")), -1);
    // Leading zeros are digits like any other.
    EXPECT_EQ(addr_str2int(QString(300, QLatin1Char('0')) + name("2.3"), name("M_bit")), 35);
}

TEST(TextOfBitAddress, IsWordPointBitWithoutPadding)
{
    const struct {
        int address;
        const char* regName;
        const char* text;
    } rows[] = {
        {21, "Q_bit", "1.5"},
        {2047, "I_bit", "127.15"},
        {5, "M_bit", "0.5"},
        {0, "R_bit", "0.0"},
        {63999, "R_bit", "3999.15"},
        {16, "M_bit", "1.0"},
        {21, "my_bitmap", "1.5"},
        // Division truncates towards zero, for the word and for the bit.
        {-5, "M_bit", "0.-5"},
        {-21, "M_bit", "-1.-5"},
        {-16, "M_bit", "-1.0"},
        {INT_MAX, "M_bit", "134217727.15"},
        {INT_MIN, "M_bit", "-134217728.0"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(text(addr_int2str(row.address, name(row.regName))), row.text)
            << row.address << " on " << row.regName;
    }
}

TEST(TextOfBitAddress, IsEmptyOnAnyOtherRegister)
{
    for (const char* regName : {"Q_W", "T", "M_Bit", "R_D", ""}) {
        EXPECT_EQ(text(addr_int2str(21, name(regName))), "") << regName;
    }
}

TEST(TextOfBitAddress, ReadsBackAsTheSameAddress)
{
    for (int address = 0; address < 64000; address += 7) {
        ASSERT_EQ(addr_str2int(addr_int2str(address, name("R_bit")), name("R_bit")), address);
    }
}

TEST(AddressOfText, FollowsTheFormatsRadix)
{
    const struct {
        const char* text;
        const char* format;
        int result;
        int value;
    } rows[] = {
        {"ff", "HHH", 1, 255},
        {"FF", "HHH", 1, 255},
        {"17", "OO", 1, 15},
        {"12", "DDD", 1, 12},
        {"12", "D", 1, 12},
        {"10", "H", 1, 16},
        {"10", "O", 1, 8},
        {"0012", "DDDD", 1, 12},
        {"-5", "DDD", 1, -5},
        {"2147483647", "DDD", 1, INT_MAX},
        {"-2147483648", "DDD", 1, INT_MIN},
        {"7fffffff", "HHH", 1, INT_MAX},
        // An unknown letter and no letter at all count as decimal.
        {"10", "XXX", 1, 10},
        {"10", "", 1, 10},
        {"10", "d", 1, 10},
        {"10", "h", 1, 10},
        {"10", ".", 1, 10},
        // Whatever the letter is, no prefix changes the radix.
        {"010", "XXX", 1, 10},
        {"010", "", 1, 10},
    };
    for (const auto& row : rows) {
        int value = untouched;
        EXPECT_EQ(a2i(name(row.text), value, name(row.format), name("R_W")), row.result)
            << row.text << " as " << row.format;
        EXPECT_EQ(value, row.value) << row.text << " as " << row.format;
    }
}

TEST(AddressOfText, IsZeroAndRefusedWhereARadixFormatDoesNotFit)
{
    const struct {
        const char* text;
        const char* format;
    } rows[] = {
        {"1a", "DDD"},       {"18", "OO"},   {"fg", "HHH"},   {"", "DDD"},
        {"1.5", "DDD"},      {"x", ""},      {"1a", "XXX"},   {"2147483648", "DDD"},
        {"80000000", "HHH"}, {"1 2", "DDD"}, {"0x10", "DDD"}, {"40a0", "DDDD"},
    };
    for (const auto& row : rows) {
        int value = untouched;
        EXPECT_EQ(a2i(name(row.text), value, name(row.format), name("R_W")), -1)
            << row.text << " as " << row.format;
        EXPECT_EQ(value, 0) << row.text << " as " << row.format;
    }
}

TEST(AddressOfText, OfAWordBitFormatIsTheBitAddress)
{
    int value = untouched;
    EXPECT_EQ(a2i(name("2.3"), value, name("DDD.DD"), name("M_bit")), 1);
    EXPECT_EQ(value, 35);
    EXPECT_EQ(a2i(name("127.16"), value, name("DDD.DD"), name("M_bit")), 1);
    EXPECT_EQ(value, 2048);
}

TEST(AddressOfText, OfAWordBitFormatOnAWordRegisterIsZeroAndConverted)
{
    int value = untouched;
    EXPECT_EQ(a2i(name("2.3"), value, name("DDD.DD"), name("M_W")), 1);
    EXPECT_EQ(value, 0);
}

TEST(AddressOfText, OfAWordBitFormatLeavesTheValueWhereTheTextIsBad)
{
    // "0.-1" is the one pair of numbers whose address cannot be told from a refusal.
    for (const char* bad : {"12", "1.2.3", "1.x", "", "0.-1"}) {
        int value = untouched;
        EXPECT_EQ(a2i(name(bad), value, name("DDD.DD"), name("M_bit")), -1) << bad;
        EXPECT_EQ(value, untouched) << bad;
    }
}

TEST(AddressOfText, IsWordBitAsSoonAsTheFormatHasASecondCharacter)
{
    int value = untouched;
    EXPECT_EQ(a2i(name("2.3"), value, name("HD"), name("M_bit")), 1);
    EXPECT_EQ(value, 35);
    EXPECT_EQ(a2i(name("2.3"), value, name("DDDX"), name("M_bit")), 1);
    EXPECT_EQ(value, 35);
}

TEST(AddressOfText, TakesAMillionCharacters)
{
    const QString digits(million, QLatin1Char('9'));
    int value = untouched;
    EXPECT_EQ(a2i(digits, value, name("DDD"), name("R_W")), -1);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(a2i(digits, value, name("HHH"), name("R_W")), -1);
    EXPECT_EQ(a2i(digits, value, name("DDD.DD"), name("M_bit")), -1);
    EXPECT_EQ(a2i(name("12"), value, QString(million, QLatin1Char('D')), name("R_W")), 1);
    EXPECT_EQ(value, 12);
}

TEST(WordBitFormat, HasACharacterThatDiffersFromItsFirst)
{
    for (const char* format : {"DDD.DD", "DDDD.DD", "D.D", "DO", "DDH", "HD", "..D"}) {
        EXPECT_TRUE(isWordBitFormat(name(format))) << format;
    }
    for (const char* format : {"", "D", "DDD", "HHHH", "OO", ".", "..."}) {
        EXPECT_FALSE(isWordBitFormat(name(format))) << format;
    }
}

TEST(AddressOffset, IsNoneForAnyRegister)
{
    for (const char* regName : {"I_bit", "R_W", "R_D", "T", "X", ""}) {
        for (int address : {0, 1, 2047, -1, INT_MAX, INT_MIN}) {
            EXPECT_EQ(addrOffset(name(regName), address), address) << regName;
        }
    }
}

// The names in the order of the table.
QStringList tableNames()
{
    QStringList names;
    for (const char* regName :
         {"I_bit", "Q_bit", "M_bit", "R_bit", "I_W", "Q_W", "M_W", "R_W", "R_D", "T", "C"}) {
        names << name(regName);
    }
    return names;
}

int weightAmong(const QStringList& names, int station, const char* regName, int address)
{
    return weightAt(static_cast<int>(names.size()), station,
                    static_cast<int>(names.indexOf(name(regName))), address);
}

int weight(int station, const char* regName, int address)
{
    return weightAmong(tableNames(), station, regName, address);
}

TEST(AddressWeight, IsStationThenTypeThenAddress)
{
    const struct {
        int station;
        const char* regName;
        int address;
        int weight;
    } rows[] = {
        {1, "I_W", 7, 983032}, // 1 * 720885 + 4 * 65535 + 7
        {0, "I_bit", 0, 0},
        {0, "Q_bit", 0, 65535},
        {0, "C", 0, 655350},
        {1, "I_bit", 0, 720885},
        {2, "R_W", 3999, 1904514},  // 1441770 + 458745 + 3999
        {247, "C", 127, 178714072}, // 178058595 + 655350 + 127
        // As if one place before the first.
        {0, "X", 0, -65535},
        {1, "R_d", 5, 655355},
        {1, "", 0, 655350},
        {0, "I_bit", -1, -1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(weight(row.station, row.regName, row.address), row.weight)
            << row.station << '/' << row.regName << ':' << row.address;
    }
}

TEST(AddressWeight, WrapsAroundAt32Bits)
{
    // 2147483647 * 720885 = 720885 * 2^31 - 720885; an odd multiple of 2^31 leaves 2^31.
    EXPECT_EQ(weight(INT_MAX, "I_bit", 0), 2146762763);
    EXPECT_EQ(weight(INT_MIN, "I_bit", 0), INT_MIN);
    EXPECT_EQ(weight(INT_MIN, "I_bit", INT_MIN), 0);
    EXPECT_EQ(weight(0, "Q_bit", INT_MAX), -2147418114);
    EXPECT_EQ(weight(5958, "I_bit", 0),
              65534); // 5958 * 720885 = 2^32 + 65534
}

TEST(AddressWeight, FollowsTheListOfNames)
{
    QStringList names;
    names << name("T") << name("X") << name("T");
    EXPECT_EQ(weightAmong(names, 1, "T", 3), 196608);   // 3 * 65535 + 3
    EXPECT_EQ(weightAmong(names, 1, "X", 3), 262143);   // (3 + 1) * 65535 + 3
    EXPECT_EQ(weightAmong(names, 1, "I_W", 3), 131073); // (3 - 1) * 65535 + 3
}

} // namespace
