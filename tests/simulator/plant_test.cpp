#include "simulator/plant.h"

#include <gtest/gtest.h>

namespace dov417::simulator {
namespace {

class PlantTest : public testing::Test {
protected:
    Memory memory{{1, 2}};
    StationMemory& one = *memory.station(1);
    StationMemory& two = *memory.station(2);
};

TEST_F(PlantTest, MovesInStepsOf100MsAndKeepsTheRest)
{
    Plant plant(memory);
    plant.advance(99);
    EXPECT_EQ(one.word(Area::R, 0), 0);
    plant.advance(1);
    EXPECT_EQ(one.word(Area::R, 0), 1);
    plant.advance(250);
    EXPECT_EQ(one.word(Area::R, 0), 3);
    plant.advance(50);
    EXPECT_EQ(one.word(Area::R, 0), 4);
}

TEST_F(PlantTest, RampsRiseByTheirNumberAndStartAgain)
{
    Plant plant(memory);
    plant.advance(1000);
    EXPECT_EQ(one.word(Area::R, 0), 10);
    EXPECT_EQ(one.word(Area::R, 31), 320);
    one.setWord(Area::R, 31, 9990);
    plant.advance(100);
    EXPECT_EQ(one.word(Area::R, 31), 22);
}

TEST_F(PlantTest, TimersRunInTenthsUpToTheirTimeAndStartAgain)
{
    Plant plant(memory);
    plant.advance(1000);
    EXPECT_EQ(one.word(Area::T, 0), 10);
    EXPECT_EQ(one.word(Area::T, 127), 10);
    plant.advance(100);
    EXPECT_EQ(one.word(Area::T, 0), 0);
    EXPECT_EQ(one.word(Area::T, 1), 11);
    one.setWord(Area::T, 1, 0); // as a master that restarts it
    plant.advance(100);
    EXPECT_EQ(one.word(Area::T, 1), 1);
}

TEST_F(PlantTest, CountersCountEachAtItsPaceAndOverflow)
{
    Plant plant(memory);
    one.setWord(Area::C, 1, 65535);
    plant.advance(1000);
    EXPECT_EQ(one.word(Area::C, 0), 10);
    EXPECT_EQ(one.word(Area::C, 1), 4);
    EXPECT_EQ(one.word(Area::C, 9), 1);
    EXPECT_EQ(one.word(Area::C, 10), 0);
}

TEST_F(PlantTest, SinesSwingAround5000)
{
    Plant plant(memory);
    plant.advance(2500); // a quarter of the 10 s of R 32
    EXPECT_EQ(one.word(Area::R, 32), 9000);
    plant.advance(5000);
    EXPECT_EQ(one.word(Area::R, 32), 1000);
    plant.advance(2500);
    EXPECT_EQ(one.word(Area::R, 32), 5000);
    EXPECT_EQ(one.word(Area::R, 33), 5000); // half of 20 s
}

TEST_F(PlantTest, WalksStayWithinTheirBoundsAndEachStationWalksItsOwnWay)
{
    Plant plant(memory);
    bool differ = false;
    for (int i = 0; i < 2000; ++i) {
        plant.advance(100);
        for (int word = 64; word < 96; ++word) {
            ASSERT_LE(one.word(Area::R, word), 10000);
            differ = differ || one.word(Area::R, word) != two.word(Area::R, word);
        }
    }
    EXPECT_TRUE(differ);
}

TEST_F(PlantTest, OneInputRunsThroughItsWord)
{
    Plant plant(memory);
    for (int step = 1; step <= 16; ++step) {
        plant.advance(100);
        EXPECT_EQ(one.word(Area::I, 0), 1 << (step % 16));
        EXPECT_EQ(one.word(Area::I, 1), step);
    }
}

TEST_F(PlantTest, OutputsFollowInputsOnlyIfTheyAreToldTo)
{
    Plant following(memory, true);
    following.advance(1000);
    EXPECT_EQ(one.word(Area::Q, 0), 0x0400);
    EXPECT_EQ(one.word(Area::Q, 1), 10);

    Memory other;
    Plant plant(other, false);
    plant.advance(1000);
    EXPECT_EQ(other.station(1)->word(Area::Q, 0), 0);
}

TEST_F(PlantTest, LeavesAlonePlainMemory)
{
    Plant plant(memory);
    for (int word = 0; word < 128; ++word)
        one.setWord(Area::M, word, 0x5A5A);
    for (int word = 96; word < 4000; ++word)
        one.setWord(Area::R, word, 0x1234);
    plant.advance(60000);
    for (int word = 0; word < 128; ++word)
        ASSERT_EQ(one.word(Area::M, word), 0x5A5A);
    for (int word = 96; word < 4000; ++word)
        ASSERT_EQ(one.word(Area::R, word), 0x1234);
    for (int word = 8; word < 128; ++word)
        ASSERT_EQ(one.word(Area::I, word) + one.word(Area::Q, word), 0);
}

TEST_F(PlantTest, LeavesAloneWhatIsHeld)
{
    Plant plant(memory);
    plant.hold(1, Area::R, 4, 5);
    plant.hold(0, Area::T, 126, 500);
    one.setWord(Area::R, 4, 77);
    plant.advance(1000);
    EXPECT_EQ(one.word(Area::R, 4), 77);
    EXPECT_EQ(one.word(Area::R, 5), 0);
    EXPECT_EQ(one.word(Area::R, 6), 70);
    EXPECT_EQ(two.word(Area::R, 4), 50);
    EXPECT_EQ(one.word(Area::T, 127), 0);
    EXPECT_EQ(two.word(Area::T, 126), 0);
    EXPECT_EQ(two.word(Area::T, 125), 10);
}

TEST_F(PlantTest, StandsStillWhileFrozen)
{
    Plant plant(memory);
    plant.advance(150);
    plant.freeze(true);
    EXPECT_TRUE(plant.isFrozen());
    plant.advance(10000);
    EXPECT_EQ(one.word(Area::R, 0), 1);
    plant.freeze(false);
    plant.advance(50);
    EXPECT_EQ(one.word(Area::R, 0), 2);
}

TEST_F(PlantTest, LivesTheSameLifeForTheSameSeed)
{
    Memory again({1, 2});
    Plant first(memory, true, 9);
    Plant second(again, true, 9);
    first.advance(30000);
    second.advance(30000);
    for (int word = 0; word < 96; ++word)
        EXPECT_EQ(one.word(Area::R, word), again.station(1)->word(Area::R, word)) << word;
    EXPECT_EQ(one.word(Area::I, 5), again.station(1)->word(Area::I, 5));
    EXPECT_NE(one.word(Area::R, 70), 0);
}

} // namespace
} // namespace dov417::simulator
