// Storing host writes in the cache, for the shipped register types.

#include <climits>

#include "cache/data_areas.h"
#include "cache_world.h"
#include "uncalled_functions.h"

namespace {

using StoringWrites = CacheTest;

// Words

TEST_F(StoringWrites, AWordBecomesThePendingValueOfItsUnitAndTheDeviceValueStays)
{
    put("M", 3, "11 22");
    save("M_W", 3, 1, "34 12");
    EXPECT_EQ(pending("M", 3), "34 12 00 00");
    EXPECT_EQ(device("M", 3), "11 22 00 00");
    EXPECT_TRUE(isPending("M", 3));
    EXPECT_EQ(pendingBits("M", 3), 0u);
}

TEST_F(StoringWrites, WordsAreStoredInIncreasingAddressOrder)
{
    save("R_W", 10, 3, "01 02 03 04 05 06");
    EXPECT_EQ(units(), Units({"1/R 10", "1/R 11", "1/R 12"}));
    EXPECT_EQ(pending("R", 10), "01 02 00 00");
    EXPECT_EQ(pending("R", 11), "03 04 00 00");
    EXPECT_EQ(pending("R", 12), "05 06 00 00");
}

TEST_F(StoringWrites, OnlyTheUnitsOfTheStationAreTouched)
{
    put("R", 10, "11", 1);
    save("R_W", 10, 1, "34 12", 2);
    EXPECT_FALSE(isPending("R", 10));
    EXPECT_EQ(toHex(unit(2, "R", 10).pendingValue, 2), "34 12");
}

TEST_F(StoringWrites, AWordThatChangesIsAnnouncedToItsWatchedViews)
{
    put("M", 3, "01 02");
    watch("M", 3, 1, 0xFFFF);
    save("M_W", 3, 1, "34 12");
    // 0x0201 to 0x1234: bits 0, 2, 4, 5 and 12
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_bit", 48},
                                  {7, 1, "M_bit", 50},
                                  {7, 1, "M_bit", 52},
                                  {7, 1, "M_bit", 53},
                                  {7, 1, "M_bit", 60},
                                  {7, 1, "M_W", 3}}));
}

TEST_F(StoringWrites, AWordThatReadsTheSameAlreadyIsStoredButNotAnnounced)
{
    put("M", 3, "34 12");
    watch("M", 3, 1, 0xFFFF);
    save("M_W", 3, 1, "34 12");
    EXPECT_EQ(notices(), Notices());
    EXPECT_TRUE(isPending("M", 3));
    EXPECT_EQ(pending("M", 3), "34 12 00 00");
}

TEST_F(StoringWrites, APendingWordIsComparedWithWhatWasWrittenBefore)
{
    putPending("M", 3, "34 12", "56 78");
    watch("M", 3, 1);
    save("M_W", 3, 1, "56 78");
    EXPECT_EQ(notices(), Notices());
    save("M_W", 3, 1, "34 12");
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_W", 3}}));
}

TEST_F(StoringWrites, ASettledWordIsComparedWithTheDeviceValueWhateverWasWrittenOnce)
{
    putPending("M", 3, "34 12", "56 78");
    driver.dataAreas[0].writePending = 0;
    watch("M", 3, 1);
    save("M_W", 3, 1, "34 12");
    EXPECT_EQ(notices(), Notices());
    EXPECT_EQ(pending("M", 3), "34 12 00 00");
}

TEST_F(StoringWrites, AChangeInEitherByteOfAWordIsAChange)
{
    put("M", 3, "34 12");
    watch("M", 3, 1);
    save("M_W", 3, 1, "35 12");
    EXPECT_EQ(notices().size(), 1u);
    save("M_W", 3, 1, "35 92");
    EXPECT_EQ(notices().size(), 1u);
}

TEST_F(StoringWrites, WithinARunOnlyTheWordsThatChangeAreAnnounced)
{
    plan({key("R_W", 10, 3)});
    save("R_W", 10, 3, "00 00 01 00 00 00");
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_W", 11}}));
}

TEST_F(StoringWrites, TimersAndCountersAreAnnouncedUnderTheAreaNameAlone)
{
    put("T", 4, "");
    watch("T", 4, 1, 0xFFFF);
    put("C", 5, "");
    watch("C", 5, 1, 0xFFFF);
    save("T", 4, 1, "FF 00");
    save("C", 5, 1, "FF 00");
    EXPECT_EQ(notices(), (Notices{{7, 1, "T", 4}, {7, 1, "C", 5}}));
    EXPECT_EQ(pending("T", 4), "FF 00 00 00");
}

TEST_F(StoringWrites, ACallbackThatReadsBackAWordStillSeesTheOldValue)
{
    plan({key("M_W", 3, 2)});
    std::string seen;
    whenTold([&](const Notice& notice) { seen += read("M_W", notice.address, 1) + ";"; });
    save("M_W", 3, 2, "34 12 78 56");
    EXPECT_EQ(seen, "00 00;00 00;");
    EXPECT_EQ(read("M_W", 3, 2), "34 12 78 56");
}

// Double words

TEST_F(StoringWrites, ADoubleWordFillsTwoUnitsSecondWordFirst)
{
    save("R_D", 10, 4, "01 02 03 04 05 06 07 08");
    EXPECT_EQ(units(), Units({"1/R 11", "1/R 10", "1/R 13", "1/R 12"}));
    EXPECT_EQ(pending("R", 10), "01 02 00 00");
    EXPECT_EQ(pending("R", 11), "03 04 00 00");
    EXPECT_EQ(pending("R", 12), "05 06 00 00");
    EXPECT_EQ(pending("R", 13), "07 08 00 00");
    EXPECT_TRUE(isPending("R", 10));
    EXPECT_TRUE(isPending("R", 11));
    EXPECT_EQ(read("R_D", 10, 4), "01 02 03 04 05 06 07 08");
}

TEST_F(StoringWrites, ADoubleWordIsAnnouncedWordByWordSecondWordFirst)
{
    plan({key("R_D", 10, 2), key("R_W", 10, 2), key("R_bit", 160, 1), key("R_bit", 191, 1)});
    save("R_D", 10, 2, "01 00 00 80");
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_bit", 191},
                                  {7, 1, "R_W", 11},
                                  {7, 1, "R_D", 10},
                                  {7, 1, "R_bit", 160},
                                  {7, 1, "R_W", 10},
                                  {7, 1, "R_D", 10}}));
}

TEST_F(StoringWrites, OfADoubleWordOnlyTheWordThatChangesIsAnnounced)
{
    plan({key("R_D", 10, 2)});
    save("R_D", 10, 2, "00 00 01 00");
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_D", 10}}));
    save("R_D", 10, 2, "00 00 01 00");
    EXPECT_EQ(notices(), Notices());
    EXPECT_TRUE(isPending("R", 10));
}

TEST_F(StoringWrites, AnOddTrailingWordOfADoubleWordIsNotStored)
{
    save("R_D", 10, 3, "01 02 03 04 05 06");
    EXPECT_EQ(units(), Units({"1/R 11", "1/R 10"}));
    save("R_D", 20, 1, "01 02");
    EXPECT_EQ(units(), Units({"1/R 11", "1/R 10"}));
}

TEST_F(StoringWrites, DoubleWordsAreStoredWhollyWhereverTheirRecordsStand)
{
    for (const int firstRecord : {10, 11}) {
        driver.dataAreas.clear();
        put("R", firstRecord, "");
        save("R_D", 10, 4, "01 02 03 04 05 06 07 08");
        EXPECT_EQ(read("R_D", 10, 4), "01 02 03 04 05 06 07 08") << firstRecord;
    }
}

TEST_F(StoringWrites, EachWordOfADoubleWordIsStoredRightAfterItWasAnnounced)
{
    put("R", 10, "11 12");
    put("R", 11, "13 14");
    watch("R", 10, 3);
    watch("R", 11, 5);
    std::vector<std::string> seen;
    whenTold([&](const Notice&) { seen.push_back(read("R_W", 10, 2)); });
    save("R_D", 10, 2, "21 22 23 24");
    EXPECT_EQ(seen, Units({"11 12 13 14", "11 12 13 14", "11 12 23 24", "11 12 23 24"}));
}

// Bits

TEST_F(StoringWrites, ABitLandsInItsByteAndTheRestOfTheWordIsCompleted)
{
    put("M", 1, "34 12");
    save("M_bit", 16, 1, "01");
    EXPECT_EQ(pending("M", 1), "35 12 00 00");
    EXPECT_TRUE(isPending("M", 1));
    EXPECT_EQ(device("M", 1), "34 12 00 00");

    put("M", 2, "34 12");
    save("M_bit", 47, 1, "01"); // word 2, bit 15
    EXPECT_EQ(pending("M", 2), "34 92 00 00");
}

TEST_F(StoringWrites, ABitOfAPendingWordChangesOnlyWhatWasWritten)
{
    putPending("M", 1, "FF FF", "34 12");
    save("M_bit", 16, 1, "01");
    EXPECT_EQ(pending("M", 1), "35 12 00 00");
    save("M_bit", 25, 1, "00"); // bit 9
    EXPECT_EQ(pending("M", 1), "35 10 00 00");
}

TEST_F(StoringWrites, WhatWasWrittenOnceAndIsSettledDoesNotComeBackWithABit)
{
    putPending("M", 1, "34 12", "FF FF");
    driver.dataAreas[0].writePending = 0;
    save("M_bit", 16, 1, "01");
    EXPECT_EQ(pending("M", 1), "35 12 00 00");
    driver.dataAreas[0].writePending = 0;
    save("M_bit", 24, 1, "01");
    EXPECT_EQ(pending("M", 1), "34 13 00 00");
}

TEST_F(StoringWrites, OneSetsABitAndAnyOtherNumberClearsIt)
{
    put("M", 1, "FF FF");
    save("M_bit", 16, 4, "01 00 02 FF");
    EXPECT_EQ(pending("M", 1), "F1 FF 00 00");
}

TEST_F(StoringWrites, BitsRunAcrossWords)
{
    save("M_bit", 14, 4, "01 00 00 01");
    EXPECT_EQ(units(), Units({"1/M 0", "1/M 1"}));
    EXPECT_EQ(pending("M", 0), "00 40 00 00");
    EXPECT_EQ(pending("M", 1), "02 00 00 00");
}

TEST_F(StoringWrites, ABitAndItsWordShareTheirRecordAndBothAreAnnounced)
{
    plan({key("M_bit", 20, 1), key("M_W", 1, 1)});
    save("M_bit", 20, 1, "01");
    EXPECT_EQ(units(), Units({"1/M 1"}));
    EXPECT_EQ(read("M_W", 1, 1), "10 00");
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_bit", 20}, {7, 1, "M_W", 1}}));
}

TEST_F(StoringWrites, ABitOfAWatchedDoubleWordAnnouncesTheDoubleWord)
{
    plan({key("R_D", 10, 2)});
    save("R_bit", 11 * 16 + 9, 1, "01");
    EXPECT_EQ(notices(), (Notices{{7, 1, "R_D", 10}}));
}

TEST_F(StoringWrites, ABitAnnouncesOnlyTheWatchedBitThatChanged)
{
    put("M", 1, "34 12");
    watch("M", 1, 0, 0xFFFF);
    save("M_bit", 25, 1, "00"); // bit 9 of 0x1234 is set
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_bit", 25}}));
    save("M_bit", 16, 1, "01");
    EXPECT_EQ(notices(), (Notices{{7, 1, "M_bit", 16}}));
}

TEST_F(StoringWrites, ABitThatReadsTheSameAlreadyIsCountedAndPendingButNotAnnounced)
{
    put("M", 1, "34 12");
    watch("M", 1, 1, 0xFFFF);
    save("M_bit", 18, 1, "01");
    EXPECT_EQ(notices(), Notices());
    EXPECT_TRUE(isPending("M", 1));
    EXPECT_EQ(pending("M", 1), "34 12 00 00");
    EXPECT_EQ(pendingBits("M", 1), 0x10u);
}

TEST_F(StoringWrites, ACallbackThatReadsBackABitStillSeesTheOldValue)
{
    plan({key("M_bit", 20, 1)});
    std::string seen;
    whenTold([&](const Notice&) { seen = read("M_bit", 20, 1); });
    save("M_bit", 20, 1, "01");
    EXPECT_EQ(seen, "00");
    EXPECT_EQ(read("M_bit", 20, 1), "01");
}

// Nothing to store

TEST_F(StoringWrites, BitsOfTheFirstTypeAreStoredAsThoseOfAnyOther)
{
    save("I_bit", 18, 1, "01");
    EXPECT_EQ(read("I_bit", 17, 3), "00 01 00");
    EXPECT_TRUE(isPending("I", 1));
}

TEST_F(StoringWrites, AnUnknownRegisterStoresAndCreatesNothing)
{
    unsigned char data[2] = {1, 1};
    write_saveDataToArea(1, name("X_W"), 0, 1, data);
    write_saveDataToArea(1, name("m_w"), 0, 1, data);
    write_saveDataToArea(1, QString(), 0, 1, data);
    EXPECT_EQ(units(), Units());
}

TEST_F(StoringWrites, LengthsOfZeroAndBelowStoreNothing)
{
    unsigned char data[4] = {1, 1, 1, 1};
    for (const char* regName : {"M_bit", "M_W", "R_D", "T"}) {
        for (int length : {0, -1, -2, -3, INT_MIN, INT_MIN + 1}) {
            write_saveDataToArea(1, name(regName), 5, length, data);
        }
    }
    EXPECT_EQ(units(), Units());
}

TEST_F(StoringWrites, WordsRunAcrossTheHighestNumberIntoTheLowest)
{
    save("M_W", INT_MAX, 2, "01 02 03 04");
    EXPECT_EQ(units(), Units({"1/M 2147483647", "1/M -2147483648"}));
    EXPECT_EQ(pending("M", INT_MIN), "03 04 00 00");
    save("M_bit", INT_MAX, 2, "01 01");
    EXPECT_EQ(pending("M", 134217727), "00 80 00 00");
    EXPECT_EQ(pending("M", -134217728), "01 00 00 00");
}

} // namespace
