#include "editor/address_check.h"

#include <climits>

#include "world.h"

namespace {

struct Asked {
    const char* regName;
    const char* text;
    int dataType;
    int length;
    int access;
    int code;
    int address; // what the address argument holds afterwards
};

void expectCodes(const std::vector<Asked>& rows)
{
    for (const Asked& row : rows) {
        SCOPED_TRACE(testing::Message() << row.regName << ':' << row.text << " type "
                                        << row.dataType << " length " << row.length);
        int address = untouched;
        EXPECT_EQ(intf_checkAddr(name(row.regName), name(row.text), &address, row.dataType,
                                 row.length, row.access),
                  row.code);
        EXPECT_EQ(address, row.address);
    }
}

TEST(CheckAddr, AcceptsWhatLiesWithinTheRange)
{
    expectCodes({
        {"M_bit", "127.15", -1, 1, 0, 0, 2047},
        {"M_bit", "0.16", -1, 1, 0, 0, 16},
        {"I_bit", "0.0", -1, 2048, 0, 0, 0},
        {"Q_bit", "1.5", -1, 1, 1, 0, 21},
        {"R_bit", "3999.15", -1, 1, 2, 0, 63999},
        {"I_W", "0", 0, 128, 0, 0, 0},
        {"M_W", "127", 7, 1, 0, 0, 127},
        {"R_W", "3999", 0, 1, 1, 0, 3999},
        {"R_W", "0", -2, 4000, 2, 0, 0},
        {"T", "127", 0, 1, 0, 0, 127},
        {"C", "0", 100, 128, 0, 0, 0},
        {"R_D", "3998", 3, 1, 0, 0, 3998},
    });
}

TEST(CheckAddr, RefusesWhatRunsPastTheHighestAddress)
{
    expectCodes({
        {"M_bit", "127.15", -1, 2, 0, 2, 2047},
        {"M_bit", "127.16", -1, 1, 0, 2, 2048},
        {"I_bit", "0.0", -1, 2049, 0, 2, 0},
        {"R_bit", "4000.0", -1, 1, 0, 2, 64000},
        {"I_W", "127", 0, 2, 0, 2, 127},
        {"I_W", "0", 0, 129, 0, 2, 0},
        {"R_W", "4000", 0, 1, 0, 2, 4000},
        {"R_D", "3998", 9, 2, 0, 2, 3998},
        {"R_D", "3999", 9, 1, 0, 2, 3999},
        {"T", "128", 0, 1, 0, 2, 128},
        {"C", "100", 0, 29, 0, 2, 100},
    });
}

TEST(CheckAddr, RefusesWhatLiesBelowTheLowestAddress)
{
    expectCodes({
        {"M_bit", "0.-2", -1, 1, 0, 2, -2},
        {"M_bit", "-1.0", -1, 100, 0, 2, -16},
        {"R_W", "-1", 0, 1, 0, 2, -1},
        {"R_W", "-5", 0, 100, 0, 2, -5},
    });
}

TEST(CheckAddr, CountsALengthBelowOneAsItStands)
{
    expectCodes({
        {"I_W", "128", 0, 0, 0, 0, 128},
        {"I_W", "129", 0, 0, 0, 2, 129},
        {"I_W", "200", 0, -72, 0, 0, 200},
        {"I_W", "5", 0, INT_MIN, 0, 0, 5},
    });
}

TEST(CheckAddr, AddsLengthAndAddressWithoutOverflow)
{
    expectCodes({
        {"R_W", "2147483647", 0, INT_MAX, 0, 2, INT_MAX},
        {"R_W", "3999", 0, INT_MAX, 0, 2, 3999},
        {"R_W", "-2147483648", 0, INT_MIN, 0, 2, INT_MIN},
        {"M_bit", "134217728.0", -1, 1, 0, 2, INT_MIN},
        {"I_W", "2147483647", 0, INT_MIN, 0, 0, INT_MAX},
    });
}

TEST(CheckAddr, WantsBitItemsOnBitTypesAndWordItemsOnTheOthers)
{
    expectCodes({
        {"R_W", "12", -1, 1, 0, 1, untouched},
        {"R_bit", "12.3", 0, 1, 0, 1, untouched},
        {"I_bit", "12.3", 1, 1, 0, 1, untouched},
        {"M_bit", "12.3", -2, 1, 0, 1, untouched},
        {"T", "1", -1, 1, 0, 1, untouched},
        {"R_D", "1", -1, 1, 0, 1, untouched},
        {"Q_W", "1", -1, 1, 0, 1, untouched},
        // The kind decides before the text and before the double-word types.
        {"R_W", "no address", -1, 1, 0, 1, untouched},
        {"R_bit", "no address", 0, 1, 0, 1, untouched},
    });
}

TEST(CheckAddr, WantsADoubleWordTypeOnRDBeforeItLooksAtTheText)
{
    for (int dataType : {1, 3, 5, 6, 9}) {
        expectCodes(
            {{"R_D", "10", dataType, 2, 0, 0, 10}, {"R_D", "no address", dataType, 1, 0, 4, 0}});
    }
    for (int dataType : {0, 2, 4, 7, 8, 10, 11, -2, INT_MAX, INT_MIN}) {
        expectCodes({{"R_D", "10", dataType, 2, 0, 5, untouched},
                     {"R_D", "no address", dataType, 1, 0, 5, untouched}});
    }
}

TEST(CheckAddr, RefusesATextThatIsNoAddressOfTheFormat)
{
    expectCodes({
        // Radix formats leave a 0 behind, word.bit formats what was there.
        {"R_W", "40a0", 0, 1, 0, 4, 0},
        {"R_W", "", 0, 1, 0, 4, 0},
        {"R_W", "1.5", 0, 1, 0, 4, 0},
        {"T", "x", 0, 1, 0, 4, 0},
        {"R_W", "2147483648", 0, 1, 0, 4, 0},
        {"M_bit", "12", -1, 1, 0, 4, untouched},
        {"M_bit", "1.2.3", -1, 1, 0, 4, untouched},
        {"M_bit", "1.x", -1, 1, 0, 4, untouched},
        {"R_bit", "", -1, 1, 0, 4, untouched},
    });
}

TEST(CheckAddr, AllowsEveryAccessOnTheShippedTypes)
{
    for (int access : {0, 1, 2, 3, -1, INT_MAX}) {
        expectCodes({{"R_W", "10", 0, 1, access, 0, 10}, {"M_bit", "1.5", -1, 1, access, 0, 21}});
    }
}

struct Unknown {
    int held; // what the address argument held on entry
    int length;
    int code;
};

const std::vector<Unknown> unknownRows = {
    {0, 1, 3},  {5, 1, 2},       {1, 0, 3},       {1, 1, 2},       {0, 2, 2},
    {0, 0, 3},  {-1, 1, 2},      {-1, -100, 2},   {100, -99, 3},   {100, -98, 2},
    {0, -5, 3}, {INT_MAX, 1, 2}, {INT_MIN, 1, 2}, {0, INT_MAX, 2}, {INT_MAX, INT_MIN, 3},
};

TEST(CheckAddr, OfAnUnknownNameLooksAtTheAddressHeldBeforeItSaysSo)
{
    for (const char* regName : {"X", "", "r_w", "M_BIT", "X_bit"}) {
        for (int dataType : {0, -1, 2}) {
            for (const Unknown& row : unknownRows) {
                SCOPED_TRACE(testing::Message() << regName << " type " << dataType << " held "
                                                << row.held << " length " << row.length);
                int address = row.held;
                EXPECT_EQ(
                    intf_checkAddr(name(regName), name("1"), &address, dataType, row.length, 1),
                    row.code);
                EXPECT_EQ(address, row.held);
            }
        }
    }
}

TEST(CheckAddr, WithoutAPlaceForTheAddressGivesTheSameCode)
{
    EXPECT_EQ(intf_checkAddr(name("R_W"), name("10"), nullptr, 0, 1, 0), 0);
    EXPECT_EQ(intf_checkAddr(name("R_W"), name("4000"), nullptr, 0, 1, 0), 2);
    EXPECT_EQ(intf_checkAddr(name("R_W"), name("x"), nullptr, 0, 1, 0), 4);
    EXPECT_EQ(intf_checkAddr(name("M_bit"), name("1.5"), nullptr, -1, 1, 0), 0);
    EXPECT_EQ(intf_checkAddr(name("M_bit"), name("x"), nullptr, -1, 1, 0), 4);
    EXPECT_EQ(intf_checkAddr(name("X"), name("1"), nullptr, 0, 1, 0), 3);
}

TEST(CheckAddr, TakesAMillionCharacters)
{
    int address = untouched;
    EXPECT_EQ(intf_checkAddr(name("R_W"), QString(million, QLatin1Char('9')), &address, 0, 1, 0),
              4);
    EXPECT_EQ(intf_checkAddr(name("M_bit"), QString(million, QLatin1Char('.')), &address, -1, 1, 0),
              4);
    EXPECT_EQ(intf_checkAddr(QString(million, QLatin1Char('X')), name("1"), &address, 0, 1, 0), 3);
    EXPECT_EQ(intf_checkAddr(QString(), QString(), &address, 0, 1, 0), 3);
}

struct AskedForKind {
    const char* regName;
    const char* text;
    int length;
    int wordFlag;
    int code;
    int address;
};

void expectValidity(const std::vector<AskedForKind>& rows)
{
    for (const AskedForKind& row : rows) {
        SCOPED_TRACE(testing::Message() << row.regName << ':' << row.text << " length "
                                        << row.length << " flag " << row.wordFlag);
        int address = untouched;
        EXPECT_EQ(intf_checkAddrValidity(name(row.regName), name(row.text), &address, row.length,
                                         row.wordFlag),
                  row.code);
        EXPECT_EQ(address, row.address);
    }
}

TEST(CheckAddrValidity, IsTheSameCheckByTheKindOfItem)
{
    expectValidity({
        {"M_bit", "127.15", 1, 0, 0, 2047},
        {"M_bit", "127.15", 2, 0, 2, 2047},
        {"M_bit", "127.16", 1, 0, 2, 2048},
        {"M_bit", "0.16", 1, 0, 0, 16},
        {"M_bit", "0.-2", 1, 0, 2, -2},
        {"M_bit", "12", 1, 0, 4, untouched},
        {"R_W", "3999", 1, 1, 0, 3999},
        {"R_W", "3999", 2, 1, 2, 3999},
        {"R_W", "4000", 1, 1, 2, 4000},
        {"R_W", "-1", 1, 1, 2, -1},
        {"R_W", "40a0", 1, 1, 4, 0},
        {"R_W", "0", 4000, 2, 0, 0},
        {"R_W", "0", 4001, -1, 2, 0},
        {"T", "127", 1, 7, 0, 127},
    });
}

TEST(CheckAddrValidity, WantsBitItemsOnBitTypesAndWordItemsOnTheOthers)
{
    expectValidity({
        {"M_bit", "1.5", 1, 1, 1, untouched},
        {"R_bit", "x", 1, -1, 1, untouched},
        {"R_W", "12", 1, 0, 1, untouched},
        {"R_D", "12", 1, 0, 1, untouched},
        {"C", "x", 1, 0, 1, untouched},
    });
}

TEST(CheckAddrValidity, KnowsNoDoubleWordTypes)
{
    for (int flag : {1, 2, 4, 7, INT_MAX, INT_MIN}) {
        expectValidity({{"R_D", "3998", 1, flag, 0, 3998}, {"R_D", "3998", 2, flag, 2, 3998}});
    }
}

TEST(CheckAddrValidity, OfAnUnknownNameLooksAtTheAddressHeldBeforeItSaysSo)
{
    for (int wordFlag : {0, 1}) {
        for (const Unknown& row : unknownRows) {
            SCOPED_TRACE(testing::Message() << "flag " << wordFlag << " held " << row.held
                                            << " length " << row.length);
            int address = row.held;
            EXPECT_EQ(intf_checkAddrValidity(name("X"), name("1"), &address, row.length, wordFlag),
                      row.code);
            EXPECT_EQ(address, row.held);
        }
    }
}

TEST(CheckAddrValidity, WithoutAPlaceForTheAddressGivesTheSameCode)
{
    EXPECT_EQ(intf_checkAddrValidity(name("R_W"), name("10"), nullptr, 1, 1), 0);
    EXPECT_EQ(intf_checkAddrValidity(name("M_bit"), name("200.0"), nullptr, 1, 0), 2);
    EXPECT_EQ(intf_checkAddrValidity(name("X"), name("1"), nullptr, 1, 1), 3);
}

TEST(Range, HoldsWhatStartsAtOrAboveTheLowestAndEndsAtTheHighest)
{
    const struct {
        int address, length, lowest, highest, unitBits;
        bool within;
    } rows[] = {
        {0, 1, 0, 127, 16, true},
        {127, 1, 0, 127, 16, true},
        {127, 2, 0, 127, 16, false},
        {0, 128, 0, 127, 16, true},
        {0, 129, 0, 127, 16, false},
        {-1, 1, 0, 127, 16, false},
        {9, 1, 10, 20, 16, false},
        {10, 11, 10, 20, 16, true},
        {10, 12, 10, 20, 16, false},
        {128, 0, 0, 127, 16, true},
        {129, 0, 0, 127, 16, false},
        {-5, 1, -5, -5, 16, true},
        // A 16-bit item takes two addresses of byte units...
        {0, 3, 0, 5, 8, true},
        {0, 3, 0, 4, 8, false},
        {4, 1, 0, 5, 8, true},
        {5, 1, 0, 5, 8, false},
        // ...and half an address of 32-bit units.
        {0, 3, 0, 1, 32, true},
        {0, 3, 0, 0, 32, false},
        {0, 2, 0, 0, 32, true},
        {1, 1, 0, 1, 32, true},
        {1, 3, 0, 1, 32, false},
        // The ends of the 32-bit numbers.
        {INT_MAX, 1, 0, INT_MAX, 16, true},
        {INT_MAX, 2, 0, INT_MAX, 16, false},
        {INT_MAX, INT_MAX, INT_MIN, INT_MAX, 8, false},
        {INT_MIN, INT_MIN, INT_MIN, INT_MIN, 16, true},
        {INT_MIN, 1, INT_MIN, INT_MAX, 16, true},
        {INT_MIN, INT_MAX, INT_MIN, 0, 16, true},
        {0, INT_MIN, 0, INT_MIN, 8, true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(isWithinRange(row.address, row.length, row.lowest, row.highest, row.unitBits),
                  row.within)
            << row.address << '+' << row.length << " in " << row.lowest << ".." << row.highest
            << ", units of " << row.unitBits;
    }
}

class EditorCalls : public DriverTest {};

TEST_F(EditorCalls, ChangeNothingOfTheDriver)
{
    plan({key("R_W", 10, 1)});
    int address = 0;
    QStringList list;
    QVector<QString> texts;
    QVector<int> addresses;
    intf_checkAddr(name("R_W"), name("20"), &address, 0, 1, 1);
    intf_checkAddrValidity(name("M_bit"), name("1.5"), &address, 1, 0);
    intf_getRegListByType(1, &list);
    intf_getRegDiscription(name("T"), &list);
    intf_multiCopy(name("R_W"), 0, 5, 1, texts, addresses);
    EXPECT_EQ(summary(driver.readList), std::vector<std::string>{"1/R_W:10+1"});
    EXPECT_EQ(driver.dataAreas.size(), 1);
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_TRUE(driver.sendList.isEmpty());
    EXPECT_TRUE(notices().empty());
}

} // namespace
