#include "cache/unit_index.h"

#include <climits>
#include <set>

#include "cache_world.h"
#include "shortcuts.h"

namespace {

class UnitRuns : public CacheTest {
protected:
    // How many of `wanted` units from this one on stand one behind the other.
    static int run(const char* area, int address, int wanted)
    {
        return unitsFrom(1, name(area), address, -1, wanted).count;
    }
};

TEST_F(UnitRuns, NeighboursOneBehindTheOtherAreARun)
{
    for (int address = 5; address < 9; ++address) {
        put("R", address, "");
    }
    EXPECT_EQ(run("R", 5, 10), 4);
    EXPECT_EQ(run("R", 7, 10), 2);
    EXPECT_EQ(run("R", 8, 10), 1);
    EXPECT_EQ(run("R", 5, 3), 3);
    EXPECT_EQ(run("R", 5, 1), 1);
}

TEST_F(UnitRuns, AHoleAnotherAreaAndAnotherStationEndARun)
{
    put("R", 5, "");
    put("R", 6, "");
    put("R", 8, "");
    put("M", 9, "");
    put("M", 10, "", 2);
    put("M", 10, "");
    EXPECT_EQ(run("R", 5, 10), 2);
    EXPECT_EQ(run("R", 8, 10), 1);
    EXPECT_EQ(run("M", 9, 10), 1);
    EXPECT_EQ(run("M", 10, 10), 1);
}

TEST_F(UnitRuns, ARunGrowsWithTheUnitsThatAreAdded)
{
    EXPECT_EQ(run("R", 5, 10), 1);
    EXPECT_EQ(run("R", 6, 10), 1);
    EXPECT_EQ(run("R", 7, 10), 1);
    EXPECT_EQ(run("R", 5, 10), 3);
    EXPECT_EQ(run("R", 6, 10), 2);
    EXPECT_EQ(run("R", 4, 10), 1);
    EXPECT_EQ(run("R", 5, 10), 3);
}

TEST_F(UnitRuns, WhereAUnitOccursTwiceNothingIsARun)
{
    put("R", 5, "");
    put("R", 6, "");
    put("R", 7, "");
    put("R", 6, "");
    EXPECT_EQ(run("R", 5, 10), 1);
    driver.dataAreas.removeLast();
    EXPECT_EQ(run("R", 5, 10), 3);
}

TEST_F(UnitRuns, AChangedListHasTheRunsOfNow)
{
    for (int address = 5; address < 9; ++address) {
        put("R", address, "");
    }
    EXPECT_EQ(run("R", 5, 10), 4);
    driver.dataAreas[2].address = 20;
    EXPECT_EQ(run("R", 5, 10), 2);
    driver.dataAreas.removeAt(0);
    EXPECT_EQ(run("R", 6, 10), 1);
}

TEST_F(UnitRuns, TheHighestNumberIsFollowedByTheLowest)
{
    put("R", INT_MAX, "");
    put("R", INT_MIN, "");
    EXPECT_EQ(run("R", INT_MAX, 10), 2);
}

TEST_F(UnitRuns, AHintIsTakenOnlyWhereItIsRight)
{
    put("R", 5, "");
    put("R", 6, "");
    for (int hint : {-1, 0, 1, 2, INT_MAX, INT_MIN}) {
        EXPECT_EQ(unitIndexOf(1, name("R"), 6, hint), 1);
        EXPECT_EQ(unitIndexOf(1, name("R"), 5, hint), 0);
    }
    EXPECT_EQ(unitIndexOf(2, name("R"), 5, 0), 2);
    EXPECT_EQ(unitIndexOf(1, name("M"), 5, 0), 3);
}

// Where Qt looks first for each of 2400 units: it takes the lowest bits of the number, before 6 its
// remainder. Numbers made by chance would leave some 1800 places.
TEST(UnitHash, SpreadsTheSameAddressesOfAreasAndStations)
{
    std::set<unsigned int> places;
    for (int station = 1; station <= 3; ++station) {
        for (const char* area : {"I", "Q", "M", "R"}) {
            for (int address = 100; address < 300; ++address) {
                UnitKey key;
                key.station = station;
                key.area = QString::fromLatin1(area);
                key.address = address;
                places.insert(qHash(key) % (QT_VERSION >= 0x060000 ? 4096 : 4099));
            }
        }
    }
    EXPECT_GT(places.size(), 1500U);
}

} // namespace
