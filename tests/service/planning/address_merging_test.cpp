#include "planning/address_merging.h"
#include "uncalled_functions.h"

#include <climits>
#include <gmock/gmock.h>

#include "protocol/address_text.h"
#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

std::vector<int> listed(const QList<int>& list)
{
    return std::vector<int>(list.begin(), list.end());
}

class AddressMerging : public DriverTest {
protected:
    // What the engine makes of these keys; merged() keeps the whole records.
    std::vector<std::string> merge(const QList<KEY_ADDRESS>& keys, int mode = mergeCyclic)
    {
        DebugLines quiet;
        driver.groupStarts.clear();
        merged = keys;
        addrMerge(merged, mode);
        return summary(merged);
    }

    QList<KEY_ADDRESS> merged;
};

// The engine: sorting.

TEST_F(AddressMerging, CyclicKeysAreSortedByStationThenTypeInTableOrderThenAddress)
{
    EXPECT_THAT(
        merge({key("C", 5, 1, 2), key("R_W", 900, 1, 1), key("T", 3, 1, 1), key("R_W", 50, 1, 1),
               key("I_W", 7, 1, 1), key("I_W", 100, 1, 2), key("M_bit", 160, 1, 1)}),
        ElementsAre("1/I_W:7+1", "1/M_W:10+1", "1/R_W:50+1", "1/R_W:900+1", "1/T:3+1",
                    "2/I_W:100+1", "2/C:5+1"));
}

TEST_F(AddressMerging, AnUnknownNameSortsOneTypeBelowTheFirst)
{
    // 720885 - 65535 + 3 = 655353: between C 2 and C 4 of the station before.
    EXPECT_THAT(
        merge({key("I_W", 0, 1, 1), key("C", 4, 1, 0), key("odd", 3, 1, 1), key("C", 2, 1, 0)}),
        ElementsAre("0/C:2+1", "1/odd:3+1", "0/C:4+1", "1/I_W:0+1"));
}

TEST_F(AddressMerging, SortKeysCompareAsUnsignedNumbers)
{
    // At station 0 an unknown name's key is -65535 + 3: as an unsigned number the greatest of all.
    EXPECT_THAT(merge({key("odd", 3, 1, 0), key("C", 127, 1, 200)}),
                ElementsAre("200/C:127+1", "0/odd:3+1"));
}

TEST_F(AddressMerging, EqualSortKeysKeepTheirOrder)
{
    KEY_ADDRESS first = key("R_W", 10, 1);
    first.userIndex = 1;
    KEY_ADDRESS second = key("R_W", 10, 2);
    second.userIndex = 2;
    EXPECT_THAT(merge({key("R_W", 20, 1), second, first}), ElementsAre("1/R_W:10+11"));
    EXPECT_EQ(merged.at(0).userIndex, 2);
    EXPECT_THAT(merge({key("R_W", 20, 1), first, second}), ElementsAre("1/R_W:10+11"));
    EXPECT_EQ(merged.at(0).userIndex, 1);
}

TEST_F(AddressMerging, RecipeKeysAreNotSorted)
{
    EXPECT_THAT(merge({key("R_W", 200, 2), key("M_W", 5, 1), key("I_W", 5, 1)}, mergeRecipe),
                ElementsAre("1/R_W:200+2", "1/M_W:5+1", "1/I_W:5+1"));
}

TEST_F(AddressMerging, AnUnknownNamePassesThroughUnconverted)
{
    EXPECT_THAT(merge({key("X_bit", 20, 5), key("X_bit", 25, 5), key("x_bit", 30, 5)}),
                ElementsAre("1/X_bit:20+10", "1/x_bit:30+5"));
}

// The engine: joining touching runs.

TEST_F(AddressMerging, TouchingKeysJoin)
{
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 15, 3)}, mergeRecipe),
                ElementsAre("1/R_W:10+8"));
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 15, 3)}), ElementsAre("1/R_W:10+8"));
}

TEST_F(AddressMerging, OverlappingKeysJoinAndAContainedOneAddsNothing)
{
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 12, 10)}), ElementsAre("1/R_W:10+12"));
    EXPECT_THAT(merge({key("R_W", 10, 50), key("R_W", 12, 10)}), ElementsAre("1/R_W:10+50"));
}

TEST_F(AddressMerging, AHoleStaysInTheRecipePlanAndIsBridgedInTheCyclicOne)
{
    configure("7#0#0#3#2");
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 17, 3)}, mergeRecipe),
                ElementsAre("1/R_W:10+5", "1/R_W:17+3"));
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 17, 3)}), ElementsAre("1/R_W:10+10"));
    configure("7#0#0#3#1");
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 17, 3)}),
                ElementsAre("1/R_W:10+5", "1/R_W:17+3"));
}

TEST_F(AddressMerging, OtherStationsAndOtherAreasNeverJoin)
{
    configure("7#0#0#3#1000");
    EXPECT_THAT(merge({key("R_W", 10, 5, 1), key("R_W", 15, 3, 2), key("M_W", 15, 3, 1)}),
                ElementsAre("1/M_W:15+3", "1/R_W:10+5", "2/R_W:15+3"));
    EXPECT_THAT(merge({key("T", 10, 5), key("C", 15, 5)}), ElementsAre("1/T:10+5", "1/C:15+5"));
}

TEST_F(AddressMerging, BitsWordsAndDoubleWordsOfOneAreaJoin)
{
    EXPECT_THAT(merge({key("R_W", 14, 1), key("R_D", 10, 4), key("R_bit", 240, 16)}),
                ElementsAre("1/R_W:10+6"));
}

TEST_F(AddressMerging, ARunGoesUpTo128UnitsAndNotOneFurther)
{
    for (const int mode : {mergeCyclic, mergeRecipe}) {
        EXPECT_THAT(merge({key("R_W", 0, 100), key("R_W", 100, 28)}, mode),
                    ElementsAre("1/R_W:0+128"));
        EXPECT_THAT(merge({key("R_W", 0, 100), key("R_W", 100, 29)}, mode),
                    ElementsAre("1/R_W:0+100", "1/R_W:100+29"));
    }
}

TEST_F(AddressMerging, AKeyAbove128UnitsIsCutFromTheFront)
{
    for (const int mode : {mergeCyclic, mergeRecipe}) {
        EXPECT_THAT(merge({key("R_W", 0, 300)}, mode),
                    ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+44"));
        EXPECT_THAT(merge({key("R_W", 0, 256)}, mode), ElementsAre("1/R_W:0+128", "1/R_W:128+128"));
        EXPECT_THAT(merge({key("R_W", 0, 128)}, mode), ElementsAre("1/R_W:0+128"));
        EXPECT_THAT(merge({key("R_W", 0, 129)}, mode), ElementsAre("1/R_W:0+128", "1/R_W:128+1"));
    }
}

TEST_F(AddressMerging, ALongKeyIsCutWhereverItStandsInTheList)
{
    for (const int mode : {mergeCyclic, mergeRecipe}) {
        EXPECT_THAT(merge({key("M_W", 0, 200), key("R_W", 0, 200), key("R_W", 1000, 260)}, mode),
                    ElementsAre("1/M_W:0+128", "1/M_W:128+72", "1/R_W:0+128", "1/R_W:128+72",
                                "1/R_W:1000+128", "1/R_W:1128+128", "1/R_W:1256+4"));
    }
}

TEST_F(AddressMerging, TheRestOfALongKeyGoesOnAsAnOpenRun)
{
    for (const int mode : {mergeCyclic, mergeRecipe}) {
        EXPECT_THAT(merge({key("R_W", 0, 300), key("R_W", 300, 20)}, mode),
                    ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+64"));
        EXPECT_THAT(merge({key("R_W", 0, 256), key("R_W", 256, 20)}, mode),
                    ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+20"));
    }
}

TEST_F(AddressMerging, AJoinPullsTheAddressOfTheOpenRunBackToTheLowerOne)
{
    // The rest 256+44 of the long key is open when 0+10 comes: it overlaps, and the lower address
    // wins while the length stays.
    EXPECT_THAT(merge({key("R_W", 0, 300), key("R_W", 0, 10)}, mergeRecipe),
                ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:0+44"));
    EXPECT_THAT(merge({key("R_W", 104, 4), key("R_W", 100, 4)}, mergeRecipe),
                ElementsAre("1/R_W:100+4"));
    // Bridging holes goes by the same rule: 128+128 takes 5+44 in and begins at 5.
    EXPECT_THAT(merge({key("R_W", 0, 300), key("R_W", 5, 2)}),
                ElementsAre("1/R_W:0+128", "1/R_W:5+128"));
}

TEST_F(AddressMerging, AShortKeyBeforeALongOneIsTakenInWhenHolesAreBridged)
{
    EXPECT_THAT(merge({key("R_W", 0, 10), key("R_W", 0, 300)}, mergeRecipe),
                ElementsAre("1/R_W:0+10", "1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+44"));
    EXPECT_THAT(merge({key("R_W", 0, 10), key("R_W", 0, 300)}),
                ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+44"));
}

TEST_F(AddressMerging, AMergedKeyKeepsTheOtherFieldsOfTheKeyThatOpenedItsRun)
{
    KEY_ADDRESS opener = key("R_W", 10, 5, 1, -1);
    opener.tag = name("opener");
    opener.hostValue = 11;
    opener.userIndex = 12;
    opener.extText = name("text of the opener");
    opener.data[0] = 13;
    KEY_ADDRESS joined = key("R_W", 15, 300, 1, 3);
    joined.tag = name("joined");
    joined.userIndex = 22;
    for (const int mode : {mergeCyclic, mergeRecipe}) {
        merge({opener, key("R_W", 15, 5)}, mode);
        ASSERT_EQ(merged.size(), 1);
        EXPECT_EQ(text(merged.at(0).tag), "opener");
        EXPECT_EQ(merged.at(0).hostValue, 11);
        EXPECT_EQ(merged.at(0).userIndex, 12);
        EXPECT_EQ(text(merged.at(0).extText), "text of the opener");
        EXPECT_EQ(merged.at(0).bitFlag, -1);
        EXPECT_EQ(merged.at(0).data[0], 13);
        merge({key("R_W", 0, 1), joined}, mode);
        ASSERT_EQ(merged.size(), 4);
        EXPECT_EQ(text(merged.at(3).tag), "joined");
        EXPECT_EQ(merged.at(3).userIndex, 22);
    }
}

TEST_F(AddressMerging, RecipeRunsAreListedByTheKeyThatOpenedThem)
{
    merge({key("R_W", 0, 5), key("R_W", 5, 5), key("R_W", 20, 5), key("R_W", 25, 120),
           key("M_W", 0, 1)},
          mergeRecipe);
    EXPECT_THAT(summary(merged), ElementsAre("1/R_W:0+10", "1/R_W:20+125", "1/M_W:0+1"));
    EXPECT_THAT(listed(driver.groupStarts), ElementsAre(0, 2, 4));
}

TEST_F(AddressMerging, ARunOpenedBecauseTheSpanIsFullIsListedToo)
{
    EXPECT_THAT(merge({key("R_W", 0, 100), key("R_W", 100, 100)}, mergeRecipe),
                ElementsAre("1/R_W:0+100", "1/R_W:100+100"));
    EXPECT_THAT(listed(driver.groupStarts), ElementsAre(0, 1));
}

TEST_F(AddressMerging, PiecesCutFromALongKeyAreNotListed)
{
    merge({key("R_W", 0, 300)}, mergeRecipe);
    EXPECT_THAT(listed(driver.groupStarts), ElementsAre(0));
    merge({key("M_W", 0, 300), key("R_W", 0, 300), key("R_W", 1000, 300)}, mergeRecipe);
    EXPECT_EQ(merged.size(), 9);
    EXPECT_THAT(listed(driver.groupStarts), ElementsAre(0, 1, 2));
}

TEST_F(AddressMerging, TheCyclicPlanLeavesTheRecipeRunsAlone)
{
    driver.groupStarts << 3 << 4;
    DebugLines quiet;
    QList<KEY_ADDRESS> keys = {key("R_W", 0, 5), key("M_W", 5, 5)};
    addrMerge(keys, mergeCyclic);
    EXPECT_THAT(listed(driver.groupStarts), ElementsAre(3, 4));
}

TEST_F(AddressMerging, NoKeysGiveNoRuns)
{
    EXPECT_THAT(merge({}, mergeCyclic), IsEmpty());
    EXPECT_THAT(merge({}, mergeRecipe), IsEmpty());
    EXPECT_THAT(listed(driver.groupStarts), IsEmpty());
}

// The engine: bridging holes.

TEST_F(AddressMerging, AHoleIsBridgedOnlyWithin128Units)
{
    EXPECT_THAT(merge({key("R_W", 0, 60), key("R_W", 70, 58)}), ElementsAre("1/R_W:0+128"));
    EXPECT_THAT(merge({key("R_W", 0, 60), key("R_W", 70, 59)}),
                ElementsAre("1/R_W:0+60", "1/R_W:70+59"));
}

TEST_F(AddressMerging, HolesAreBridgedOneAfterTheOther)
{
    configure("7#0#0#3#3");
    EXPECT_THAT(merge({key("R_W", 0, 1), key("R_W", 4, 1), key("R_W", 8, 1), key("R_W", 13, 1)}),
                ElementsAre("1/R_W:0+9", "1/R_W:13+1"));
}

TEST_F(AddressMerging, TheRestOfALongKeyTakesANeighbourAcrossAHole)
{
    EXPECT_THAT(merge({key("R_W", 0, 300), key("R_W", 302, 3)}),
                ElementsAre("1/R_W:0+128", "1/R_W:128+128", "1/R_W:256+49"));
}

TEST_F(AddressMerging, WithoutAGapOnlyTouchingRunsJoin)
{
    for (const char* property : {"7#0#0#3#0", "7#0#0#3#-1"}) {
        configure(property);
        EXPECT_THAT(merge({key("R_W", 0, 1), key("R_W", 1, 1), key("R_W", 3, 1)}),
                    ElementsAre("1/R_W:0+2", "1/R_W:3+1"));
    }
}

TEST_F(AddressMerging, LengthsOfZeroAndBelowGoThrough)
{
    EXPECT_THAT(merge({key("R_W", 10, 0)}), ElementsAre("1/R_W:10+0"));
    EXPECT_THAT(merge({key("R_W", 10, -3)}), ElementsAre("1/R_W:10+-3"));
    EXPECT_THAT(merge({key("R_W", 10, 5), key("R_W", 12, -1)}), ElementsAre("1/R_W:10+5"));
}

TEST_F(AddressMerging, ExtremeAddressesWrapAroundAndDoNotFault)
{
    // 2147483640 + 20 wraps: the span to key 2 is 2147483640 + 4 - 2147483640 = 4.
    EXPECT_THAT(merge({key("R_W", 2147483640, 20), key("R_W", 2147483640, 4)}, mergeRecipe),
                ElementsAre("1/R_W:2147483640+20"));
    EXPECT_THAT(merge({key("R_W", 2147483640, 200)}, mergeRecipe),
                ElementsAre("1/R_W:2147483640+128", "1/R_W:-2147483528+72"));
}

// Of a length beyond what a float holds exactly, the nearest one lies above every number of 32
// bits.
TEST_F(AddressMerging, TheHighestLengthDoesNotBecomeANegativeOne)
{
    ::Run run = {1, name("R_W"), 0, INT_MAX, 0};
    normalise(run, registerType(getIndexFromRegName(name("R_W"))), mergeCyclic);
    EXPECT_EQ(run.length, INT_MAX);
}

TEST_F(AddressMerging, ALengthOf65536IsCutIntoFiveHundredAndTwelveRequests)
{
    const std::vector<std::string> plan = merge({key("R_W", 0, 65536)});
    ASSERT_EQ(plan.size(), 512u);
    EXPECT_EQ(plan.front(), "1/R_W:0+128");
    EXPECT_EQ(plan.back(), "1/R_W:65408+128");
}

} // namespace
