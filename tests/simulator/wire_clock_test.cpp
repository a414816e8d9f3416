#include "simulator/wire_clock.h"

#include <gtest/gtest.h>

namespace dov417::simulator {
namespace {

TEST(WireClock, PassesBytesOneAfterTheOther)
{
    WireClock wire(parseSerialFormat("10000,8,NONE,1")); // 1 ms a character
    EXPECT_EQ(wire.transmit(5000000, 3), 8000000);
    EXPECT_EQ(wire.passedAt(0), 6000000);
    EXPECT_EQ(wire.passedAt(2), 8000000);
    EXPECT_EQ(wire.freeAt(), 8000000);
}

TEST(WireClock, LetsBytesWaitForThoseBeforeThem)
{
    WireClock wire(parseSerialFormat("10000,8,NONE,1"));
    wire.transmit(5000000, 3);
    EXPECT_EQ(wire.transmit(6500000, 2), 10000000); // from 8 ms on
    EXPECT_EQ(wire.passedAt(0), 9000000);
    EXPECT_EQ(wire.transmit(20000000, 1), 21000000); // an idle line is free at once
}

} // namespace
} // namespace dov417::simulator
