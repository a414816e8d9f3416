// The queue of host writes: what replaces what.
#include "intf.h"

#include "cache_world.h"

namespace {

class WriteQueue : public CacheTest {
protected:
    // `count` writes of the host's own: "R_W" 1000 and up.
    static void fillQueue(int count)
    {
        driver.writeList.clear();
        for (int i = 0; i < count; ++i) {
            driver.writeList.append(request("R_W", 1000 + i, 1));
        }
    }
};

TEST_F(WriteQueue, ARepeatedWriteReplacesTheQueuedOneInItsPlace)
{
    write("R_W", 1, 1, "11 00");
    write("R_W", 100, 1, "22 00", 1, 2);
    write("R_W", 3, 1, "33 00");
    write("R_W", 100, 1, "44 55", 1, 9);
    ASSERT_EQ(queue(), Units({"1/R_W:1+1", "1/R_W:100+1", "1/R_W:3+1"}));
    EXPECT_EQ(queuedData(1, 2), "44 55");
    EXPECT_EQ(driver.writeList.at(1).kind, 9);
}

TEST_F(WriteQueue, TheHeadOfTheQueueIsNeverReplaced)
{
    write("R_W", 100, 1, "11 00");
    write("R_W", 100, 1, "22 00");
    EXPECT_EQ(queue(), Units({"1/R_W:100+1", "1/R_W:100+1"}));
    EXPECT_EQ(queuedData(0, 2), "11 00");
    EXPECT_EQ(queuedData(1, 2), "22 00");
    write("R_W", 100, 1, "33 00");
    EXPECT_EQ(queue(), Units({"1/R_W:100+1", "1/R_W:100+1"}));
    EXPECT_EQ(queuedData(0, 2), "11 00");
    EXPECT_EQ(queuedData(1, 2), "33 00");
}

TEST_F(WriteQueue, OnlyAWriteOfTheSameStationNamePlaceAndLengthIsReplaced)
{
    write("R_W", 1, 1, "00 00");
    write("R_W", 100, 1, "11 00");
    write("R_W", 100, 1, "22 00", 2);
    write("R_D", 100, 1, "33 00");
    write("R_W", 101, 1, "44 00");
    write("R_W", 100, 2, "55 00 66 00");
    EXPECT_EQ(queue(), Units({"1/R_W:1+1", "1/R_W:100+1", "2/R_W:100+1", "1/R_D:100+1",
                              "1/R_W:101+1", "1/R_W:100+2"}));
    EXPECT_EQ(queuedData(1, 2), "11 00");
}

TEST_F(WriteQueue, OfSeveralEqualWritesTheLastIsReplaced)
{
    driver.writeList = {request("R_W", 1, 1), request("R_W", 100, 1), request("R_W", 100, 1),
                        request("R_W", 2, 1)};
    write("R_W", 100, 1, "34 12");
    EXPECT_EQ(driver.writeList.size(), 4);
    EXPECT_EQ(queuedData(1, 2), "00 00");
    EXPECT_EQ(queuedData(2, 2), "34 12");
}

TEST_F(WriteQueue, TheLastEntryAndTheOneBehindTheHeadAreExamined)
{
    fillQueue(3);
    write("R_W", 1001, 1, "11 00");
    write("R_W", 1002, 1, "22 00");
    EXPECT_EQ(driver.writeList.size(), 3);
    EXPECT_EQ(queuedData(1, 2), "11 00");
    EXPECT_EQ(queuedData(2, 2), "22 00");
}

TEST_F(WriteQueue, PiecesOfARepeatedLongWriteReplaceTheirCounterparts)
{
    configure("7#0#0#3#2");
    write("R_W", 1, 1, "00 00");
    write("R_W", 100, 5, "01 02 03 04 05 06 07 08 09 0A");
    write("R_W", 100, 5, "99 99 99 99 99 99 99 99 99 99");
    EXPECT_EQ(queue(), Units({"1/R_W:1+1", "1/R_W:100+2", "1/R_W:102+2", "1/R_W:104+1"}));
    EXPECT_EQ(queuedData(1, 4), "99 99 99 99");
    EXPECT_EQ(queuedData(3, 2), "99 99");
}

TEST_F(WriteQueue, TheQueueGrowsTo513Entries)
{
    fillQueue(511);
    write("R_W", 1, 1, "11 00");
    EXPECT_EQ(driver.writeList.size(), 512);
    write("R_W", 2, 1, "22 00");
    ASSERT_EQ(driver.writeList.size(), 513);
    EXPECT_EQ(queuedData(511, 2), "11 00");
    EXPECT_EQ(queuedData(512, 2), "22 00");
}

TEST_F(WriteQueue, With513EntriesANewTargetReplacesTheOneAt512)
{
    fillQueue(513);
    write("R_W", 1, 1, "11 00");
    ASSERT_EQ(driver.writeList.size(), 513);
    EXPECT_EQ(driver.writeList.at(512).address, 1);
    EXPECT_EQ(driver.writeList.at(511).address, 1511);
    write("R_W", 2, 1, "22 00");
    ASSERT_EQ(driver.writeList.size(), 513);
    EXPECT_EQ(driver.writeList.at(512).address, 2);
    EXPECT_EQ(driver.writeList.at(511).address, 1511);
    EXPECT_EQ(queuedData(512, 2), "22 00");
}

TEST_F(WriteQueue, With514EntriesANewTargetReplacesTheOneAt512AndTheListKeepsItsLength)
{
    fillQueue(514);
    write("R_W", 1, 1, "11 00");
    ASSERT_EQ(driver.writeList.size(), 514);
    EXPECT_EQ(driver.writeList.at(511).address, 1511);
    EXPECT_EQ(driver.writeList.at(512).address, 1);
    EXPECT_EQ(driver.writeList.at(513).address, 1513);
}

TEST_F(WriteQueue, AFullQueueStillReplacesAnEqualWriteInItsPlace)
{
    fillQueue(514);
    write("R_W", 1513, 1, "11 00");
    write("R_W", 1001, 1, "22 00");
    ASSERT_EQ(driver.writeList.size(), 514);
    EXPECT_EQ(queuedData(513, 2), "11 00");
    EXPECT_EQ(queuedData(1, 2), "22 00");
    EXPECT_EQ(driver.writeList.at(512).address, 1512);
}

TEST_F(WriteQueue, AWriteThatIsDroppedByTheCapIsStillShown)
{
    fillQueue(513);
    write("R_W", 1, 1, "11 00");
    write("R_W", 2, 1, "22 00");
    EXPECT_EQ(read("R_W", 1, 2), "11 00 22 00");
}

TEST_F(WriteQueue, AQueueChangedFromOutsideIsSearchedAsItIsNow)
{
    write("R_W", 1, 1, "11 00");
    write("R_W", 2, 1, "22 00");
    write("R_W", 3, 1, "33 00");
    driver.writeList.removeAt(1);
    write("R_W", 2, 1, "44 00");
    ASSERT_EQ(queue(), Units({"1/R_W:1+1", "1/R_W:3+1", "1/R_W:2+1"}));
    driver.writeList[1].address = 50;
    write("R_W", 3, 1, "55 00");
    write("R_W", 50, 1, "66 00");
    EXPECT_EQ(queue(), Units({"1/R_W:1+1", "1/R_W:50+1", "1/R_W:2+1", "1/R_W:3+1"}));
    EXPECT_EQ(queuedData(1, 2), "66 00");
    driver.writeList.clear();
    write("R_W", 3, 1, "77 00");
    write("R_W", 2, 1, "88 00");
    EXPECT_EQ(queue(), Units({"1/R_W:3+1", "1/R_W:2+1"}));
    driver.writeList = {request("R_W", 2, 1), request("R_W", 3, 1)};
    write("R_W", 3, 1, "99 00");
    EXPECT_EQ(queue(), Units({"1/R_W:2+1", "1/R_W:3+1"}));
    EXPECT_EQ(queuedData(1, 2), "99 00");
}

TEST_F(WriteQueue, ACopyOfTheQueueStaysAsItWasTaken)
{
    write("R_W", 1, 1, "11 00");
    write("R_W", 2, 1, "22 00");
    const QList<VARIABLE> copy = driver.writeList;
    write("R_W", 2, 1, "33 00");
    write("R_W", 3, 1, "44 00");
    EXPECT_EQ(summary(copy), Units({"1/R_W:1+1", "1/R_W:2+1"}));
    EXPECT_EQ(toHex(copy.at(1).data, 2), "22 00");
}

TEST_F(WriteQueue, ReinitialisingEmptiesTheQueueAndForgetsWhatWasWritten)
{
    write("R_W", 1, 1, "11 00");
    configure();
    EXPECT_EQ(queue(), Units());
    EXPECT_EQ(read("R_W", 1, 1), "00 00");
}

} // namespace
