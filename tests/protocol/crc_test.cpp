#include "crc.h"

#include "world.h"

namespace {

TEST(Crc, OfNothingIsTheStartValue)
{
    unsigned char none = 0;
    EXPECT_EQ(computate_check(&none, 0), 0xFFFF);
}

TEST(Crc, OfAOneRegisterReadIsStoredAs84Then0A)
{
    unsigned char frame[8] = {0x01, 0x03, 0x00, 0x00, 0x00, 0x01, 0, 0};
    EXPECT_EQ(computate_check(frame, 6), 0x0A84);
    appendCrc(frame, 6);
    EXPECT_EQ(toHex(frame, 8), "01 03 00 00 00 01 84 0A");
}

} // namespace
