#include "simulator/controller.h"

#include <gtest/gtest.h>

#include "line/crc16.h"
#include "support.h"

namespace dov417::simulator {
namespace {

TEST(FrameCrc, IsSentLowByteFirst)
{
    EXPECT_EQ(crc16(bytesOf("01 03 00 00 00 01")), 0x0A84);
    EXPECT_EQ(hexOf(withCrc(bytesOf("01 03 00 00 00 01"))), "01 03 00 00 00 01 84 0A");
    EXPECT_EQ(crc16(QByteArray()), 0xFFFF);
}

TEST(FrameCrc, IsGoodOnlyForAFrameOfAtLeastFourBytes)
{
    EXPECT_TRUE(hasGoodCrc(bytesOf("01 03 00 00 00 01 84 0A")));
    EXPECT_TRUE(hasGoodCrc(bytesOf("01 03 40 21")));
    EXPECT_FALSE(hasGoodCrc(bytesOf("01 03 00 00 00 01 0A 84")));
    EXPECT_FALSE(hasGoodCrc(bytesOf("FF FF"))); // the CRC of nothing
    EXPECT_FALSE(hasGoodCrc(QByteArray()));
}

TEST(RequestLength, IsEightForReadsAndSingleWrites)
{
    for (const char* begin : {"01 01", "01 03", "01 05", "01 06"})
        EXPECT_EQ(requestLength(bytesOf(begin)), 8) << begin;
}

TEST(RequestLength, OfWritesFollowsTheQuantity)
{
    EXPECT_EQ(requestLength(bytesOf("01 0F 08 05 00 0A 02")), 11);
    EXPECT_EQ(requestLength(bytesOf("01 0F 08 05 00 08 01")), 10);
    EXPECT_EQ(requestLength(bytesOf("01 10 05 0A 00 02 04")), 13);
    EXPECT_EQ(requestLength(bytesOf("01 10 05 0A 00 80 00")), 265);
    EXPECT_EQ(requestLength(bytesOf("01 0F 00 00 08 00 00")), 265);
}

TEST(RequestLength, IsUnknownWhereByteCountAndQuantityContradictOrTheFunctionIsUnknown)
{
    EXPECT_EQ(requestLength(bytesOf("01 10 05 0A 00 02 05")), 0);
    EXPECT_EQ(requestLength(bytesOf("01 0F 08 05 00 0A 01")), 0);
    EXPECT_EQ(requestLength(bytesOf("01 04")), 0);
}

TEST(RequestLength, NeedsTheByteCountOfAWrite)
{
    EXPECT_EQ(requestLength(QByteArray()), -1);
    EXPECT_EQ(requestLength(bytesOf("01")), -1);
    EXPECT_EQ(requestLength(bytesOf("01 10 05 0A 00 02")), -1);
}

} // namespace
} // namespace dov417::simulator
