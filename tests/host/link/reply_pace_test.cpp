#include "link/reply_pace.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

using std::chrono::milliseconds;

TEST(ReplyPace, SuspectsAReplyThatComesSoonerThanAnyBefore)
{
    ReplyPace pace;
    EXPECT_FALSE(pace.isSuspect(milliseconds(20)));
    EXPECT_FALSE(pace.isSuspect(milliseconds(40)));
    EXPECT_FALSE(pace.isSuspect(milliseconds(15))) << "within what clocks and schedulers do";
    EXPECT_TRUE(pace.isSuspect(milliseconds(10)));
    EXPECT_FALSE(pace.isSuspect(milliseconds(10))) << "that can be, then";
}

TEST(ReplyPace, SaysNothingOfRepliesThatAreSoonAnyway)
{
    ReplyPace pace;
    EXPECT_FALSE(pace.isSuspect(Micros(1200)));
    EXPECT_FALSE(pace.isSuspect(Micros(0)));
}

TEST(ReplyPace, SuspectsOneOfManyAndForgetsWhatWasSoonestBeforeThem)
{
    ReplyPace pace;
    EXPECT_FALSE(pace.isSuspect(Micros(0)));
    int suspected = 0;
    for (int i = 0; i < 512; ++i)
        suspected += pace.isSuspect(milliseconds(20)) ? 1 : 0;
    EXPECT_EQ(suspected, 2);
    EXPECT_TRUE(pace.isSuspect(milliseconds(5)));
}

} // namespace

} // namespace dov417
