#include "uncalled_functions.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

TEST(HexText, OfTwoCharactersIsAByte)
{
    const struct {
        const char* text;
        int byte;
    } rows[] = {{"00", 0x00}, {"09", 0x09}, {"10", 0x10}, {"1F", 0x1F}, {"A0", 0xA0},
                {"FF", 0xFF}, {"ff", 0xFF}, {"aB", 0xAB}, {"3c", 0x3C}};
    for (const auto& row : rows) {
        EXPECT_EQ(asc2hex(QByteArray(row.text), 0), row.byte) << row.text;
    }
}

TEST(HexText, GivesEveryOtherCharacterItsKeptNibble)
{
    const struct {
        int code;
        int nibble;
    } rows[] = {
        {0, 0},   {1, 0},   {47, 0},  // below the digit zero
        {58, 10}, {63, 15},           // the six after the digit nine
        {64, 0},                      // "@"
        {71, 0},  {90, 3},            // "G", "Z": only the low four bits are kept
        {103, 0}, {122, 3},           // "g", "z"
        {127, 8}, {128, 9}, {255, 8}, // a character is an unsigned code on every processor
    };
    for (const auto& row : rows) {
        const QByteArray first(1, static_cast<char>(row.code));
        EXPECT_EQ(asc2hex(first + "0", 0), row.nibble * 16) << row.code;
        EXPECT_EQ(asc2hex("0" + first, 0), row.nibble) << row.code;
    }
}

TEST(HexText, StartsAtThePosition)
{
    EXPECT_EQ(asc2hex(QByteArray("12AB"), 1), 0x2A);
    EXPECT_EQ(asc2hex(QByteArray("12AB"), 2), 0xAB);
}

TEST(HexText, TakesAMissingCharacterForZero)
{
    EXPECT_EQ(asc2hex(QByteArray("12AB"), 3), 0xB0);
    EXPECT_EQ(asc2hex(QByteArray("12AB"), 4), 0);
    EXPECT_EQ(asc2hex(QByteArray("12AB"), INT_MAX), 0);
    EXPECT_EQ(asc2hex(QByteArray("12AB"), INT_MIN), 0);
    EXPECT_EQ(asc2hex(QByteArray("12AB"), -2), 0);
    EXPECT_EQ(asc2hex(QByteArray(), 0), 0);
    EXPECT_EQ(asc2hex(QByteArray("7"), 0), 0x70);
}

} // namespace
