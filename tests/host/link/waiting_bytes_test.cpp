// Bytes that have come to the port when a time is over, and that nobody has handed on yet.
#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;

const char* const replyThatWaits = "0103020064";

// They are the reply, or somebody else has thrown them away.
class BytesThatWait : public ::testing::TestWithParam<bool> {
protected:
    BytesThatWait()
    {
        line.start();
    }
    void waitAndCome(milliseconds time)
    {
        line.bytesWait = true;
        line.pass(time);
        ASSERT_FALSE(line.ended.has_value());
        line.bytesWait = false;
        if (GetParam())
            line.comeWhole(replyThatWaits);
        line.pass(milliseconds(10));
    }
    void expectReplyIfItCame() const
    {
        ASSERT_TRUE(line.ended.has_value());
        EXPECT_EQ(line.ended->reception.result,
                  GetParam() ? LineResult::reply : LineResult::timeout);
    }

    HandLine line;
};

TEST_P(BytesThatWait, AreNotSentInto)
{
    line.bytesWait = true;
    line.ask(readOf100, 7);
    line.pass(milliseconds(50));
    EXPECT_EQ(line.sent.size(), 0U);
    waitAndCome(milliseconds(50));
    EXPECT_EQ(line.sent.size(), 1U);
}

TEST_P(BytesThatWait, AreTheReplyAlsoWhereItsTimeIsOver)
{
    line.ask(readOf100, 7);
    line.pass(milliseconds(400));
    waitAndCome(milliseconds(400));
    expectReplyIfItCame();
    EXPECT_EQ(line.sent.size(), 1U);
}

TEST_P(BytesThatWait, AreTheReplyAlsoWhereTheStationHasBeenListenedToForLongEnough)
{
    line.ask(readOf100, 7);
    line.pass(milliseconds(600));
    ASSERT_TRUE(line.ended.has_value());
    line.ask(readOf100, 7);
    line.pass(milliseconds(200));
    waitAndCome(milliseconds(800));
    EXPECT_EQ(line.ended.has_value(), GetParam());
    EXPECT_EQ(line.sent.size(), GetParam() ? 1U : 2U) << "not sent into the reply";
}

// One that came too soon may have been a copy of the reply before it.
TEST_P(BytesThatWait, MayBeTheVeryReplyWhereOneIsHeldBack)
{
    for (int i = 0; i < 3; ++i) {
        line.ask(readOf100, 7);
        line.pass(milliseconds(400));
        line.comeWhole(replyThatWaits);
        line.pass(milliseconds(20));
    }
    line.ask(readOf100, 7);
    line.comeWhole(replyThatWaits);
    line.pass(milliseconds(350));
    waitAndCome(milliseconds(500));
    EXPECT_EQ(line.doubts, GetParam() ? 1 : 0);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, GetParam() ? LineResult::timeout : LineResult::reply);
}

INSTANTIATE_TEST_SUITE_P(AndCome, BytesThatWait, ::testing::Bool(),
                         ::testing::PrintToStringParamName());

} // namespace

} // namespace dov417
