#include "text/placed_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "complaint.h"

namespace dov417 {

namespace {

std::string mistake(const std::string& text)
{
    return complaint([&] { PlacedJson(text, "a.json"); });
}

std::string refusal(const std::string& text, const std::string& path)
{
    return complaint([&] { PlacedJson(text, "a.json").refuse(path, "no"); });
}

TEST(PlacedJson, KnowsWhereEachMemberAndElementBegins)
{
    const std::string text = "{\n"
                             "  \"one\": {\"two\": 2, \"\\\"]}\\\\\": [\n"
                             "    true, [], {} , -1.5e3,null ] } ,\n"
                             "\t\"three\" :[ [ \"\u00FC,]\" ,7]]\n"
                             "}";
    EXPECT_EQ(refusal(text, ""), "a.json:1:1: no");
    EXPECT_EQ(refusal(text, "one"), "a.json:2:10: one: no");
    EXPECT_EQ(refusal(text, "one.two"), "a.json:2:18: one.two: no");
    EXPECT_EQ(refusal(text, "one.\"]}\\[0]"), "a.json:3:5: one.\"]}\\[0]: no");
    EXPECT_EQ(refusal(text, "one.\"]}\\[1]"), "a.json:3:11: one.\"]}\\[1]: no");
    EXPECT_EQ(refusal(text, "one.\"]}\\[2]"), "a.json:3:15: one.\"]}\\[2]: no");
    EXPECT_EQ(refusal(text, "one.\"]}\\[3]"), "a.json:3:20: one.\"]}\\[3]: no");
    EXPECT_EQ(refusal(text, "one.\"]}\\[4]"), "a.json:3:27: one.\"]}\\[4]: no");
    EXPECT_EQ(refusal(text, "three[0][0]"), "a.json:4:15: three[0][0]: no");
    EXPECT_EQ(refusal(text, "three[0][1]"), "a.json:4:22: three[0][1]: no");
    EXPECT_EQ(PlacedJson(text, "a.json").line("three[0]"), 4);
}

TEST(PlacedJson, APathThatIsNotThereHasNoPlace)
{
    EXPECT_EQ(refusal("{}", "a.b"), "a.json: a.b: no");
    EXPECT_EQ(PlacedJson("{}", "a.json").line("a.b"), 0);
}

TEST(PlacedJson, TextThatIsNoJsonIsRefusedWhereItBreaksOff)
{
    EXPECT_EQ(mistake("{\n \"a\": 1\n \"b\": 2}"),
              "a.json:3:4: syntax error while parsing object - unexpected string literal; "
              "expected '}'");
    EXPECT_EQ(mistake(""), "a.json:1:1: syntax error while parsing value - unexpected end of "
                           "input; expected '[', '{', or a literal");
    EXPECT_EQ(mistake("{\"a\": \n 1e999}"), "a.json:2:2: the number is too large: 1e999");
    EXPECT_THAT(mistake("{\"a\": \"\xFF\"}"), ::testing::StartsWith("a.json:1:8: "));
    EXPECT_THAT(mistake("{} 1"), ::testing::StartsWith("a.json:1:4: "));
}

TEST(PlacedJson, AMemberIsThereOnce)
{
    EXPECT_EQ(mistake("{\"a\": {\"b\": 1,\n\"\\u0062\": 2}}"), "a.json:2:1: a.b: is there twice");
    EXPECT_EQ(mistake("{\"a\": {\"b\": 1}, \"b\": {\"b\": 2}}"), "");
}

TEST(PlacedJson, WhatNestsTooDeepIsRefused)
{
    EXPECT_EQ(mistake(std::string(64, '[') + std::string(64, ']')), "");
    EXPECT_THAT(mistake(std::string(100000, '[') + std::string(100000, ']')),
                ::testing::StartsWith("a.json:1:66: "));
}

TEST(PlacedJson, AByteOrderMarkIsTolerated)
{
    EXPECT_EQ(PlacedJson("\xEF\xBB\xBF{\"a\": 1}", "a.json").root().at("a"), 1);
}

} // namespace

} // namespace dov417
