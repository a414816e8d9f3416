// The host changes the cache from outside while a reply is stored in it: every word still lands in
// its own unit.
#include <gmock/gmock.h>

#include "cache/unit_index.h"
#include "world.h"

namespace {

class MovedRecords : public DriverTest {
protected:
    MovedRecords()
    {
        plan({key("R_W", 0, 4)});
    }

    // Four words, all new; the host does this when it is told of the second.
    void receiveAnd(std::function<void()> action)
    {
        whenTold([action](const Notice& notice) {
            if (notice.address == 1) {
                action();
            }
        });
        poll();
        EXPECT_EQ(reply(withCrc("01 03 08 11 12 21 22 31 32 41 42")), replyAccepted);
    }

    static void insertInFront()
    {
        driver.dataAreas.insert(0, newUnit(9, name("C"), 77));
    }
};

const char* const allWords = "12 11 22 21 32 31 42 41";

TEST_F(MovedRecords, RecordsThatMovedAreFoundWhereTheyAre)
{
    receiveAnd(insertInFront);
    EXPECT_EQ(read("R_W", 0, 4), allWords);
    EXPECT_EQ(notices().size(), 4u);
    EXPECT_EQ(read("C", 77, 1, 9), "00 00");
}

TEST_F(MovedRecords, TheSameAfterTheHostReadTheMovedCache)
{
    receiveAnd([] {
        insertInFront();
        EXPECT_EQ(read("R_W", 1, 1), "22 21");
    });
    EXPECT_EQ(read("R_W", 0, 4), allWords);
    EXPECT_EQ(notices().size(), 4u);
    EXPECT_EQ(read("C", 77, 1, 9), "00 00");
}

TEST_F(MovedRecords, UnitsThatWereTakenAwayAreMadeAgainUnwatched)
{
    receiveAnd([] { driver.dataAreas.clear(); });
    EXPECT_EQ(notices().size(), 2u);
    EXPECT_EQ(device("R", 2), "32 31");
    EXPECT_EQ(device("R", 3), "42 41");
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(MovedRecords, UnitsThatWereTakenAwayAndReadAreMadeAgainUnwatched)
{
    receiveAnd([] {
        driver.dataAreas.clear();
        read("R_W", 0, 4);
    });
    EXPECT_EQ(notices().size(), 2u);
    EXPECT_EQ(read("R_W", 0, 4), "00 00 00 00 32 31 42 41");
}

TEST_F(MovedRecords, ACopyOfTheCacheKeepsWhatItHeld)
{
    QList<_DATA_> kept;
    receiveAnd([&kept] { kept = driver.dataAreas; });
    EXPECT_EQ(read("R_W", 0, 4), allWords);
    ASSERT_EQ(kept.size(), 4);
    EXPECT_EQ(kept.at(1).deviceValue[0], 0x22);
    EXPECT_EQ(kept.at(2).deviceValue[0], 0);
}

TEST_F(MovedRecords, UnitsThatTheHostReadForTheFirstTimeDoNotDisturb)
{
    receiveAnd([] { EXPECT_EQ(read("M_W", 50, 3), "00 00 00 00 00 00"); });
    EXPECT_EQ(read("R_W", 0, 4), allWords);
    EXPECT_EQ(notices().size(), 4u);
}

} // namespace
