#include "line/shown_text.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

TEST(ShownText, HasNoOrderForATerminal)
{
    EXPECT_EQ(shownText("a\x1B[2K\x1B[1A\rb\nc\td\x7F" + std::string(1, '\0') + "e"),
              "a?[2K?[1A?b?c?d??e");
    EXPECT_EQ(shownText("a\xC2\x85 b\xC2\x9B 2J"), "a? b? 2J");     // C1: a line end, CSI
    EXPECT_EQ(shownText("\xC2\x80\xC2\x9F"), "??");                 // the first and the last
    EXPECT_EQ(shownText("a\xE2\x80\xA8 b\xE2\x80\xA9"), "a? b?");   // line, paragraph
    EXPECT_EQ(shownText("a\x9B 2J"), "a\xEF\xBF\xBD 2J");           // the CSI of eight bits
    EXPECT_EQ(shownText("a\xC0\x9B"), "a\xEF\xBF\xBD\xEF\xBF\xBD"); // ESC, too long
}

TEST(ShownText, IsEverythingElseAsItIs)
{
    const std::string text = "20.5 \xC2\xB0"
                             "C, gr\xC3\xBC\xC3\x9F, \xC2\xA0 \xE6\xBC\xA2 \xF0\x9F\x98\x80 ~";
    EXPECT_EQ(shownText(text), text);
    EXPECT_TRUE(isShownAsItIs(text));
    EXPECT_FALSE(isShownAsItIs("sp\xC2\x85"
                               "eed"));
    EXPECT_EQ(shownText(""), "");
}

} // namespace

} // namespace dov417
