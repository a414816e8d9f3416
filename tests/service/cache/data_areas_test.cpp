
#include <climits>

#include "cache/data_areas.h"
#include "cache_world.h"
#include "uncalled_functions.h"

namespace {

using DataAreas = CacheTest;

// Looking up

TEST_F(DataAreas, LookingUpTheSameUnitTwiceGivesTheSameIndex)
{
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), 3, driver.dataAreas), 0);
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), 3, driver.dataAreas), 0);
    EXPECT_EQ(units(), Units({"1/M 3"}));
}

TEST_F(DataAreas, AnotherStationAreaOrAddressGetsANewRecordAtTheEnd)
{
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), 3, driver.dataAreas), 0);
    EXPECT_EQ(getIndexOfDataArea(2, name("M"), 3, driver.dataAreas), 1);
    EXPECT_EQ(getIndexOfDataArea(1, name("R"), 3, driver.dataAreas), 2);
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), 2, driver.dataAreas), 3);
    EXPECT_EQ(getIndexOfDataArea(1, name("R"), 3, driver.dataAreas), 2);
    EXPECT_EQ(units(), Units({"1/M 3", "2/M 3", "1/R 3", "1/M 2"}));
}

TEST_F(DataAreas, AreaNamesAreComparedExactly)
{
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), 3, driver.dataAreas), 0);
    EXPECT_EQ(getIndexOfDataArea(1, name("m"), 3, driver.dataAreas), 1);
    EXPECT_EQ(getIndexOfDataArea(1, name("M_W"), 3, driver.dataAreas), 2);
    EXPECT_EQ(getIndexOfDataArea(1, name(""), 3, driver.dataAreas), 3);
    EXPECT_EQ(getIndexOfDataArea(1, QString(), 3, driver.dataAreas), 3);
}

TEST_F(DataAreas, ANewRecordIsZeroButForItsKey)
{
    getIndexOfDataArea(9, name("R"), 100, driver.dataAreas);
    const _DATA_ record = driver.dataAreas.at(0);
    EXPECT_EQ(record.spareFlag, 0);
    EXPECT_EQ(record.writePending, 0);
    EXPECT_EQ(record.pendingBits, 0u);
    EXPECT_EQ(record.viewFlags, 0);
    EXPECT_EQ(record.bitMonitor, 0u);
    EXPECT_EQ(record.station, 9);
    EXPECT_EQ(text(record.area), "R");
    EXPECT_EQ(record.address, 100);
    EXPECT_EQ(toHex(record.deviceValue, 4), "00 00 00 00");
    EXPECT_EQ(toHex(record.pendingValue, 4), "00 00 00 00");
}

TEST_F(DataAreas, AnyStationAndAddressGetsARecord)
{
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), -1, driver.dataAreas), 0);
    EXPECT_EQ(getIndexOfDataArea(-5, name("M"), INT_MIN, driver.dataAreas), 1);
    EXPECT_EQ(getIndexOfDataArea(INT_MAX, name("M"), INT_MAX, driver.dataAreas), 2);
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), -1, driver.dataAreas), 0);
    EXPECT_EQ(getIndexOfDataArea(-5, name("M"), INT_MIN, driver.dataAreas), 1);
    EXPECT_EQ(getIndexOfDataArea(INT_MAX, name("M"), INT_MAX, driver.dataAreas), 2);
}

TEST_F(DataAreas, AListOfTheHostsOwnIsSearchedAndExtendedInsteadOfTheCache)
{
    QList<_DATA_> own;
    getIndexOfDataArea(1, name("M"), 7, driver.dataAreas);
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), 3, own), 0);
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), 7, own), 1);
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), 7, driver.dataAreas), 0);
    EXPECT_EQ(own.size(), 2);
    EXPECT_EQ(units(), Units({"1/M 7"}));
}

TEST_F(DataAreas, OfTwoRecordsOfOneUnitTheFirstAnswers)
{
    put("M", 1, "");
    put("M", 3, "11");
    put("M", 3, "22");
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), 3, driver.dataAreas), 1);
    EXPECT_EQ(read("M_W", 3, 1), "11 00");
    EXPECT_EQ(driver.dataAreas.size(), 3);
}

// Marking

TEST_F(DataAreas, MarkingAnUnknownRegisterNameGivesMinusOneAndCreatesNothing)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(1, name("X_W"), 0, 4), -1);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, name("r_w"), 0, 4), -1);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, name("R"), 0, 4), -1);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, QString(), 0, 4), -1);
    EXPECT_EQ(units(), Units());
}

TEST_F(DataAreas, MarkingAKnownRegisterGivesZero)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(1, name("R_W"), 0, 1), 0);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, name("R_D"), 0, 1), 0);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, name("M_bit"), 0, 0), 0);
}

TEST_F(DataAreas, MarkingWordsMarksTheirOwnWidth)
{
    _setDataAreaMonitorFlag(1, name("R_W"), 10, 3);
    EXPECT_EQ(marks(), Units({"R10 views 1", "R11 views 1", "R12 views 1"}));
}

TEST_F(DataAreas, MarkingTimersAndCountersMarksThePlainView)
{
    _setDataAreaMonitorFlag(1, name("T"), 4, 1);
    _setDataAreaMonitorFlag(1, name("C"), 127, 1);
    EXPECT_EQ(marks(), Units({"T4 views 1", "C127 views 1"}));
}

TEST_F(DataAreas, MarkingDoubleWordsMarksFirstAndSecondWords)
{
    _setDataAreaMonitorFlag(1, name("R_D"), 10, 4);
    EXPECT_EQ(marks(), Units({"R10 views 2", "R11 views 4", "R12 views 2", "R13 views 4"}));
}

TEST_F(DataAreas, AnOddTrailingWordOfADoubleWordMarksNothing)
{
    _setDataAreaMonitorFlag(1, name("R_D"), 10, 3);
    EXPECT_EQ(marks(), Units({"R10 views 2", "R11 views 4"}));
    _setDataAreaMonitorFlag(1, name("R_D"), 20, 1);
    EXPECT_EQ(marks(), Units({"R10 views 2", "R11 views 4"}));
}

TEST_F(DataAreas, DoubleWordsAtNeighbouringWordsShareTheirWords)
{
    _setDataAreaMonitorFlag(1, name("R_D"), 10, 2);
    _setDataAreaMonitorFlag(1, name("R_D"), 11, 2);
    EXPECT_EQ(marks(), Units({"R10 views 2", "R11 views 6", "R12 views 4"}));
}

TEST_F(DataAreas, MarkingBitsMarksTheBitsOfTheirWords)
{
    _setDataAreaMonitorFlag(1, name("M_bit"), 14, 4);
    EXPECT_EQ(marks(), Units({"M0 bits C000", "M1 bits 0003"}));
}

TEST_F(DataAreas, EveryBitOfAWordCanBeMarked)
{
    _setDataAreaMonitorFlag(1, name("R_bit"), 32, 16);
    EXPECT_EQ(marks(), Units({"R2 bits FFFF"}));
}

TEST_F(DataAreas, BitWordAndDoubleWordViewsOfAPlaceShareOneRecord)
{
    _setDataAreaMonitorFlag(1, name("R_bit"), 20, 1);
    _setDataAreaMonitorFlag(1, name("R_W"), 1, 1);
    _setDataAreaMonitorFlag(1, name("R_D"), 1, 2);
    EXPECT_EQ(marks(), Units({"R1 views 3 bits 0010", "R2 views 4"}));
}

TEST_F(DataAreas, MarkingOnlyEverAddsMarksAndKeepsTheValues)
{
    putPending("M", 1, "12 34", "56 78");
    _setDataAreaMonitorFlag(1, name("M_bit"), 20, 1);
    _setDataAreaMonitorFlag(1, name("M_bit"), 20, 1);
    _setDataAreaMonitorFlag(1, name("M_bit"), 21, 1);
    _setDataAreaMonitorFlag(1, name("M_W"), 1, 1);
    _setDataAreaMonitorFlag(1, name("M_W"), 1, 1);
    EXPECT_EQ(marks(), Units({"M1 views 1 bits 0030"}));
    EXPECT_EQ(device("M", 1), "12 34 00 00");
    EXPECT_EQ(pending("M", 1), "56 78 00 00");
    EXPECT_TRUE(isPending("M", 1));
    EXPECT_EQ(notices(), Notices());
}

TEST_F(DataAreas, StationsAreMarkedApart)
{
    _setDataAreaMonitorFlag(2, name("M_W"), 1, 1);
    _setDataAreaMonitorFlag(1, name("M_bit"), 16, 1);
    EXPECT_EQ(units(), Units({"2/M 1", "1/M 1"}));
    EXPECT_EQ(marks(), Units({"M1 views 1", "M1 bits 0001"}));
}

TEST_F(DataAreas, LengthsOfZeroAndBelowMarkNothing)
{
    for (const char* regName : {"M_bit", "M_W", "R_D", "T"}) {
        for (int length : {0, -1, -2, -3, INT_MIN, INT_MIN + 1}) {
            EXPECT_EQ(_setDataAreaMonitorFlag(1, name(regName), 5, length), 0);
        }
    }
    EXPECT_EQ(units(), Units());
}

TEST_F(DataAreas, ANewPlanWatchesExactlyItsOwnAddressesAndKeepsTheRecords)
{
    plan({key("M_W", 1, 1), key("R_D", 4, 2), key("M_bit", 33, 1)});
    write("M_bit", 33, 1, "01");
    ASSERT_EQ(pendingBits("M", 2), 4u);
    plan({key("M_W", 2, 1)});
    EXPECT_EQ(marks(), Units({"M1", "R4", "R5", "M2 views 1"}));
    EXPECT_EQ(pendingBits("M", 2), 0u);
    EXPECT_TRUE(isPending("M", 2));
    EXPECT_EQ(pending("M", 2), "02 00 00 00");
}

TEST_F(DataAreas, ReinitialisingEmptiesTheCache)
{
    _setDataAreaMonitorFlag(1, name("M_W"), 1, 2);
    configure();
    EXPECT_EQ(units(), Units());
    EXPECT_EQ(getIndexOfDataArea(1, name("M"), 2, driver.dataAreas), 0);
}

// Addresses outside every range

TEST_F(DataAreas, WordsRunAcrossTheHighestNumberIntoTheLowest)
{
    _setDataAreaMonitorFlag(1, name("M_W"), INT_MAX, 2);
    EXPECT_EQ(units(), Units({"1/M 2147483647", "1/M -2147483648"}));
}

TEST_F(DataAreas, BitsRunAcrossTheHighestNumberIntoTheLowest)
{
    _setDataAreaMonitorFlag(1, name("M_bit"), INT_MAX, 2);
    EXPECT_EQ(marks(), Units({"M134217727 bits 8000", "M-134217728 bits 0001"}));
}

TEST_F(DataAreas, DoubleWordsRunAcrossTheHighestNumberIntoTheLowest)
{
    _setDataAreaMonitorFlag(1, name("R_D"), INT_MAX, 4);
    EXPECT_EQ(marks(), Units({"R2147483647 views 2", "R-2147483648 views 4", "R-2147483647 views 2",
                              "R-2147483646 views 4"}));
}

TEST_F(DataAreas, NegativeAddressesAreUnitsLikeAnyOther)
{
    _setDataAreaMonitorFlag(1, name("M_W"), -2, 2);
    _setDataAreaMonitorFlag(1, name("M_bit"), -32, 1);
    _setDataAreaMonitorFlag(1, name("R_D"), -1, 2);
    EXPECT_EQ(marks(),
              Units({"M-2 views 1 bits 0001", "M-1 views 1", "R-1 views 2", "R0 views 4"}));
}

// Word -1 holds the bits -16 to -1 nowhere: division truncates, and the remainder names no bit.
TEST_F(DataAreas, ABitAddressBelowZeroThatNamesNoBitIsNeitherMarkedNorStoredNorSettled)
{
    for (int address : {-1, -15, -17, INT_MIN + 1}) {
        EXPECT_EQ(_setDataAreaMonitorFlag(1, name("M_bit"), address, 1), 0);
        save("M_bit", address, 1, "01");
        settleNamed("M_bit", address, 1, 1);
        settleNamed("M_bit", address, 1, 0);
        EXPECT_EQ(read("M_bit", address, 1), "00");
    }
    EXPECT_EQ(units(), Units());
    EXPECT_EQ(notices(), Notices());
}

TEST_F(DataAreas, ARunOfBitsFromBelowZeroCoversItsExistingBits)
{
    _setDataAreaMonitorFlag(1, name("M_bit"), -17, 20);
    EXPECT_EQ(marks(), Units({"M-1 bits 0001", "M0 bits 0007"}));
    save("M_bit", -17, 20, "01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01");
    EXPECT_EQ(pending("M", -1), "01 00 00 00");
    EXPECT_EQ(pending("M", 0), "07 00 00 00");
    EXPECT_EQ(read("M_bit", -17, 20),
              "00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 01 01");
    settleNamed("M_bit", -17, 20, 1);
    EXPECT_EQ(device("M", -1), "01 00 00 00");
    EXPECT_EQ(device("M", 0), "07 00 00 00");
    EXPECT_FALSE(isPending("M", 0));
}

TEST_F(DataAreas, LongRunsAreMarkedWhole)
{
    _setDataAreaMonitorFlag(1, name("R_W"), 0, 65536);
    ASSERT_EQ(driver.dataAreas.size(), 65536);
    EXPECT_EQ(driver.dataAreas.at(65535).address, 65535);
    EXPECT_EQ(driver.dataAreas.at(65535).viewFlags, 1);
    EXPECT_EQ(getIndexOfDataArea(1, name("R"), 40000, driver.dataAreas), 40000);
}

// Bits of a number

} // namespace
