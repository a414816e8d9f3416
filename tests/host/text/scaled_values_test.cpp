#include "text/values.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "complaint.h"

namespace dov417 {

namespace {

using Bytes = std::vector<unsigned char>;

Format scaled(Notation notation, double scale, double offset = 0, int decimals = -1)
{
    Format format;
    format.notation = notation;
    format.scaling.scale = scale;
    format.scaling.offset = offset;
    format.scaling.decimals = decimals;
    return format;
}

Format plain(Notation notation, WordOrder order = WordOrder::lowFirst)
{
    return {notation, order};
}

std::string shownAs(Width width, const Format& format, const Bytes& bytes)
{
    return valueTexts(width, format, bytes.data(), 1).at(0);
}

Bytes bytesFor(Width width, const Format& format, const char* text)
{
    return valueBytes(width, format, {text});
}

std::string whyRefused(Width width, const Format& format, const char* text)
{
    return complaint([&] { valueBytes(width, format, {text}); });
}

TEST(ScaledValues, ShowTheNumberThatTheControllersStandsFor)
{
    const Format tenths = scaled(Notation::signedNumber, 0.1);
    EXPECT_EQ(shownAs(Width::word, tenths, {0x7B, 0x00}), "12.3");
    EXPECT_EQ(shownAs(Width::word, tenths, {0x03, 0x00}), "0.3");
    EXPECT_EQ(shownAs(Width::word, tenths, {0x78, 0x00}), "12");
    EXPECT_EQ(shownAs(Width::word, tenths, {0xFF, 0xFF}), "-0.1");
    EXPECT_EQ(shownAs(Width::word, scaled(Notation::unsignedNumber, 0.5, -40), {0x01, 0x00}),
              "-39.5");
    EXPECT_EQ(shownAs(Width::word, scaled(Notation::unsignedNumber, 10), {0x7B, 0x00}), "1230");
    EXPECT_EQ(shownAs(Width::word, scaled(Notation::bcd, 0.01), {0x34, 0x12}), "12.34");
    EXPECT_EQ(shownAs(Width::doubleWord, scaled(Notation::real, 10), {0xCD, 0xCC, 0xCC, 0x3D}),
              "1");
}

TEST(ScaledValues, HaveTheDecimalsAskedFor)
{
    EXPECT_EQ(shownAs(Width::word, scaled(Notation::unsignedNumber, 0.1, 0, 2), {0x7B, 0x00}),
              "12.30");
    EXPECT_EQ(shownAs(Width::word, scaled(Notation::unsignedNumber, 0.1, 0, 0), {0x7B, 0x00}),
              "12");
    EXPECT_EQ(shownAs(Width::doubleWord, scaled(Notation::real, 1, 0, 1), {0xCD, 0xCC, 0xCC, 0xBC}),
              "0.0");
}

TEST(ScaledValues, AreWrittenSoThatTheyReadBackTheSame)
{
    const Format tenths = scaled(Notation::signedNumber, 0.1);
    EXPECT_EQ(bytesFor(Width::word, tenths, "12.3"), (Bytes{0x7B, 0x00}));
    EXPECT_EQ(bytesFor(Width::word, tenths, "-0.1"), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(bytesFor(Width::word, scaled(Notation::bcd, 0.01), "12.34"), (Bytes{0x34, 0x12}));
    EXPECT_EQ(whyRefused(Width::word, tenths, "12.34"),
              "value '12.34': it would read back as 12.3");
    EXPECT_EQ(whyRefused(Width::word, scaled(Notation::unsignedNumber, 0.1, 0, 0), "12.3"),
              "value '12.3': it would read back as 12");
    EXPECT_EQ(whyRefused(Width::word, tenths, "4000"),
              "value '4000': out of range for what the controller holds");
    EXPECT_EQ(whyRefused(Width::word, tenths, "fast"), "value 'fast': not a number");
    EXPECT_EQ(whyRefused(Width::word, tenths, "1,5"),
              "value '1,5': not a number; a number has a point, not a comma");
    EXPECT_EQ(whyRefused(Width::word, scaled(Notation::bcd, 1, 1), "0"),
              "value '0': out of range for what the controller holds");
}

TEST(ScaledValues, OfAnyWordAreWrittenAsTheyAreShown)
{
    for (const Format& format : {scaled(Notation::signedNumber, 0.1, -7.25),
                                 scaled(Notation::unsignedNumber, 0.003, 1000)})
        for (unsigned raw = 0; raw < 65536; raw += 7) {
            const Bytes bytes = {static_cast<unsigned char>(raw & 0xFF),
                                 static_cast<unsigned char>(raw >> 8)};
            const std::string text = shownAs(Width::word, format, bytes);
            ASSERT_EQ(bytesFor(Width::word, format, text.c_str()), bytes) << text;
        }
}

Bytes bytesOf(float number)
{
    Bytes bytes(sizeof number);
    std::memcpy(bytes.data(), &number, sizeof number); // as this machine's, low byte first
    return bytes;
}

TEST(ScaledValues, OfAFloatAreNotRoundedTo32BitsOnceMore)
{
    const Format far = scaled(Notation::real, 1, 1e9);
    for (const auto& [held, shown] : {std::pair(20.0F, "1000000020"), {1.5F, "1000000001.5"}}) {
        EXPECT_EQ(shownAs(Width::doubleWord, far, bytesOf(held)), shown);
        EXPECT_EQ(bytesFor(Width::doubleWord, far, shown), bytesOf(held));
    }
    EXPECT_EQ(shownAs(Width::doubleWord, scaled(Notation::real, 1000), bytesOf(1e36F)), "1e+39");
    EXPECT_EQ(exactNumber(Width::doubleWord, far, bytesOf(-1.5F).data()), 999999998.5);
    // And no more digits than tell it from the float's neighbours.
    EXPECT_EQ(shownAs(Width::doubleWord, scaled(Notation::real, 1, 1000), bytesOf(0.1F)), "1000.1");
    EXPECT_EQ(shownAs(Width::doubleWord, scaled(Notation::real, 0.1, -273.15), bytesOf(3000.7F)),
              "26.92");
    EXPECT_EQ(shownAs(Width::doubleWord, scaled(Notation::real, 0.1), bytesOf(12.3F)), "1.23");
}

TEST(ScaledValues, OfAFloatAreWrittenAsTheyAreShown)
{
    for (const Format& format : {scaled(Notation::real, 0.1), scaled(Notation::real, 0.001, 5),
                                 scaled(Notation::real, 3), scaled(Notation::real, 1, -273.15)})
        for (float held = 1e-3F; held < 1e6F; held *= 1.37F) {
            const std::string text = shownAs(Width::doubleWord, format, bytesOf(held));
            ASSERT_EQ(bytesFor(Width::doubleWord, format, text.c_str()), bytesOf(held)) << text;
        }
}

TEST(ScaledValues, BeyondWhatADoubleHoldsAreShownAsTheirBits)
{
    EXPECT_EQ(
        shownAs(Width::quadWord, scaled(Notation::uint64, 0.1), {0x01, 0, 0, 0, 0, 0, 0x20, 0x00}),
        "0x0020000000000001?");
}

TEST(WideValues, TakeFourWordsInEitherOrder)
{
    const Bytes minusTwo = {0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(shownAs(Width::quadWord, plain(Notation::int64), minusTwo), "-2");
    EXPECT_EQ(shownAs(Width::quadWord, plain(Notation::uint64), minusTwo), "18446744073709551614");
    EXPECT_EQ(bytesFor(Width::quadWord, plain(Notation::int64), "-2"), minusTwo);
    EXPECT_EQ(bytesFor(Width::quadWord, plain(Notation::uint64), "18446744073709551614"), minusTwo);
    const Bytes oneAndAHalf = {0, 0, 0, 0, 0, 0, 0xF8, 0x3F};
    EXPECT_EQ(shownAs(Width::quadWord, plain(Notation::real64), oneAndAHalf), "1.5");
    EXPECT_EQ(bytesFor(Width::quadWord, plain(Notation::real64, WordOrder::highFirst), "1.5"),
              (Bytes{0xF8, 0x3F, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(shownAs(Width::quadWord, plain(Notation::hex, WordOrder::highFirst),
                      {0x02, 0x01, 0x04, 0x03, 0x06, 0x05, 0x08, 0x07}),
              "0x0102030405060708");
    EXPECT_EQ(whyRefused(Width::quadWord, plain(Notation::int64), "9223372036854775808"),
              "value '9223372036854775808': out of range, -9223372036854775808 to "
              "9223372036854775807");
    EXPECT_EQ(bytesFor(Width::quadWord, plain(Notation::int64), "-9223372036854775808"),
              (Bytes{0, 0, 0, 0, 0, 0, 0, 0x80}));
}

TEST(WideValues, DoNotFitShorterOnes)
{
    EXPECT_EQ(complaint([] { requireFormat(Width::doubleWord, plain(Notation::real64)); }),
              "double needs four words of a double word register");
    EXPECT_EQ(complaint([] { requireFormat(Width::quadWord, plain(Notation::signedNumber)); }),
              "signed does not fit values of four words");
}

TEST(BinaryValues, AreShownAndWrittenDigitByDigit)
{
    EXPECT_EQ(shownAs(Width::word, plain(Notation::binary), {0x0A, 0x80}), "0b1000000000001010");
    EXPECT_EQ(bytesFor(Width::word, plain(Notation::binary), "0b1010"), (Bytes{0x0A, 0x00}));
    EXPECT_EQ(bytesFor(Width::word, plain(Notation::binary), "1010"), (Bytes{0x0A, 0x00}));
    EXPECT_EQ(bytesFor(Width::word, plain(Notation::hex), "0B10"), (Bytes{0x10, 0x0B}));
    EXPECT_EQ(whyRefused(Width::word, plain(Notation::binary), "12"), "value '12': not a number");
}

TEST(BoolValues, AreTrueAndFalseAndElseTheirBits)
{
    EXPECT_EQ(shownAs(Width::bit, plain(Notation::boolean), {1}), "true");
    EXPECT_EQ(shownAs(Width::word, plain(Notation::boolean), {0, 0}), "false");
    EXPECT_EQ(shownAs(Width::word, plain(Notation::boolean), {2, 0}), "0x0002?");
    EXPECT_EQ(bytesFor(Width::bit, plain(Notation::boolean), "true"), (Bytes{1}));
    EXPECT_EQ(bytesFor(Width::word, plain(Notation::boolean), "0"), (Bytes{0, 0}));
    EXPECT_EQ(whyRefused(Width::bit, plain(Notation::boolean), "yes"),
              "value 'yes': a bool is true or false, or 1 or 0");
}

} // namespace

} // namespace dov417
