#include "editor/multiple_copy.h"

#include <climits>

#include "world.h"

namespace {

// "10,15,20 / 10,15,20 = 1": addresses, texts, result.
std::string shown(const QVector<int>& addresses, const QVector<QString>& texts, int result)
{
    std::ostringstream out;
    for (int i = 0; i < addresses.size(); ++i) {
        out << (i == 0 ? "" : ",") << addresses.at(i);
    }
    out << " / ";
    for (int i = 0; i < texts.size(); ++i) {
        out << (i == 0 ? "" : ",") << text(texts.at(i));
    }
    out << " = " << result;
    return out.str();
}

std::string series(const char* regName, int start, int count, int step)
{
    QVector<QString> texts;
    QVector<int> addresses;
    const int result = intf_multiCopy(name(regName), start, count, step, texts, addresses);
    return shown(addresses, texts, result);
}

std::string seriesOf(const char* regName, const char* format, int start, int count, int step,
                     int highest, const char* highestText)
{
    QVector<QString> texts;
    QVector<int> addresses;
    const int result = multiCp(name(regName), name(format), start, count, step, texts, addresses,
                               highest, name(highestText));
    return shown(addresses, texts, result);
}

TEST(MultipleCopy, IsASeriesByTheStep)
{
    EXPECT_EQ(series("R_W", 10, 3, 5), "10,15,20 / 10,15,20 = 1");
    EXPECT_EQ(series("I_W", 0, 4, 1), "0,1,2,3 / 0,1,2,3 = 1");
    EXPECT_EQ(series("C", 125, 3, 1), "125,126,127 / 125,126,127 = 1");
    EXPECT_EQ(series("R_D", 3994, 3, 2), "3994,3996,3998 / 3994,3996,3998 = 1");
    EXPECT_EQ(series("R_W", 3999, 1, 1000), "3999 / 3999 = 1");
}

TEST(MultipleCopy, OfBitsCountsInBits)
{
    EXPECT_EQ(series("M_bit", 31, 3, -1), "31,32,33 / 1.15,2.0,2.1 = 1");
    EXPECT_EQ(series("M_bit", 15, 2, 1), "15,16 / 0.15,1.0 = 1");
    EXPECT_EQ(series("R_bit", 63983, 2, 16), "63983,63999 / 3998.15,3999.15 = 1");
}

TEST(MultipleCopy, IsClippedAtTheHighestAddress)
{
    EXPECT_EQ(series("R_W", 3990, 4, 4), "3990,3994,3998,3999 / 3990,3994,3998,3999 = 2");
    EXPECT_EQ(series("T", 120, 10, 1), "120,121,122,123,124,125,126,127,127,127 / "
                                       "120,121,122,123,124,125,126,127,127,127 = 2");
    EXPECT_EQ(series("M_bit", 2046, 4, 1), "2046,2047,2047,2047 / 127.14,127.15,127.15,127.15 = 2");
    EXPECT_EQ(series("R_D", 3997, 3, 2), "3997,3998,3998 / 3997,3998,3998 = 2");
    EXPECT_EQ(series("I_W", 128, 2, 1), "127,127 / 127,127 = 2");
}

TEST(MultipleCopy, StepsOfMinusOneAndMinusTwoAreAWordAndADoubleWord)
{
    EXPECT_EQ(series("R_D", 0, 3, -2), "0,2,4 / 0,2,4 = 1");
    EXPECT_EQ(series("R_W", 0, 3, -1), "0,1,2 / 0,1,2 = 1");
    EXPECT_EQ(series("M_bit", 0, 3, -2), "0,2,4 / 0.0,0.2,0.4 = 1");
}

TEST(MultipleCopy, OtherStepsBelowOneAreOne)
{
    for (int step : {0, -3, -16, INT_MIN}) {
        EXPECT_EQ(series("R_W", 10, 3, step), "10,11,12 / 10,11,12 = 1") << step;
    }
}

TEST(MultipleCopy, OfNoneIsNothingAndFine)
{
    for (int count : {0, -1, INT_MIN}) {
        EXPECT_EQ(series("R_W", 10, count, 1), " /  = 1") << count;
    }
}

TEST(MultipleCopy, OfAnUnknownNameIsNothingAndZero)
{
    for (const char* regName : {"X", "", "r_w", "M_Bit"}) {
        EXPECT_EQ(series(regName, 10, 3, 1), " /  = 0") << regName;
    }
    EXPECT_EQ(series("X", 10, 0, 1), " /  = 0");
}

TEST(MultipleCopy, IsAppendedInPairs)
{
    QVector<QString> texts(1, name("before"));
    QVector<int> addresses(1, -7);
    EXPECT_EQ(intf_multiCopy(name("M_bit"), 15, 2, 1, texts, addresses), 1);
    EXPECT_EQ(shown(addresses, texts, 0), "-7,15,16 / before,0.15,1.0 = 0");
    EXPECT_EQ(intf_multiCopy(name("X"), 15, 2, 1, texts, addresses), 0);
    EXPECT_EQ(intf_multiCopy(name("R_W"), 15, 0, 1, texts, addresses), 1);
    EXPECT_EQ(shown(addresses, texts, 0), "-7,15,16 / before,0.15,1.0 = 0");
}

TEST(MultipleCopy, DoesNotCheckTheLowestAddress)
{
    // A word is written as an unsigned number, a bit by its signed parts.
    EXPECT_EQ(series("R_W", -1, 2, 1), "-1,0 / 4294967295,0 = 1");
    EXPECT_EQ(series("M_bit", -5, 2, 5), "-5,0 / 0.-5,0.0 = 1");
    EXPECT_EQ(series("M_bit", -21, 1, 1), "-21 / -1.-5 = 1");
}

TEST(MultipleCopy, BeyondThe32BitNumbersIsClippedToo)
{
    EXPECT_EQ(series("R_W", INT_MAX, 2, INT_MAX), "3999,3999 / 3999,3999 = 2");
    EXPECT_EQ(series("R_W", 1, 3, INT_MAX), "1,3999,3999 / 1,3999,3999 = 2");
    EXPECT_EQ(series("R_W", INT_MIN, 3, INT_MAX),
              "-2147483648,-1,3999 / 2147483648,4294967295,3999 = 2");
    EXPECT_EQ(series("R_W", 0, 4, 1 << 30), "0,3999,3999,3999 / 0,3999,3999,3999 = 2");
    EXPECT_EQ(seriesOf("R_W", "DDDD", INT_MAX - 1, 4, 1, INT_MAX, "top"),
              "2147483646,2147483647,2147483647,2147483647 / 2147483646,2147483647,top,top = 2");
    EXPECT_EQ(seriesOf("R_W", "DDDD", INT_MIN, 2, 1, INT_MIN, "low"),
              "-2147483648,-2147483648 / 2147483648,low = 2");
}

TEST(MultipleCopy, OfManyCopiesIsWhole)
{
    QVector<QString> texts;
    QVector<int> addresses;
    EXPECT_EQ(intf_multiCopy(name("R_W"), 0, 65536, 65536, texts, addresses), 2);
    ASSERT_EQ(addresses.size(), 65536);
    ASSERT_EQ(texts.size(), 65536);
    EXPECT_EQ(addresses.at(0), 0);
    EXPECT_EQ(addresses.at(1), 3999);
    EXPECT_EQ(addresses.at(65535), 3999);
    EXPECT_EQ(text(texts.at(65535)), "3999");
}

TEST(CopySeries, WritesEachAddressInTheRadixOfTheFormatsFirstLetter)
{
    EXPECT_EQ(seriesOf("R_W", "DDD", 8, 3, 1, 999, "999"), "8,9,10 / 8,9,10 = 1");
    EXPECT_EQ(seriesOf("R_W", "HHH", 254, 3, 1, 4095, "fff"), "254,255,256 / fe,ff,100 = 1");
    EXPECT_EQ(seriesOf("R_W", "OOO", 7, 3, 1, 511, "777"), "7,8,9 / 7,10,11 = 1");
    EXPECT_EQ(seriesOf("R_W", "H", -1, 1, 1, 511, "1ff"), "-1 / ffffffff = 1");
    EXPECT_EQ(seriesOf("R_W", "O", -1, 1, 1, 511, "777"), "-1 / 37777777777 = 1");
}

TEST(CopySeries, ClipsWithTheTextOfTheHighestAddressAsHandedIn)
{
    EXPECT_EQ(seriesOf("R_W", "HHH", 254, 3, 1, 255, "0FF"), "254,255,255 / fe,ff,0FF = 2");
}

TEST(CopySeries, KeepsTheTextBeforeWhereTheFormatNamesNoRadix)
{
    EXPECT_EQ(seriesOf("R_W", "XXX", 5, 3, 1, 99, "top"), "5,6,7 / ,, = 1");
    EXPECT_EQ(seriesOf("R_W", "", 5, 2, 1, 99, "top"), "5,6 / , = 1");
    EXPECT_EQ(seriesOf("R_W", "", 98, 3, 1, 99, "top"), "98,99,99 / ,,top = 2");
    EXPECT_EQ(seriesOf("R_W", "d", 5, 2, 1, 99, "top"), "5,6 / , = 1");
}

TEST(CopySeries, InWordBitFormStopsAtOnceOnANameWithoutBits)
{
    EXPECT_EQ(seriesOf("R_W", "DDD.DD", 5, 3, 1, 99, "6.3"), " /  = 2");
    EXPECT_EQ(seriesOf("R_W", "DDD.DD", 98, 5, 1, 99, "6.3"), " /  = 2");
    // What lies beyond the highest address needs no text of its own.
    EXPECT_EQ(seriesOf("R_W", "DDD.DD", 200, 2, 1, 99, "6.3"), "99,99 / 6.3,6.3 = 2");
    EXPECT_EQ(seriesOf("R_W", "DDD.DD", 5, 0, 1, 99, "6.3"), " /  = 1");
}

TEST(CopySeries, InWordBitFormOfABitNameIsWordPointBit)
{
    EXPECT_EQ(seriesOf("M_bit", "HD", 15, 2, 1, 99, "6.3"), "15,16 / 0.15,1.0 = 1");
    EXPECT_EQ(seriesOf("my_bit", "D.D", 15, 2, 1, 99, "6.3"), "15,16 / 0.15,1.0 = 1");
}

TEST(CopySeries, OfANameOutsideTheTableTakesItsStepAsHandedIn)
{
    EXPECT_EQ(seriesOf("X", "DDD", 5, 3, 4, 99, "99"), "5,9,13 / 5,9,13 = 1");
    EXPECT_EQ(seriesOf("", "DDD", 5, 2, 0, 99, "99"), "5,6 / 5,6 = 1");
}

TEST(CopySeries, OfANameOutsideTheTableCountsUnitsOf16Bits)
{
    EXPECT_EQ(seriesOf("X", "DDD", 5, 3, -1, 99, "99"), "5,6,7 / 5,6,7 = 1");
    EXPECT_EQ(seriesOf("X", "DDD", 5, 3, -2, 99, "99"), "5,7,9 / 5,7,9 = 1");
}

TEST(CopyStep, ResolvesByTheWidthOfAUnit)
{
    const struct {
        int step;
        int unitBits;
        int resolved;
    } rows[] = {
        {-1, 16, 1},
        {-2, 16, 2},
        {-1, 8, 2},
        {-2, 8, 4},
        {-1, 32, 1}, // 16 / 32 is below 1
        {-2, 32, 1},
        {-1, 5, 3},
        {-2, 5, 6},
        {-1, 1, 16},
        {-2, 1, 32},
        {0, 16, 1},
        {-3, 16, 1},
        {-3, 8, 1},
        {INT_MIN, 8, 1},
        {1, 8, 1},
        {2, 16, 2},
        {7, 32, 7},
        {INT_MAX, 16, INT_MAX},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(resolveStep(row.step, row.unitBits), row.resolved)
            << "step " << row.step << ", units of " << row.unitBits;
    }
}

} // namespace
