#include "simulator/memory.h"

#include <gtest/gtest.h>

namespace dov417::simulator {
namespace {

struct Place {
    const char* what;
    Area area;
    int word;
    int line; // coil of bit 0, or register
};

class Places : public testing::TestWithParam<Place> {};

TEST_P(Places, AreTheSameForTheLineAndForAPerson)
{
    const Place& place = GetParam();
    StationMemory memory;
    memory.setWord(place.area, place.word, 0x8001);
    if (layoutOf(place.area).coils) {
        EXPECT_TRUE(memory.coil(place.line));
        EXPECT_FALSE(memory.coil(place.line + 1));
        EXPECT_TRUE(memory.coil(place.line + 15));
        memory.setCoil(place.line + 1, true);
        memory.setCoil(place.line, false);
        EXPECT_EQ(memory.word(place.area, place.word), 0x8002);
    } else {
        EXPECT_EQ(memory.registerValue(place.line), 0x8001);
        memory.setRegister(place.line, 0x1234);
        EXPECT_EQ(memory.word(place.area, place.word), 0x1234);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Memory, Places,
    testing::Values(Place{"I0", Area::I, 0, 0}, Place{"I127", Area::I, 127, 2032},
                    Place{"Q0", Area::Q, 0, 2048}, Place{"Q127", Area::Q, 127, 4080},
                    Place{"M0", Area::M, 0, 4096}, Place{"M127", Area::M, 127, 6128},
                    Place{"T0", Area::T, 0, 384}, Place{"T127", Area::T, 127, 511},
                    Place{"C0", Area::C, 0, 512}, Place{"C127", Area::C, 127, 639},
                    Place{"R0", Area::R, 0, 1280}, Place{"R3999", Area::R, 3999, 5279}),
    [](const auto& tested) { return tested.param.what; });

TEST(StationMemory, HasCoilsWithoutAHoleUpTo6143)
{
    EXPECT_TRUE(StationMemory::hasCoils(0, 6144));
    EXPECT_TRUE(StationMemory::hasCoils(2047, 2)); // from I into Q
    EXPECT_TRUE(StationMemory::hasCoils(6143, 1));
    EXPECT_FALSE(StationMemory::hasCoils(6143, 2));
    EXPECT_FALSE(StationMemory::hasCoils(6144, 1));
    EXPECT_FALSE(StationMemory::hasCoils(-1, 1));
    EXPECT_FALSE(StationMemory::hasCoils(0, 0));
}

TEST(StationMemory, HasRegistersInTwoBlocks)
{
    EXPECT_FALSE(StationMemory::hasRegisters(383, 1));
    EXPECT_TRUE(StationMemory::hasRegisters(384, 256)); // T and C
    EXPECT_FALSE(StationMemory::hasRegisters(384, 257));
    EXPECT_FALSE(StationMemory::hasRegisters(640, 1));
    EXPECT_FALSE(StationMemory::hasRegisters(1279, 2));
    EXPECT_TRUE(StationMemory::hasRegisters(1280, 4000));
    EXPECT_FALSE(StationMemory::hasRegisters(1280, 4001));
    EXPECT_FALSE(StationMemory::hasRegisters(5280, 1));
}

TEST(StationMemory, OutsideOfItReadsAsZeroAndKeepsNothing)
{
    StationMemory memory;
    memory.setRegister(640, 7);
    memory.setCoil(6144, true);
    memory.setWord(Area::I, 128, 7);
    memory.setWord(Area::I, -1, 7);
    memory.setBit(Area::M, 0, 16, true);
    EXPECT_EQ(memory.registerValue(640), 0);
    EXPECT_FALSE(memory.coil(6144));
    EXPECT_EQ(memory.word(Area::I, 128), 0);
    EXPECT_EQ(memory.word(Area::M, 0), 0);
    EXPECT_EQ(memory.word(Area::M, 1), 0);
}

TEST(StationMemory, KeepsTheLowOrderWordOfADoubleWordFirst)
{
    StationMemory memory;
    memory.setDoubleWord(Area::R, 10, 0x12345678);
    EXPECT_EQ(memory.word(Area::R, 10), 0x5678);
    EXPECT_EQ(memory.word(Area::R, 11), 0x1234);
    EXPECT_EQ(memory.doubleWord(Area::R, 10), 0x12345678U);
}

TEST(Memory, HasStations1To247AndTheyShareNothing)
{
    Memory memory({3, 1, 0, 248, 247});
    EXPECT_EQ(memory.stations(), (std::vector<int>{1, 3, 247}));
    EXPECT_FALSE(memory.has(0));
    EXPECT_EQ(memory.station(2), nullptr);
    memory.station(1)->setWord(Area::R, 5, 77);
    EXPECT_EQ(memory.station(3)->word(Area::R, 5), 0);
    EXPECT_EQ(memory.station(1)->word(Area::R, 5), 77);
}

} // namespace
} // namespace dov417::simulator
