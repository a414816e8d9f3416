// Counting the writes of a bit that await their result.

#include <chrono>
#include <future>

#include "cache_world.h"

namespace {

class PendingBits : public CacheTest {
protected:
    // The count of M word 1 after a write that is repeated while the queue holds `queued`.
    static unsigned int countOfRepeatedWrite(const QList<VARIABLE>& queued, int address, int length,
                                             const char* bytes)
    {
        driver.dataAreas.clear();
        save("M_bit", address, length, bytes);
        driver.writeList = queued;
        save("M_bit", address, length, bytes);
        return pendingBits("M", 1);
    }
};

TEST_F(PendingBits, TheFirstWriteOfEveryBitIsCountedInItsOwnPlace)
{
    save("M_bit", 16, 1, "00");
    EXPECT_EQ(pendingBits("M", 1), 1u);
    save("M_bit", 18, 1, "01");
    EXPECT_EQ(pendingBits("M", 1), 0x11u);
    save("M_bit", 31, 1, "01");
    EXPECT_EQ(pendingBits("M", 1), 0x40000011u);
}

TEST_F(PendingBits, ASecondWriteIsCountedWhileExactlyTwoEqualWritesAreQueued)
{
    EXPECT_EQ(countOfRepeatedWrite({request("M_bit", 20, 1), request("M_bit", 20, 1)}, 20, 1, "01"),
              0x300u);
}

TEST_F(PendingBits, ASecondWriteOfTheHighestBitIsCountedInTheSignBit)
{
    EXPECT_EQ(countOfRepeatedWrite({request("M_bit", 31, 1), request("M_bit", 31, 1)}, 31, 1, "01"),
              0xC0000000u);
}

TEST_F(PendingBits, ASecondWriteIsNotCountedWithFewerOrMoreThanTwoEqualWrites)
{
    const VARIABLE same = request("M_bit", 20, 1);
    for (const QList<VARIABLE>& queued :
         {QList<VARIABLE>(), QList<VARIABLE>{same}, QList<VARIABLE>{same, same, same}}) {
        EXPECT_EQ(countOfRepeatedWrite(queued, 20, 1, "01"), 0x100u);
    }
}

TEST_F(PendingBits, OnlyWritesOfTheSameStationNameStartAndLengthCountAsEqual)
{
    const VARIABLE same = request("M_bit", 20, 1);
    for (const VARIABLE& other :
         {request("M_bit", 20, 1, 2), request("Q_bit", 20, 1), request("M", 20, 1),
          request("M_bit", 21, 1), request("M_bit", 20, 2)}) {
        EXPECT_EQ(countOfRepeatedWrite({same, other}, 20, 1, "01"), 0x100u);
        EXPECT_EQ(countOfRepeatedWrite({other, same, other, same}, 20, 1, "01"), 0x300u);
    }
}

TEST_F(PendingBits, TheEqualWritesMayCarryOtherValues)
{
    VARIABLE on = request("M_bit", 20, 1, 1, {1});
    VARIABLE off = request("M_bit", 20, 1, 1, {0});
    off.kind = 9;
    EXPECT_EQ(countOfRepeatedWrite({on, off}, 20, 1, "01"), 0x300u);
}

TEST_F(PendingBits, TheStartAndLengthOfTheWholeWriteAreComparedForEachOfItsBits)
{
    EXPECT_EQ(
        countOfRepeatedWrite({request("M_bit", 17, 3), request("M_bit", 17, 3)}, 17, 3, "01 01 01"),
        0xFCu);
    EXPECT_EQ(
        countOfRepeatedWrite({request("M_bit", 18, 1), request("M_bit", 18, 1)}, 17, 3, "01 01 01"),
        0x54u);
}

TEST_F(PendingBits, TheQueueIsScannedUnderTheLock)
{
    save("M_bit", 20, 1, "00");
    plan({key("M_bit", 20, 1)});
    driver.dataAreas[0].pendingBits = 0x100;
    driver.writeList = {request("M_bit", 20, 1)};
    std::promise<void> announced;
    whenTold([&](const Notice&) { announced.set_value(); });

    driver.mutex.lock();
    auto storing = std::async(std::launch::async, [] { save("M_bit", 20, 1, "01"); });
    announced.get_future().wait();
    EXPECT_EQ(storing.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    driver.writeList.append(request("M_bit", 20, 1)); // seen only by a scan that waited
    driver.mutex.unlock();
    storing.wait();

    EXPECT_EQ(pendingBits("M", 1), 0x300u);
    EXPECT_TRUE(driver.mutex.tryLock());
    driver.mutex.unlock();
}

TEST_F(PendingBits, TheLockIsFreeAgainWhateverTheScanFound)
{
    save("M_bit", 20, 1, "00");
    save("M_bit", 20, 1, "00");
    EXPECT_TRUE(driver.mutex.tryLock());
    driver.mutex.unlock();
}

TEST_F(PendingBits, WordsAndFirstWritesOfBitsTakeNoLock)
{
    driver.mutex.lock();
    auto storing = std::async(std::launch::async, [] {
        save("M_W", 3, 1, "34 12");
        save("R_D", 3, 2, "34 12 78 56");
        save("M_bit", 20, 2, "01 01");
    });
    EXPECT_EQ(storing.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    driver.mutex.unlock();
    storing.wait();
    EXPECT_EQ(pendingBits("M", 1), 0x500u);
}

} // namespace
