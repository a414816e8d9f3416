#include "protocol/byte_conversion.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

TEST(ByteConversion, TwoBytesMakeAWordLowByteFirst)
{
    EXPECT_EQ(uchar2int16(0x34, 0x12), 0x1234);
    EXPECT_EQ(uchar2int16(0, 0), 0);
    EXPECT_EQ(uchar2int16(0xFF, 0xFF), 65535); // never negative
    EXPECT_EQ(uchar2int16(0, 0x80), 32768);
}

TEST(ByteConversion, FourBytesMakeADoubleWordLowByteFirst)
{
    EXPECT_EQ(uchar2int32(0x78, 0x56, 0x34, 0x12), 0x12345678);
    EXPECT_EQ(uchar2int32(1, 0, 0, 0), 1);
    EXPECT_EQ(uchar2int32(0, 1, 0, 0), 256);
    EXPECT_EQ(uchar2int32(0, 0, 1, 0), 65536);
    EXPECT_EQ(uchar2int32(0, 0, 0, 1), 16777216);
    EXPECT_EQ(uchar2int32(0xFF, 0xFF, 0xFF, 0xFF), -1);
    EXPECT_EQ(uchar2int32(0, 0, 0, 0x80), INT_MIN);
}

TEST(SetBitValue, SetsABitForAnyNumberButZeroAndClearsItForZero)
{
    EXPECT_EQ(_setBitValue(0, 0, 1), 1);
    EXPECT_EQ(_setBitValue(0, 4, 1), 16);
    EXPECT_EQ(_setBitValue(0, 4, 2), 16);
    EXPECT_EQ(_setBitValue(0, 4, -1), 16);
    EXPECT_EQ(_setBitValue(0x1F, 4, 1), 0x1F);
    EXPECT_EQ(_setBitValue(0x1F, 4, 0), 0x0F);
    EXPECT_EQ(_setBitValue(0x1F, 0, 0), 0x1E);
    EXPECT_EQ(_setBitValue(0x0F, 4, 0), 0x0F);
}

TEST(SetBitValue, ReachesTheSignBit)
{
    EXPECT_EQ(_setBitValue(0, 31, 1), INT_MIN);
    EXPECT_EQ(_setBitValue(-1, 31, 0), INT_MAX);
    EXPECT_EQ(_setBitValue(-1, 0, 0), -2);
}

TEST(SetBitValue, LeavesAValueAloneWhereItHasNoSuchBit)
{
    EXPECT_EQ(_setBitValue(5, -1, 1), 5);
    EXPECT_EQ(_setBitValue(5, 32, 1), 5);
    EXPECT_EQ(_setBitValue(-1, -1, 0), -1);
    EXPECT_EQ(_setBitValue(-1, 32, 0), -1);
    EXPECT_EQ(_setBitValue(-1, 1000, 0), -1);
}

TEST(SetBitValue, ReachesTheLowestAndTheHighestBit)
{
    EXPECT_EQ(_setBitValue(0, 0, 1), 1);
    EXPECT_EQ(_setBitValue(0, 31, 7), -2147483647 - 1);
    EXPECT_EQ(_setBitValue(-1, 31, 0), 2147483647);
    EXPECT_EQ(_setBitValue(-1, 0, 0), -2);
}

} // namespace
