#include "panel/desk/english_plurals.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

std::string english(const char* text, int number)
{
    return EnglishPlurals().translate("AnyPage", text, nullptr, number).toStdString();
}

TEST(EnglishPlurals, HaveTheVerbOfWhatIsCounted)
{
    EXPECT_EQ(english("%n value(s) were read.", 1), "%n value was read.");
    EXPECT_EQ(english("%n value(s) were read.", 2), "%n values were read.");
    EXPECT_EQ(english("%n value(s) were read.", 0), "%n values were read.");
    EXPECT_EQ(english("%n frame(s) are missing here", 1), "%n frame is missing here");
    EXPECT_EQ(english("but %n value(s) read back otherwise", 1),
              "but %n value reads back otherwise");
    EXPECT_EQ(english("%n more have passed since.", 1), "%n more has passed since.");
    EXPECT_EQ(english("%n more have passed since.", 3), "%n more have passed since.");
    EXPECT_EQ(english("So are %n more.", 1), "So is %n more.");
    EXPECT_EQ(english("%n longer one(s) up to %1 ms", 12), "%n longer ones up to %1 ms");
}

TEST(EnglishPlurals, LeaveWhatIsNotCountedToItself)
{
    EXPECT_TRUE(EnglishPlurals().translate("AnyPage", "port(s)", nullptr, -1).isNull());
}

} // namespace

} // namespace dov417
