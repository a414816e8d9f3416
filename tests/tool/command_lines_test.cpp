#include "tool/command_lines.h"

#include <gtest/gtest.h>

#include "complaint.h"

namespace dov417 {

namespace {

using WordList = std::vector<std::string>;

TEST(CommandWords, AreSplitAtBlanks)
{
    EXPECT_EQ(commandWords("read R_W:1  2/T:5\t--format hex\r"),
              (WordList{"read", "R_W:1", "2/T:5", "--format", "hex"}));
    EXPECT_EQ(commandWords(" \t "), WordList());
}

TEST(CommandWords, MayBeQuoted)
{
    EXPECT_EQ(commandWords("read 'my file' \"it's\" a\"b c\"d ''"),
              (WordList{"read", "my file", "it's", "ab cd", ""}));
    EXPECT_EQ(complaint([]() { commandWords("read 'x"); }), "a quote is not closed: '");
}

TEST(CommandWords, EndWhereACommentBegins)
{
    EXPECT_EQ(commandWords("# all of it"), WordList());
    EXPECT_EQ(commandWords("write a=1 # 'that"), (WordList{"write", "a=1"}));
    EXPECT_EQ(commandWords("write a#1 '#'"), (WordList{"write", "a#1", "#"}));
}

TEST(TheLinesOfCommands, SayWhichOneLacksItsEnd)
{
    CommandLines lines;
    lines.add("one\ntwo");
    EXPECT_EQ(lines.next(), "one");
    EXPECT_FALSE(lines.lacksItsEnd());
    lines.end();
    EXPECT_EQ(lines.next(), "two");
    EXPECT_TRUE(lines.lacksItsEnd());
    CommandLines whole;
    whole.add("one\n");
    whole.end();
    EXPECT_EQ(whole.next(), "one");
    EXPECT_FALSE(whole.lacksItsEnd());
}

TEST(TheLinesOfCommands, AreCountedHoweverTheyCome)
{
    CommandLines lines;
    lines.add("one\ntw");
    EXPECT_EQ(lines.next(), "one");
    EXPECT_EQ(lines.number(), 1);
    EXPECT_EQ(lines.next(), std::nullopt);
    lines.add("o\n\nthree");
    EXPECT_EQ(lines.next(), "two");
    EXPECT_EQ(lines.next(), "");
    EXPECT_EQ(lines.next(), std::nullopt);
    EXPECT_EQ(lines.number(), 3);
    EXPECT_FALSE(lines.isAtEnd());
    lines.end();
    EXPECT_FALSE(lines.isAtEnd());
    EXPECT_EQ(lines.next(), "three");
    EXPECT_EQ(lines.number(), 4);
    EXPECT_TRUE(lines.isAtEnd());
    EXPECT_EQ(lines.next(), std::nullopt);
}

} // namespace

} // namespace dov417
