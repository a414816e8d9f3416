#include "text/characters.h"

#include <gtest/gtest.h>

#include "complaint.h"
#include "text/address_values.h"
#include "text/json_value.h"

namespace dov417 {

namespace {

using Bytes = std::vector<unsigned char>;

// The driver hands the words 0x5055 and 0x4D50 over low byte first.
const Bytes pump = {0x55, 0x50, 0x50, 0x4D};

std::string shown(const Bytes& bytes, WordOrder order = WordOrder::highFirst)
{
    return charactersText(bytes.data(), static_cast<int>(bytes.size() / 2), order);
}

std::string refusal(const std::string& text, int words)
{
    return complaint([&] { characterBytes(text, words, WordOrder::highFirst); });
}

TEST(Characters, BeginWithEitherByteOfAWord)
{
    EXPECT_EQ(shown(pump), R"("PUMP")");
    EXPECT_EQ(shown(pump, WordOrder::lowFirst), R"("UPPM")");
    EXPECT_EQ(characterBytes("PUMP", 2, WordOrder::highFirst), pump);
    EXPECT_EQ(characterBytes("UPPM", 2, WordOrder::lowFirst), pump);
}

TEST(Characters, EndBeforeTheZerosThatFillTheWords)
{
    EXPECT_EQ(shown({'U', 'P', 0, 'M', 0, 0}), R"("PUM")");
    EXPECT_EQ(shown({0, 0}), R"("")");
    EXPECT_EQ(shown({0, 'A', 'B', 0}), R"("A\x00\x00B")");
    EXPECT_EQ(shown({' ', 'A'}), R"("A ")");
    EXPECT_EQ(characterBytes("PUM", 3, WordOrder::highFirst), (Bytes{'U', 'P', 0, 'M', 0, 0}));
    EXPECT_EQ(characterBytes("", 1, WordOrder::highFirst), (Bytes{0, 0}));
}

TEST(Characters, ThatAreNotPrintableAreEscapedAndReadBackTheSame)
{
    const Bytes bytes = {'"', '\\', 0x1F, 0x7F, 0xE9, '\n', ' ', '~'};
    const std::string text = R"("\\\"\x7F\x1F\x0A\xE9~ ")";
    EXPECT_EQ(shown(bytes), text);
    EXPECT_EQ(characterBytes(text, 4, WordOrder::highFirst), bytes);
    EXPECT_EQ(characterBytes(withoutQuotes(text), 4, WordOrder::highFirst), bytes);
}

TEST(Characters, EachByteReadsBackAsItself)
{
    for (int byte = 1; byte < 256; ++byte) {
        const Bytes bytes = {static_cast<unsigned char>(byte), 'x'};
        const std::string text = shown(bytes);
        EXPECT_EQ(characterBytes(text, 1, WordOrder::highFirst), bytes) << text;
        EXPECT_EQ(characterBytes(jsonValue(text).get<std::string>(), 1, WordOrder::highFirst),
                  bytes)
            << text;
    }
}

TEST(Characters, ThatWouldNotReadBackTheSameAreRefused)
{
    EXPECT_EQ(refusal("PUMPS", 2), "text 'PUMPS': 5 characters, and there is room for 4");
    EXPECT_EQ(refusal("caf\u00E9", 4), "text 'caf\u00E9': what is no printable ASCII character is "
                                       "written as its byte, as in \\xE9");
    for (const char* text : {R"(\)", R"(\n)", R"(\x)", R"(\x1)", R"(\xZZ)", R"(\x1Z)"})
        EXPECT_EQ(refusal(text, 4), "text '" + std::string(text) +
                                        "': a backslash is written \\\\, a quote \\\", a byte \\x "
                                        "and two hex digits");
}

TEST(Characters, AreNoNumberInJsonHoweverTheyLook)
{
    EXPECT_EQ(jsonValue(R"("12")").dump(), R"("12")");
    EXPECT_EQ(jsonValue(R"("nan")").dump(), R"("nan")");
    EXPECT_EQ(jsonValue(R"("true")").dump(), R"("true")");
    EXPECT_EQ(jsonValue(R"("\x07")").dump(), R"("\\x07")");
}

TEST(Characters, OfAnAddressAreOneValue)
{
    const Address words{1, "R_W", Width::word, 100, 2};
    const Address text = asText(words, parseFormat("text"));
    EXPECT_EQ(text.width, Width::text);
    EXPECT_EQ(valueCount(text), 1);
    EXPECT_EQ(byteCount(text), 4);
    const Format format = chosenFormat(parseFormat("text"), FormatChoice());
    EXPECT_EQ(valueTexts(text, format, pump.data()), std::vector<std::string>{R"("PUMP")"});
    EXPECT_EQ(valueBytes(text, format, {"PUMP"}), pump);
    EXPECT_EQ(asText(words, parseFormat("hex")), words);
    EXPECT_EQ(asText({1, "R_W", Width::word, 0, 120}, parseFormat("text")).width, Width::text);
    EXPECT_EQ(asText({1, "R_W", Width::word, 0, 121}, parseFormat("text")).width, Width::word);
}

} // namespace

} // namespace dov417
