#include "text/wildcards.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

TEST(Wildcards, StandForAnyCharactersOrForOne)
{
    for (const char* name : {"press.a", "press.", "press.a.b"})
        EXPECT_TRUE(isMatch("press.*", name)) << name;
    for (const char* name : {"press", "xpress.a", "Press.a", ""})
        EXPECT_FALSE(isMatch("press.*", name)) << name;
    EXPECT_TRUE(isMatch("*.speed", "a.b.speed"));
    EXPECT_FALSE(isMatch("*.speed", "a.speeds"));
    EXPECT_TRUE(isMatch("p?", "p1"));
    EXPECT_FALSE(isMatch("p?", "p"));
    EXPECT_FALSE(isMatch("p?", "p12"));
    EXPECT_TRUE(isMatch("*a*b", "xaxaxb"));
    EXPECT_FALSE(isMatch("*a*b", "xbxa"));
    EXPECT_TRUE(isMatch("*", ""));
    EXPECT_TRUE(isMatch("a**", "a"));
}

TEST(Wildcards, AreKnownByTheirCharacters)
{
    EXPECT_TRUE(isWildcard("a*"));
    EXPECT_TRUE(isWildcard("a?"));
    EXPECT_FALSE(isWildcard("a.b[2]"));
}

} // namespace

} // namespace dov417
