// intf_addrMerge: from the host's addresses to the cyclic read list and the watched views.
#include <gmock/gmock.h>

#include "world.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class CyclicPlan : public DriverTest {};

TEST_F(CyclicPlan, IsTheMergedReadsInOrderAndTheResultCountsThem)
{
    EXPECT_EQ(plan({key("R_W", 10, 5), key("R_W", 50, 3), key("R_W", 15, 3), key("M_bit", 20, 5)}),
              3);
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/M_W:1+1", "1/R_W:10+8", "1/R_W:50+3"));
}

TEST_F(CyclicPlan, MarksItsRequestsAsCyclicReads)
{
    plan({key("R_W", 10, 5, 3), key("T", 5, 2, 4)});
    ASSERT_EQ(driver.readList.size(), 2);
    EXPECT_EQ(driver.readList.at(0).kind, 4);
    EXPECT_EQ(driver.readList.at(1).kind, 4);
    EXPECT_EQ(driver.readList.at(1).stationNo, 4);
}

TEST_F(CyclicPlan, IsMadeWithoutTheMutexThatGuardsTheWrites)
{
    driver.mutex.lock();
    EXPECT_EQ(plan({key("R_W", 10, 5)}), 1);
    driver.mutex.unlock();
}

TEST_F(CyclicPlan, ReplacesTheOneBefore)
{
    plan({key("R_W", 10, 5)});
    plan({key("M_W", 3, 1)});
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/M_W:3+1"));
}

TEST_F(CyclicPlan, OfNoAddressesIsEmptyAndWatchesNothing)
{
    plan({key("R_W", 10, 5)});
    EXPECT_EQ(plan({}), 0);
    EXPECT_THAT(summary(driver.readList), IsEmpty());
    EXPECT_EQ(driver.dataAreas.size(), 5);
    EXPECT_EQ(unit(1, "R", 10).viewFlags, 0);
}

TEST_F(CyclicPlan, LeavesTheHostsAddressesAsTheyAre)
{
    QList<KEY_ADDRESS> keys = {key("R_W", 50, 1), key("M_bit", 20, 5), key("R_D", 10, 300)};
    keys[1].tag = name("pump");
    DebugLines quiet;
    intf_addrMerge(keys);
    EXPECT_THAT(summary(keys), ElementsAre("1/R_W:50+1", "1/M_bit:20+5", "1/R_D:10+300"));
    EXPECT_EQ(text(keys.at(1).tag), "pump");
}

TEST_F(CyclicPlan, WatchesTheAddressesAsTheHostWroteThem)
{
    plan({key("M_bit", 20, 2), key("R_D", 10, 2), key("T", 3, 1), key("R_W", 12, 1)});
    EXPECT_EQ(unit(1, "M", 1).bitMonitor, 0x30u);
    EXPECT_EQ(unit(1, "M", 1).viewFlags, 0);
    EXPECT_EQ(unit(1, "R", 10).viewFlags, 2);
    EXPECT_EQ(unit(1, "R", 11).viewFlags, 4);
    EXPECT_EQ(unit(1, "R", 12).viewFlags, 1);
    EXPECT_EQ(unit(1, "T", 3).viewFlags, 1);
    EXPECT_EQ(driver.dataAreas.size(), 5); // the holes that the plan bridges are not watched
}

TEST_F(CyclicPlan, UnwatchesWhatItNoLongerNamesAndKeepsTheValues)
{
    plan({key("R_W", 10, 1), key("M_bit", 20, 1)});
    poll();
    ASSERT_EQ(reply(withCrc("01 01 02 10 00")), 1);
    poll();
    ASSERT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    plan({key("R_W", 20, 1)});
    EXPECT_EQ(unit(1, "R", 10).viewFlags, 0);
    EXPECT_EQ(unit(1, "M", 1).bitMonitor, 0u);
    EXPECT_EQ(unit(1, "R", 20).viewFlags, 1);
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
    EXPECT_EQ(read("M_bit", 20, 1), "01");
}

TEST_F(CyclicPlan, ForgetsTheCountsOfBitWritesButNotThatTheyArePending)
{
    write("Q_bit", 5, 1, "01");
    ASSERT_EQ(unit(1, "Q", 0).pendingBits, 0x400u);
    plan({key("R_W", 10, 1)});
    EXPECT_EQ(unit(1, "Q", 0).pendingBits, 0u);
    EXPECT_EQ(unit(1, "Q", 0).writePending, 1);
    EXPECT_EQ(driver.writeList.size(), 1);
}

TEST_F(CyclicPlan, TakesAnUnknownNameAlongWithoutWatchingIt)
{
    EXPECT_EQ(plan({key("X_bit", 20, 5), key("R_W", 10, 1)}), 2);
    EXPECT_THAT(summary(driver.readList), ElementsAre("1/X_bit:20+5", "1/R_W:10+1"));
    EXPECT_EQ(driver.dataAreas.size(), 1);
}

TEST_F(CyclicPlan, SaysWhatItWasAskedWhatItMadeOfItAndWhatItPlanned)
{
    QList<KEY_ADDRESS> keys = {key("R_W", 15, 3), key("M_bit", 20, 5, 2), key("R_D", 10, 5),
                               key("odd", 7, 1)};
    const DebugLines debug;
    intf_addrMerge(keys);
    EXPECT_THAT(
        debug.lines(),
        ElementsAre(
            "\"step:id=0,reg=R_W,address=15,len=3\"", "\"step:id=1,reg=M_bit,address=20,len=5\"",
            "\"step:id=2,reg=R_D,address=10,len=5\"", "\"step:id=3,reg=odd,address=7,len=1\"",
            "\"step0:id=0,reg=R_W,address=15,len=3\"", "\"step0:id=1,reg=M_W,address=1,len=1\"",
            "\"step0:id=2,reg=R_W,address=10,len=5\"", "\"step0:id=3,reg=odd,address=7,len=1\"",
            "\"step3:id=0,std=1,reg=odd,address=7,len=1\"",
            "\"step3:id=1,std=1,reg=R_W,address=10,len=8\"",
            "\"step3:id=2,std=2,reg=M_W,address=1,len=1\""));
}

TEST_F(CyclicPlan, OfNoAddressesSaysNothing)
{
    QList<KEY_ADDRESS> none;
    const DebugLines debug;
    intf_addrMerge(none);
    EXPECT_THAT(debug.lines(), IsEmpty());
}

TEST_F(CyclicPlan, NotesATextInANameAsItStands)
{
    QList<KEY_ADDRESS> keys = {key("%3", 7, 1)};
    const DebugLines debug;
    intf_addrMerge(keys);
    ASSERT_EQ(debug.lines().size(), 3u);
    EXPECT_EQ(debug.lines().front(), "\"step:id=0,reg=%3,address=7,len=1\"");
}

TEST_F(CyclicPlan, CanBeReplacedWhileAReplyIsOutstanding)
{
    plan({key("R_W", 10, 1)});
    poll();
    plan({key("R_W", 20, 1), key("R_W", 40, 1)});
    // The answer to the old plan still goes to the cache; the new plan is read afterwards, whole.
    EXPECT_EQ(reply(withCrc("01 03 02 12 34")), 1);
    EXPECT_EQ(read("R_W", 10, 1), "34 12");
    EXPECT_EQ(driver.readList.size(), 2);
    const std::string first = poll();
    reply(withCrc("01 03 02 00 01"));
    const std::string second = poll();
    EXPECT_THAT(
        (std::vector<std::string>{first, second}),
        ::testing::UnorderedElementsAre(frame("01 03 05 14 00 01"), frame("01 03 05 28 00 01")));
}

TEST_F(CyclicPlan, ReadsNoMoreThanTheHostAsksAfterTheCacheWasEmptiedFromOutside)
{
    plan({key("R_W", 10, 2)});
    driver.dataAreas.clear();
    plan({key("R_W", 11, 1)});
    ASSERT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(unit(1, "R", 11).viewFlags, 1);
}

TEST_F(CyclicPlan, MarksTheFirstOfTwoRecordsOfTheSameUnit)
{
    plan({key("R_W", 10, 1)});
    _DATA_ twin = driver.dataAreas.at(0);
    driver.dataAreas.prepend(twin);
    driver.dataAreas.append(twin);
    plan({key("R_W", 10, 1)});
    ASSERT_EQ(driver.dataAreas.size(), 3);
    EXPECT_EQ(driver.dataAreas.at(0).viewFlags, 1);
    EXPECT_EQ(driver.dataAreas.at(1).viewFlags, 0);
    EXPECT_EQ(driver.dataAreas.at(2).viewFlags, 0);
}

TEST_F(CyclicPlan, FindsARecordByTheKeyThatWasEditedInPlace)
{
    plan({key("R_W", 10, 1)});
    driver.dataAreas[0].address = 30;
    plan({key("R_W", 10, 1), key("R_W", 30, 1)});
    ASSERT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(driver.dataAreas.at(0).address, 30);
    EXPECT_EQ(driver.dataAreas.at(0).viewFlags, 1);
    EXPECT_EQ(driver.dataAreas.at(1).address, 10);
}

TEST_F(CyclicPlan, TakesLongRunsAtAnyAddress)
{
    EXPECT_EQ(plan({key("R_W", 2147483647, 65536)}), 512);
    EXPECT_EQ(driver.dataAreas.size(), 65536);
    EXPECT_EQ(driver.readList.at(1).address, -2147483647 + 126);
    configure();
    EXPECT_EQ(plan({key("M_bit", -2147483647 - 1, 65536)}), 32); // 4096 words
    EXPECT_EQ(driver.dataAreas.size(), 4096);
    configure();
    EXPECT_EQ(plan({key("R_D", 5, -65536), key("T", -5, 0)}), 2);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

} // namespace
