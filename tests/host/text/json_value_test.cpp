#include "text/json_value.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

TEST(JsonValue, NumbersAreNumbersHoweverTheyAreWritten)
{
    EXPECT_EQ(jsonValue("42").dump(), "42");
    EXPECT_EQ(jsonValue("-7").dump(), "-7");
    EXPECT_EQ(jsonValue("0.1").dump(), "0.1");
    EXPECT_EQ(jsonValue("1e+10").dump(), "10000000000");
    EXPECT_EQ(jsonValue("1.50").dump(), "1.5");
    EXPECT_EQ(jsonValue("12.0").dump(), "12");
    EXPECT_EQ(jsonValue("-0").dump(), "-0.0");
    EXPECT_EQ(jsonValue("3.4028235e+38").dump(), "3.4028235e+38");
    EXPECT_EQ(jsonValue("1e+20").dump(), "1e+20");
    EXPECT_EQ(jsonValue("18446744073709551615").dump(), "18446744073709551615");
}

TEST(JsonValue, WhatJsonHasNoNumberForIsNull)
{
    for (const char* text : {"nan", "-nan", "inf", "-inf"})
        EXPECT_EQ(jsonValue(text).dump(), "null");
}

TEST(JsonValue, DigitsOfBitsAreText)
{
    EXPECT_EQ(jsonValue("0x00FF").dump(), "\"0x00FF\"");
    EXPECT_EQ(jsonValue("0x12AF?").dump(), "\"0x12AF?\"");
    EXPECT_EQ(jsonValue("?").dump(), "\"?\"");
}

} // namespace

} // namespace dov417
