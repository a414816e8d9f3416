#include "text/values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "loaded_library.h"

namespace dov417 {

namespace {

using ::testing::ElementsAre;
using Bytes = std::vector<unsigned char>;
using Texts = std::vector<std::string>;

const Format asUnsigned{Notation::unsignedNumber, WordOrder::lowFirst};
const Format asSigned{Notation::signedNumber, WordOrder::lowFirst};
const Format asHex{Notation::hex, WordOrder::lowFirst};
const Format asBcd{Notation::bcd, WordOrder::lowFirst};
const Format asReal{Notation::real, WordOrder::lowFirst};
const Format asRealHighFirst{Notation::real, WordOrder::highFirst};
const Format asHexHighFirst{Notation::hex, WordOrder::highFirst};

std::string shown(Width width, const Format& format, const Bytes& bytes)
{
    return valueTexts(width, format, bytes.data(), 1).at(0);
}

std::string refused(Width width, const Format& format, const char* text)
{
    return complaint([&] { valueBytes(width, format, {text}); });
}

TEST(Values, WordsAreShownInEveryNotation)
{
    EXPECT_EQ(shown(Width::word, asUnsigned, {0xFF, 0xFF}), "65535");
    EXPECT_EQ(shown(Width::word, asSigned, {0xFF, 0xFF}), "-1");
    EXPECT_EQ(shown(Width::word, asSigned, {0x00, 0x80}), "-32768");
    EXPECT_EQ(shown(Width::word, asHex, {0x2A, 0x00}), "0x002A");
    EXPECT_EQ(shown(Width::word, asBcd, {0x34, 0x12}), "1234");
}

TEST(Values, ADigitAboveNineIsNoBcdAndIsShownAsItIs)
{
    EXPECT_EQ(shown(Width::word, asBcd, {0xAF, 0x12}), "0x12AF?");
}

TEST(Values, DoubleWordsAreShownInEveryNotation)
{
    EXPECT_EQ(shown(Width::doubleWord, asUnsigned, {0xFF, 0xFF, 0xFF, 0xFF}), "4294967295");
    EXPECT_EQ(shown(Width::doubleWord, asSigned, {0xFE, 0xFF, 0xFF, 0xFF}), "-2");
    EXPECT_EQ(shown(Width::doubleWord, asHex, {0x78, 0x56, 0x34, 0x12}), "0x12345678");
    EXPECT_EQ(shown(Width::doubleWord, asBcd, {0x78, 0x56, 0x34, 0x12}), "12345678");
    EXPECT_EQ(shown(Width::doubleWord, asReal, {0x00, 0x00, 0xC0, 0x3F}), "1.5");
    EXPECT_EQ(shown(Width::doubleWord, asReal, {0xCD, 0xCC, 0xCC, 0x3D}), "0.1");
}

TEST(Values, HighFirstExchangesTheTwoWords)
{
    EXPECT_EQ(shown(Width::doubleWord, asHexHighFirst, {0x34, 0x12, 0x78, 0x56}), "0x12345678");
    EXPECT_EQ(shown(Width::doubleWord, asRealHighFirst, {0xC0, 0x3F, 0x00, 0x00}), "1.5");
    EXPECT_EQ(shown(Width::word, asHexHighFirst, {0x34, 0x12}), "0x1234");
}

TEST(Values, BitsAreOneByteEach)
{
    const Bytes bytes = {1, 0, 1};
    EXPECT_THAT(valueTexts(Width::bit, asUnsigned, bytes.data(), 3), ElementsAre("1", "0", "1"));
    EXPECT_EQ(valueBytes(Width::bit, asUnsigned, {"1", "0"}), (Bytes{1, 0}));
    EXPECT_EQ(byteCount(Width::bit, 3), 3);
    EXPECT_EQ(byteCount(Width::word, 3), 6);
    EXPECT_EQ(byteCount(Width::doubleWord, 3), 12);
}

TEST(Values, TextsBecomeTheBytesThatTheLibraryTakes)
{
    EXPECT_EQ(valueBytes(Width::word, asUnsigned, {"258", "65535"}), (Bytes{2, 1, 0xFF, 0xFF}));
    EXPECT_EQ(valueBytes(Width::word, asSigned, {"-2"}), (Bytes{0xFE, 0xFF}));
    EXPECT_EQ(valueBytes(Width::word, asHex, {"1A2b", "0x12"}), (Bytes{0x2B, 0x1A, 0x12, 0x00}));
    EXPECT_EQ(valueBytes(Width::word, asUnsigned, {"0x12"}), (Bytes{0x12, 0x00}));
    EXPECT_EQ(valueBytes(Width::word, asBcd, {"1234"}), (Bytes{0x34, 0x12}));
    EXPECT_EQ(valueBytes(Width::doubleWord, asSigned, {"-2147483648"}), (Bytes{0, 0, 0, 0x80}));
    EXPECT_EQ(valueBytes(Width::doubleWord, asReal, {"1.5"}), (Bytes{0, 0, 0xC0, 0x3F}));
    EXPECT_EQ(valueBytes(Width::doubleWord, asRealHighFirst, {"1.5"}), (Bytes{0xC0, 0x3F, 0, 0}));
    EXPECT_EQ(valueBytes(Width::doubleWord, asReal, {"-1e3"}), (Bytes{0, 0, 0x7A, 0xC4}));
}

TEST(Values, OutOfRangeNamesTheRange)
{
    EXPECT_EQ(refused(Width::bit, asUnsigned, "2"), "value '2': out of range, 0 to 1");
    EXPECT_EQ(refused(Width::word, asUnsigned, "65536"), "value '65536': out of range, 0 to 65535");
    EXPECT_EQ(refused(Width::word, asUnsigned, "-1"), "value '-1': out of range, 0 to 65535");
    EXPECT_EQ(refused(Width::word, asSigned, "32768"),
              "value '32768': out of range, -32768 to 32767");
    EXPECT_EQ(refused(Width::word, asHex, "10000"), "value '10000': out of range, 0 to 65535");
    EXPECT_EQ(refused(Width::word, asBcd, "10000"), "value '10000': out of range, 0 to 9999");
    EXPECT_EQ(refused(Width::doubleWord, asUnsigned, "4294967296"),
              "value '4294967296': out of range, 0 to 4294967295");
    EXPECT_EQ(refused(Width::doubleWord, asSigned, "99999999999999999999999"),
              "value '99999999999999999999999': out of range, -2147483648 to 2147483647");
    EXPECT_EQ(refused(Width::doubleWord, asReal, "1e39"),
              "value '1e39': no number that 32 bits can hold");
    EXPECT_EQ(refused(Width::doubleWord, asReal, "nan"),
              "value 'nan': no number that 32 bits can hold");
}

TEST(Values, WhatIsNoNumberIsRefused)
{
    for (const char* text : {"", "x", "1 ", " 1", "--1", "0x"})
        EXPECT_EQ(refused(Width::word, asUnsigned, text),
                  "value '" + std::string(text) + "': not a number");
    for (const Format& format : {asUnsigned, asReal})
        EXPECT_EQ(refused(Width::doubleWord, format, "1,5"),
                  "value '1,5': not a number; a number has a point, not a comma");
    for (const char* text : {"1.5", "1e3"})
        EXPECT_EQ(refused(Width::word, asUnsigned, text),
                  "value '" + std::string(text) + "': not a whole number");
    EXPECT_EQ(refused(Width::word, asBcd, "-1"), "value '-1': BCD takes decimal digits only");
    EXPECT_EQ(refused(Width::word, asBcd, "12A"), "value '12A': BCD takes decimal digits only");
    EXPECT_EQ(refused(Width::doubleWord, asReal, "1.5x"), "value '1.5x': not a number");
}

TEST(Values, FormatsAreNamedWithTheirWordOrder)
{
    EXPECT_EQ(chosenFormat(parseFormat("float:high-first"), FormatChoice()), asRealHighFirst);
    EXPECT_EQ(chosenFormat(parseFormat("hex"), parseFormat("float:high-first")), asHexHighFirst);
    EXPECT_EQ(chosenFormat(parseFormat(""), parseFormat("bcd")), asBcd);
    EXPECT_EQ(chosenFormat(FormatChoice(), FormatChoice()), asUnsigned);
    EXPECT_EQ(complaint([] { parseFormat("octal"); }),
              "unknown format 'octal'; there are unsigned, signed, hex, bcd, float, int64, "
              "uint64, double, bool, binary, text");
    EXPECT_EQ(complaint([] { parseFormat("hex:middle"); }),
              "unknown word order 'middle'; there are low-first, high-first");
}

TEST(Values, FloatNeedsThirtyTwoBits)
{
    EXPECT_EQ(complaint([] { requireFormat(Width::word, asReal); }),
              "float needs the 32 bits of a double word register");
    EXPECT_NE(complaint([] { requireFormat(Width::bit, asReal); }), "");
    EXPECT_EQ(complaint([] { requireFormat(Width::doubleWord, asReal); }), "");
    EXPECT_EQ(complaint([] { requireFormat(Width::word, asBcd); }), "");
}

} // namespace

} // namespace dov417
