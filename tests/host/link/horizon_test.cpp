// A station begins to answer within the horizon: its reply is whole somewhat later.
#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr char diagnosticsEcho = 8;
constexpr char registersRead = 3;

class AReplyAtTheHorizon : public ::testing::Test {
protected:
    // What goes out so long after the request that was not answered: its function.
    char sentAfter(Clock::duration time)
    {
        line.start();
        const Clock::time_point asked = line.now;
        line.askRead(readOf100, 1);
        line.pass(asked + time - line.now);
        line.askRead(readOf200, 1);
        line.pass(milliseconds(5));
        return line.sent.back().at(1);
    }
    HandLine line;
};

TEST_F(AReplyAtTheHorizon, IsNotTakenForTheReplyToAnother)
{
    EXPECT_EQ(sentAfter(seconds(30) + milliseconds(100)), diagnosticsEcho);
}

TEST_F(AReplyAtTheHorizon, IsWaitedForALittleOnly)
{

    EXPECT_EQ(sentAfter(seconds(31)), registersRead);
}

TEST_F(AReplyAtTheHorizon, MayComeATimeoutLaterOverANetwork)
{
    line.settings.bytesTakeTime = false;
    EXPECT_EQ(sentAfter(seconds(30) + milliseconds(550)), diagnosticsEcho);
}

TEST_F(AReplyAtTheHorizon, IsWaitedForALittleOnlyOverANetwork)
{
    line.settings.bytesTakeTime = false;
    EXPECT_EQ(sentAfter(seconds(30) + milliseconds(700)), registersRead);
}

// Asked for just before the line was opened.
TEST_F(AReplyAtTheHorizon, MayBeAnotherPrograms)
{
    line.settings.isShared = true;
    line.start();
    line.pass(seconds(30));
    line.askRead(readOf100, 1);
    line.pass(milliseconds(5));
    EXPECT_EQ(line.sent.back().at(1), diagnosticsEcho);
}

TEST_F(AReplyAtTheHorizon, IsNoOtherProgramsSomewhatLater)
{
    line.settings.isShared = true;
    line.start();
    line.pass(seconds(31));
    line.askRead(readOf100, 1);
    line.pass(milliseconds(5));
    EXPECT_EQ(line.sent.back().at(1), registersRead);
}

} // namespace

} // namespace dov417
