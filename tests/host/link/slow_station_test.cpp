// What a person is told of a station that is slower than its time-out.
#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Notices = std::vector<std::string>;

const char* const slowRead = "0103050A0001";
const char* const slowReply = "0103020007";

// Station 1 answers after 600 ms, the time-out is 500 ms.
void askSlowStation(HandLine& line)
{
    line.ask(slowRead, 7);
    line.pass(milliseconds(602)); // with the request's own time on the line
    line.comeWhole(slowReply);
    line.pass(seconds(3));
}

TEST(ASlowStation, IsNamedOnce)
{
    HandLine line;
    line.start();
    askSlowStation(line);
    EXPECT_EQ(line.notices, Notices{"station 1 answers after 600 ms: waiting longer from now on"});
    askSlowStation(line);
    EXPECT_EQ(line.notices.size(), 1U);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
}

TEST(ASlowStation, IsNamedWithTheOptionToRaise)
{
    HandLine line;
    line.settings.timeout.isFixed = true;
    line.start();
    askSlowStation(line);
    EXPECT_EQ(line.notices, Notices{"station 1 answers after 600 ms, later than it is waited for: "
                                    "raise --timeout"});
}

TEST(ASlowStation, IsNamedWithTheMostThatItMayBeGiven)
{
    HandLine line;
    line.settings.timeout.max = milliseconds(550);
    line.start();
    askSlowStation(line);
    EXPECT_EQ(line.notices, Notices{"station 1 answers after 600 ms, later than it is waited for: "
                                    "raise --timeout-max"});
}

TEST(ASlowStation, IsSentNothingElseForSomeTimeAfterAMarkerEither)
{
    HandLine line;
    line.settings.mayMark = false;
    line.start();
    line.askRead(slowRead, 1);
    line.pass(milliseconds(1010));
    line.askRead("0103050B0001", 1); // its reply would look the same
    ASSERT_EQ(line.sent.size(), 2U);
    EXPECT_EQ(line.sent.back(), withCrc(QByteArray::fromHex("0103050B0002"))) << "the marker";
    line.pass(milliseconds(1010)); // its time-out
    ASSERT_TRUE(line.ended.has_value());
    line.askRead("0103050B0001", 1);
    line.pass(milliseconds(980));
    ASSERT_EQ(line.sent.size(), 2U);
    line.comeWhole("01030400080009");
    line.pass(line.settings.replyGap + milliseconds(5));
    ASSERT_EQ(line.sent.size(), 3U);
    line.comeWhole("0103020008");
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
}

// It may know no function 8: the time of each station that is asked first would be doubled.
TEST(AStation, ThatSaysNothingToItsFirstEchoIsAskedAgainAtOnce)
{
    HandLine line;
    line.settings.isShared = true;
    line.start();
    line.askRead(slowRead, 1);
    line.pass(milliseconds(510));
    EXPECT_EQ(line.sent.size(), 2U);
}

TEST(AStationThatWasSwitchedOff, IsNotTakenToBeSlow)
{
    HandLine line;
    line.start();
    line.ask(slowRead, 7);
    line.pass(seconds(20));
    line.ask(slowRead, 7); // the same once more: nobody can tell which one is answered
    line.pass(milliseconds(12));
    line.comeWhole(slowReply);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
    EXPECT_EQ(line.notices, Notices{});
    ASSERT_EQ(line.exchange->stationTimes().size(), 1U);
    EXPECT_LT(line.exchange->stationTimes().front().slowest, milliseconds(20));
}

TEST(AStationThatAnswersInTime, IsNotNamed)
{
    HandLine line;
    line.start();
    line.ask(slowRead, 7);
    line.pass(milliseconds(499));
    line.comeWhole(slowReply);
    EXPECT_EQ(line.notices, Notices{});
    ASSERT_EQ(line.exchange->stationTimes().size(), 1U);
    EXPECT_EQ(line.exchange->stationTimes().front().station, 1);
}

} // namespace

} // namespace dov417
