
#include <climits>

#include "cache_world.h"

namespace {

using ReadingValues = CacheTest;

TEST_F(ReadingValues, AnUnknownRegisterGivesMinusOneAndTouchesNothing)
{
    for (const char* regName : {"X_W", "r_w", "R", "R_W ", ""}) {
        std::vector<unsigned char> out(4, 0xEE);
        EXPECT_EQ(intf_getData(1, name(regName), 0, 1, out.data()), -1);
        EXPECT_EQ(toHex(out.data(), 4), "EE EE EE EE");
    }
    EXPECT_EQ(units(), Units());
}

TEST_F(ReadingValues, AUnitNeverSeenReadsAsZeroAndIsRemembered)
{
    EXPECT_EQ(read("R_W", 5, 2), "00 00 00 00");
    EXPECT_EQ(read("M_bit", 20, 1), "00");
    EXPECT_EQ(units(), Units({"1/R 5", "1/R 6", "1/M 1"}));
    EXPECT_EQ(marks(), Units({"R5", "R6", "M1"}));
}

TEST_F(ReadingValues, WordsAreTwoBytesInTheOrderOfTheCache)
{
    put("R", 5, "34 12 99 99");
    put("R", 6, "78 56 99 99");
    EXPECT_EQ(read("R_W", 5, 2), "34 12 78 56");
    EXPECT_EQ(read("R_W", 6, 1), "78 56");
}

TEST_F(ReadingValues, OnePendingWordOfARunIsSeenWhereverItStands)
{
    for (int written = 0; written < 9; ++written) {
        driver.dataAreas.clear();
        for (int i = 0; i < 9; ++i) {
            if (i == written) {
                putPending("R", i, "34 12", "78 56");
            } else {
                put("R", i, "34 12");
            }
        }
        std::string expected = "34 12 34 12 34 12 34 12 34 12 34 12 34 12 34 12 34 12";
        expected.replace(static_cast<size_t>(6 * written), 5, "78 56");
        EXPECT_EQ(read("R_W", 0, 9), expected) << written;
    }
}

TEST_F(ReadingValues, EveryWordTypeReadsItsOwnArea)
{
    put("I", 5, "01 11");
    put("Q", 5, "02 12");
    put("M", 5, "03 13");
    put("R", 5, "04 14");
    put("T", 5, "05 15");
    put("C", 5, "06 16");
    EXPECT_EQ(read("I_W", 5, 1), "01 11");
    EXPECT_EQ(read("Q_W", 5, 1), "02 12");
    EXPECT_EQ(read("M_W", 5, 1), "03 13");
    EXPECT_EQ(read("R_W", 5, 1), "04 14");
    EXPECT_EQ(read("T", 5, 1), "05 15");
    EXPECT_EQ(read("C", 5, 1), "06 16");
}

TEST_F(ReadingValues, EveryBitTypeReadsItsOwnArea)
{
    put("I", 5, "01");
    put("Q", 5, "02");
    put("M", 5, "04");
    put("R", 5, "08");
    EXPECT_EQ(read("I_bit", 80, 4), "01 00 00 00");
    EXPECT_EQ(read("Q_bit", 80, 4), "00 01 00 00");
    EXPECT_EQ(read("M_bit", 80, 4), "00 00 01 00");
    EXPECT_EQ(read("R_bit", 80, 4), "00 00 00 01");
}

TEST_F(ReadingValues, StationsAreReadApart)
{
    put("R", 5, "34 12", 1);
    put("R", 5, "78 56", 2);
    EXPECT_EQ(read("R_W", 5, 1, 1), "34 12");
    EXPECT_EQ(read("R_W", 5, 1, 2), "78 56");
    EXPECT_EQ(read("R_W", 5, 1, 3), "00 00");
}

TEST_F(ReadingValues, APendingWordShowsWhatWasWrittenAndASettledOneWhatTheControllerSent)
{
    putPending("R", 5, "34 12", "78 56");
    EXPECT_EQ(read("R_W", 5, 1), "78 56");
    driver.dataAreas[0].writePending = 0;
    EXPECT_EQ(read("R_W", 5, 1), "34 12");
}

TEST_F(ReadingValues, AWrittenWordIsSeenUntilItsWriteFails)
{
    put("R", 5, "34 12");
    write("R_W", 5, 1, "78 56");
    EXPECT_EQ(read("R_W", 5, 1), "78 56");
    settleNamed("R_W", 5, 1, 0);
    EXPECT_EQ(read("R_W", 5, 1), "34 12");
}

TEST_F(ReadingValues, EveryBitIsReadFromItsPlaceInTheWord)
{
    put("M", 1, "02 82");
    // bits 1, 9 and 15
    EXPECT_EQ(read("M_bit", 16, 16), "00 01 00 00 00 00 00 00 00 01 00 00 00 00 00 01");
    EXPECT_EQ(read("M_bit", 17, 1), "01");
    EXPECT_EQ(read("M_bit", 18, 1), "00");
    EXPECT_EQ(read("M_bit", 25, 1), "01");
}

TEST_F(ReadingValues, TheFirstEightBitsAreTheLowByte)
{
    put("M", 1, "02 00");
    EXPECT_EQ(read("M_bit", 17, 1), "01");
    EXPECT_EQ(read("M_bit", 25, 1), "00");
    put("M", 2, "00 02");
    EXPECT_EQ(read("M_bit", 33, 1), "00");
    EXPECT_EQ(read("M_bit", 41, 1), "01");
}

TEST_F(ReadingValues, BitsRunAcrossWords)
{
    put("M", 0, "00 C0");
    put("M", 1, "01 00");
    EXPECT_EQ(read("M_bit", 13, 5), "00 01 01 01 00");
}

TEST_F(ReadingValues, BitsOfAPendingWordShowWhatWasWritten)
{
    putPending("M", 1, "FF FF", "01 80");
    EXPECT_EQ(read("M_bit", 16, 16), "01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01");
}

TEST_F(ReadingValues, ADoubleWordIsItsFirstWordThenItsSecond)
{
    put("R", 10, "01 02 99 99");
    put("R", 11, "03 04 99 99");
    EXPECT_EQ(read("R_D", 10, 2), "01 02 03 04");
}

TEST_F(ReadingValues, SeveralDoubleWordsFollowEachOther)
{
    put("R", 10, "01 02");
    put("R", 11, "03 04");
    put("R", 12, "05 06");
    put("R", 13, "07 08");
    EXPECT_EQ(read("R_D", 10, 4), "01 02 03 04 05 06 07 08");
}

TEST_F(ReadingValues, AnOddTrailingWordOfADoubleWordIsNotWritten)
{
    put("R", 10, "01 02");
    put("R", 11, "03 04");
    put("R", 12, "05 06");
    EXPECT_EQ(read("R_D", 10, 1), "");
    EXPECT_EQ(read("R_D", 10, 3), "01 02 03 04");
    std::vector<unsigned char> out(1, 0xEE);
    EXPECT_EQ(intf_getData(1, name("R_D"), 10, 1, out.data()), 1);
    EXPECT_EQ(out[0], 0xEE);
}

TEST_F(ReadingValues, ADoubleWordIsShownAsWrittenAsSoonAsEitherWordIsPending)
{
    for (int pendingWord : {0, 1}) {
        driver.dataAreas.clear();
        putPending("R", 10, "01 02", "11 12");
        putPending("R", 11, "03 04", "13 14");
        EXPECT_EQ(read("R_D", 10, 2), "11 12 13 14");
        driver.dataAreas[1 - pendingWord].writePending = 0;
        EXPECT_EQ(read("R_D", 10, 2), "11 12 13 14");
        driver.dataAreas[pendingWord].writePending = 0;
        EXPECT_EQ(read("R_D", 10, 2), "01 02 03 04");
    }
}

TEST_F(ReadingValues, EachDoubleWordOfARunIsShownByItsOwnTwoWords)
{
    put("R", 10, "01 02");
    put("R", 11, "03 04");
    putPending("R", 12, "05 06", "15 16");
    put("R", 13, "07 08");
    driver.dataAreas[3].pendingValue[0] = 0x17;
    driver.dataAreas[3].pendingValue[1] = 0x18;
    EXPECT_EQ(read("R_D", 10, 4), "01 02 03 04 15 16 17 18");
}

TEST_F(ReadingValues, LengthsOfZeroAndBelowWriteNothingAndGiveOne)
{
    for (const char* regName : {"M_bit", "M_W", "R_D", "T"}) {
        for (int length : {0, -1, -2, -3, INT_MIN, INT_MIN + 1}) {
            unsigned char out = 0xEE;
            EXPECT_EQ(intf_getData(1, name(regName), 5, length, &out), 1);
            EXPECT_EQ(out, 0xEE);
        }
    }
    EXPECT_EQ(units(), Units());
}

TEST_F(ReadingValues, ReadingAnnouncesAndSettlesNothing)
{
    plan({key("R_W", 5, 1), key("R_D", 5, 2), key("R_bit", 80, 1)});
    write("R_W", 5, 1, "01 00");
    notices();
    read("R_W", 5, 1);
    read("R_D", 5, 2);
    read("R_bit", 80, 1);
    EXPECT_EQ(notices(), Notices());
    EXPECT_TRUE(isPending("R", 5));
    EXPECT_EQ(driver.writeList.size(), 1);
}

TEST_F(ReadingValues, WordsRunAcrossTheHighestNumberIntoTheLowest)
{
    put("M", INT_MAX, "01 02");
    put("M", INT_MIN, "03 04");
    EXPECT_EQ(read("M_W", INT_MAX, 2), "01 02 03 04");
    put("M", 134217727, "00 80");
    put("M", -134217728, "01");
    EXPECT_EQ(read("M_bit", INT_MAX, 2), "01 01");
    put("R", INT_MAX, "01 02");
    put("R", INT_MIN, "03 04");
    EXPECT_EQ(read("R_D", INT_MAX, 2), "01 02 03 04");
}

TEST_F(ReadingValues, NegativeAddressesAreReadLikeAnyOther)
{
    put("M", -1, "01 80");
    EXPECT_EQ(read("M_W", -1, 1), "01 80");
    EXPECT_EQ(read("M_bit", -16, 1), "01");
}

TEST_F(ReadingValues, ABitAddressBelowZeroThatNamesNoBitReadsAsZero)
{
    put("M", 0, "FF FF");
    put("M", -1, "FF FF");
    EXPECT_EQ(read("M_bit", -16, 17), "01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01");
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(ReadingValues, LongRunsAreReadWhole)
{
    std::vector<unsigned char> out(2 * 65536, 0xEE);
    put("R", 65535, "34 12");
    EXPECT_EQ(intf_getData(1, name("R_W"), 0, 65536, out.data()), 1);
    EXPECT_EQ(toHex(&out[0], 2), "00 00");
    EXPECT_EQ(toHex(&out[2 * 65534], 4), "00 00 34 12");
    EXPECT_EQ(driver.dataAreas.size(), 65536);
}

} // namespace
