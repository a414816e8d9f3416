// Writes are queued one after the other in the same memory: none shows anything of the one before.
#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>

#include "world.h"

namespace {

class QueueMemory : public DriverTest {
protected:
    static bool isBlankFrom(const VARIABLE& request, int byte)
    {
        return std::all_of(request.data + byte, std::end(request.data),
                           [](unsigned char each) { return each == 0; });
    }
};

TEST_F(QueueMemory, AShortWriteAfterALongOneHasZerosBehindItsValues)
{
    write("R_W", 0, 3, "AA AA BB BB CC CC", 1, 5);
    EXPECT_EQ(exchange(), frame("01 10 05 00 00 03 06 AA AA BB BB CC CC"));
    EXPECT_TRUE(driver.writeList.isEmpty());
    write("M_bit", 17, 1, "01", 2, 6);
    ASSERT_EQ(driver.writeList.size(), 1);
    const VARIABLE& queued = driver.writeList.at(0);
    EXPECT_EQ(summary(queued), "2/M_bit:17+1");
    EXPECT_EQ(queued.kind, 6);
    EXPECT_EQ(queued.data[0], 1);
    EXPECT_TRUE(isBlankFrom(queued, 1));
}

TEST_F(QueueMemory, AWriteInPlaceOfALongerOneHasZerosBehindItsValues)
{
    write("R_W", 9, 1, "01 00");
    write("R_W", 0, 2, "AA AA BB BB");
    driver.writeList[1].data[7] = 9;
    write("R_W", 0, 2, "11 11 22 22");
    ASSERT_EQ(driver.writeList.size(), 2);
    EXPECT_EQ(driver.writeList.at(1).data[3], 0x22);
    EXPECT_TRUE(isBlankFrom(driver.writeList.at(1), 4));
}

TEST_F(QueueMemory, AWriteOfNothingHasNoValues)
{
    write("R_W", 0, 1, "AA AA");
    exchange();
    write("R_W", 0, 0, "");
    ASSERT_EQ(driver.writeList.size(), 1);
    EXPECT_EQ(driver.writeList.at(0).length, 0);
    EXPECT_TRUE(isBlankFrom(driver.writeList.at(0), 0));
}

TEST_F(QueueMemory, ACopyOfTheQueueKeepsItsWrite)
{
    write("R_W", 5, 1, "34 12");
    const QList<VARIABLE> kept = driver.writeList;
    exchange();
    write("R_W", 6, 1, "78 56");
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(summary(kept.at(0)), "1/R_W:5+1");
    EXPECT_EQ(kept.at(0).data[0], 0x34);
}

} // namespace
