#include "planning/condition_reads.h"

#include <gmock/gmock.h>

#include "cache_world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class ConditionReads : public DriverTest {};

TEST_F(ConditionReads, OfAnUnknownNameIsRefusedAndChangesNothing)
{
    ask(key("R_W", 10, 1));
    EXPECT_EQ(ask(key("r_w", 20, 1)), -1);
    EXPECT_EQ(ask(key("M", 20, 1)), -1);
    EXPECT_EQ(ask(key("", 20, 1)), -1);
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/R_W:10+1"));
    EXPECT_EQ(summary(driver.lastConditionVar), "1/R_W:10+1");
}

TEST_F(ConditionReads, OfWordsKeepNameAndAddress)
{
    EXPECT_EQ(ask(key("R_W", 10, 3, 5)), 1);
    EXPECT_EQ(ask(key("R_D", 10, 2, 5)), 1);
    EXPECT_EQ(ask(key("T", 10, 1, 5)), 1);
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("5/R_W:10+3", "5/R_D:10+2", "5/T:10+1"));
}

TEST_F(ConditionReads, OfBitsNameTheWordsByTheAreaLetterAlone)
{
    EXPECT_EQ(ask(key("M_bit", 20, 5)), 1);
    EXPECT_EQ(ask(key("R_bit", 15, 2)), 1);
    EXPECT_EQ(ask(key("I_bit", 32, 10)), 1);
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/M:1+1", "1/R:0+2", "1/I:2+1"));
}

TEST_F(ConditionReads, CarryTheCallersKindAndZeroedValues)
{
    KEY_ADDRESS wanted = key("R_W", 10, 1);
    wanted.data[0] = 0x55;
    ask(wanted, 42);
    EXPECT_EQ(driver.conditionList.at(0).kind, 42);
    EXPECT_EQ(driver.conditionList.at(0).data[0], 0);
    EXPECT_EQ(driver.lastConditionVar.kind, 42);
    EXPECT_EQ(driver.lastConditionVar.data[0], 0);
}

TEST_F(ConditionReads, CopyTheValuesOfTheLastRequestToo)
{
    driver.lastConditionVar.data[1023] = 0x55;
    ask(key("R_W", 10, 1), 42);
    EXPECT_EQ(driver.lastConditionVar.data[1023], 0);
}

TEST_F(ConditionReads, TakeNoLock)
{
    // A host may ask while one of its threads is within a call that holds the mutex.
    driver.mutex.lock();
    EXPECT_EQ(ask(key("R_W", 10, 1)), 1);
    driver.mutex.unlock();
}

TEST_F(ConditionReads, AreCutAtTheWordLimit)
{
    EXPECT_EQ(ask(key("R_W", 100, 25)), 1);
    EXPECT_THAT(summary(driver.conditionList),
                ElementsAre("1/R_W:100+10", "1/R_W:110+10", "1/R_W:120+5"));
    EXPECT_EQ(summary(driver.lastConditionVar), "1/R_W:120+5");
}

TEST_F(ConditionReads, OfAMultipleOfTheLimitLeaveNoRemainder)
{
    ask(key("R_W", 100, 10));
    ask(key("R_W", 200, 20));
    EXPECT_THAT(summary(driver.conditionList),
                ElementsAre("1/R_W:100+10", "1/R_W:200+10", "1/R_W:210+10"));
}

TEST_F(ConditionReads, OfBitValuesAreCutAtTheBitLimit)
{
    EXPECT_EQ(ask(key("M_bit", 0, 100, 1, -1)), 1); // 8 * 10 bits, then 20
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/M:0+5", "1/M:5+2"));
}

TEST_F(ConditionReads, TakeTheLimitByTheKindOfValueAndNotByTheName)
{
    ask(key("R_W", 0, 100, 1, -1));
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/R_W:0+80", "1/R_W:80+20"));
    driver.conditionList.clear();
    ask(key("M_bit", 20, 25, 1, 0)); // bits 20 to 29, 30 to 39, 40 to 44
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/M:1+1", "1/M:1+2", "1/M:2+1"));
}

TEST_F(ConditionReads, WithoutAPieceLimitAreCutIntoWhatOneWriteCarries)
{
    for (const char* property : {"7#0#0#3#0", "7#0#0#3#-5", "7#0#0#3#x"}) {
        configure(property);
        EXPECT_EQ(ask(key("R_W", 0, 250)), 1);
        EXPECT_EQ(ask(key("M_bit", 0, 1000, 1, -1)), 1);
        EXPECT_THAT(
            summary(driver.conditionList),
            ElementsAre("1/R_W:0+123", "1/R_W:123+123", "1/R_W:246+4", "1/M:0+62", "1/M:61+2"));
    }
}

TEST_F(ConditionReads, OfNoUnitsAreOneRequestAsTheyStand)
{
    EXPECT_EQ(ask(key("R_W", 10, 0)), 1);
    EXPECT_EQ(ask(key("R_W", 10, -4)), 1);
    EXPECT_EQ(ask(key("M_bit", 16, 0)), 1);
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/R_W:10+0", "1/R_W:10+-4", "1/M:1+0"));
}

TEST_F(ConditionReads, BelowAddressZeroTruncateTowardsZero)
{
    // Bit -20: word -1, and -4 + 5 = 1 bit of it. Bit -5: word 0, -5 + 3 = -2 leaves a remainder.
    ask(key("M_bit", -20, 5));
    ask(key("M_bit", -5, 3));
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/M:-1+1", "1/M:0+1"));
}

// Units of another width than sixteen bits.

TEST_F(ConditionReads, CountByteUnitsInBytes)
{
    EXPECT_EQ(
        summary(conditionRequest(runOf(key("B_bit", 20, 5), 0), registerRow("B_bit", "1", "8"), 3)),
        "1/B:2+2");
    EXPECT_EQ(
        summary(conditionRequest(runOf(key("B_W", 20, 5), 0), registerRow("B_W", "16", "8"), 3)),
        "1/B_W:20+10");
}

TEST_F(ConditionReads, CountBitUnitsInBits)
{
    EXPECT_EQ(
        summary(conditionRequest(runOf(key("B_W", 20, 5), 0), registerRow("B_W", "16", "1"), 3)),
        "1/B_W:20+80");
}

TEST_F(ConditionReads, TakeTheScaleOfAUnitAsAWholeNumberFirst)
{
    // 16 / 32 is 0 in whole numbers, and so is every length.
    EXPECT_EQ(
        summary(conditionRequest(runOf(key("B_D", 20, 5), 0), registerRow("B_D", "32", "32"), 3)),
        "1/B_D:20+0");
}

TEST_F(ConditionReads, NameBitsByWhatStandsBeforeTheFirstUnderscore)
{
    EXPECT_EQ(summary(conditionRequest(runOf(key("M_2_bit", 20, 5), 0),
                                       registerRow("M_2_bit", "1", "16"), 3)),
              "1/M:1+1");
    EXPECT_EQ(summary(conditionRequest(runOf(key("M_Bit", 20, 5), 0),
                                       registerRow("M_Bit", "1", "16"), 3)),
              "1/M_Bit:20+5");
}

// Storing.

TEST_F(ConditionReads, AreQueuedInTheOrderOfTheCalls)
{
    ask(key("R_W", 30, 1));
    ask(key("R_W", 10, 1));
    ask(key("M_W", 20, 1, 2));
    EXPECT_THAT(summary(driver.conditionList),
                ElementsAre("1/R_W:30+1", "1/R_W:10+1", "2/M_W:20+1"));
}

TEST_F(ConditionReads, EqualToOneBehindTheHeadReplaceIt)
{
    fillConditionList(3);
    ask(key("R_W", 1001, 1), 9);
    EXPECT_THAT(summary(driver.conditionList),
                ElementsAre("1/R_W:1000+1", "1/R_W:1001+1", "1/R_W:1002+1"));
    EXPECT_EQ(driver.conditionList.at(1).kind, 9);
    EXPECT_EQ(driver.conditionList.at(1).data[0], 0);
    EXPECT_EQ(driver.conditionList.at(0).kind, 1);
    EXPECT_EQ(driver.conditionList.at(2).kind, 1);
}

TEST_F(ConditionReads, EqualToTheHeadAreQueuedAgain)
{
    fillConditionList(1);
    ask(key("R_W", 1000, 1), 9);
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/R_W:1000+1", "1/R_W:1000+1"));
    EXPECT_EQ(driver.conditionList.at(0).kind, 1);
    EXPECT_EQ(driver.conditionList.at(1).kind, 9);
    ask(key("R_W", 1000, 1), 10);
    EXPECT_EQ(driver.conditionList.size(), 2);
    EXPECT_EQ(driver.conditionList.at(1).kind, 10);
}

TEST_F(ConditionReads, AreEqualOnlyInStationNameAddressAndLengthTogether)
{
    fillConditionList(2);
    ask(key("R_W", 1001, 1, 2));
    ask(key("M_W", 1001, 1));
    ask(key("R_W", 1002, 1));
    ask(key("R_W", 1001, 2));
    EXPECT_EQ(driver.conditionList.size(), 6);
}

TEST_F(ConditionReads, ReplaceTheLastOfSeveralEqualOnes)
{
    fillConditionList(4);
    driver.conditionList[1] = driver.conditionList.at(3);
    ask(key("R_W", 1003, 1), 9);
    EXPECT_EQ(driver.conditionList.size(), 4);
    EXPECT_EQ(driver.conditionList.at(1).kind, 1);
    EXPECT_EQ(driver.conditionList.at(3).kind, 9);
}

TEST_F(ConditionReads, GrowTheListTo513AndThenRefillItsEntry512)
{
    fillConditionList(512);
    ask(key("R_W", 1, 1));
    ASSERT_EQ(driver.conditionList.size(), 513);
    EXPECT_EQ(summary(driver.conditionList.at(512)), "1/R_W:1+1");
    ask(key("R_W", 2, 1), 9);
    ASSERT_EQ(driver.conditionList.size(), 513);
    EXPECT_EQ(summary(driver.conditionList.at(512)), "1/R_W:2+1");
    EXPECT_EQ(driver.conditionList.at(512).kind, 9);
    EXPECT_EQ(summary(driver.conditionList.at(511)), "1/R_W:1511+1");
}

TEST_F(ConditionReads, ReplaceAnEqualOneInAFullListToo)
{
    fillConditionList(513);
    ask(key("R_W", 1200, 1), 9);
    ASSERT_EQ(driver.conditionList.size(), 513);
    EXPECT_EQ(driver.conditionList.at(200).kind, 9);
    EXPECT_EQ(driver.conditionList.at(512).kind, 1);
}

TEST_F(ConditionReads, RefillEntry512OfAListMadeLongerFromOutside)
{
    fillConditionList(600);
    ask(key("R_W", 2, 1));
    ASSERT_EQ(driver.conditionList.size(), 600);
    EXPECT_EQ(summary(driver.conditionList.at(512)), "1/R_W:2+1");
    EXPECT_EQ(summary(driver.conditionList.at(599)), "1/R_W:1599+1");
}

TEST_F(ConditionReads, NoteTheOneAddedLastWhereverItWasStored)
{
    fillConditionList(3);
    ask(key("R_W", 1001, 1), 9);
    EXPECT_EQ(summary(driver.lastConditionVar), "1/R_W:1001+1");
    EXPECT_EQ(driver.lastConditionVar.kind, 9);
    fillConditionList(513);
    ask(key("M_bit", 20, 5));
    EXPECT_EQ(summary(driver.lastConditionVar), "1/M:1+1");
}

TEST_F(ConditionReads, NoticeThatTheListWasEmptiedFromOutside)
{
    ask(key("R_W", 10, 1));
    ask(key("R_W", 11, 1));
    driver.conditionList.clear();
    ask(key("R_W", 11, 1));
    EXPECT_THAT(summary(driver.conditionList), ElementsAre("1/R_W:11+1"));
    driver.conditionList[0].address = 50;
    ask(key("R_W", 51, 1));
    driver.conditionList[1].address = 52;
    ask(key("R_W", 51, 1));
    EXPECT_THAT(summary(driver.conditionList),
                ElementsAre("1/R_W:50+1", "1/R_W:52+1", "1/R_W:51+1"));
}

TEST_F(ConditionReads, AreDroppedByInitialisationButTheLastOneStaysNoted)
{
    ask(key("R_W", 10, 1));
    configure();
    EXPECT_THAT(summary(driver.conditionList), IsEmpty());
    EXPECT_EQ(summary(driver.lastConditionVar), "1/R_W:10+1");
}

} // namespace
