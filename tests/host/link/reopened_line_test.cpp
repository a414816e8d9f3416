// A line that is opened again while replies to the last one's requests may still come.
#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const char* const replyTo100 = "0103020064";

class ALineThatIsOpenedAgain : public ::testing::Test {
protected:
    // One request that is not answered, and the line is closed.
    void leaveOneOpen()
    {
        HandLine last;
        last.start();
        asked = last.now;
        last.askRead(readOf100, 1);
        last.pass(milliseconds(600));
        line.now = last.now + seconds(5);
        line.exchange->awaitLate(last.exchange->books());
    }
    HandLine line;
    Clock::time_point asked{};
};

TEST_F(ALineThatIsOpenedAgain, DatesALateReplyByTheRequestThatItAnswers)
{
    leaveOneOpen();
    line.start();
    line.askRead(readOf100, 1);
    line.pass(milliseconds(510));
    line.askRead(readOf100, 1);
    ASSERT_EQ(line.sent.size(), 1U) << "it is listened to first";
    line.comeWhole(replyTo100);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
    EXPECT_EQ(line.ended->asOf, asked) << "nothing newer is known";
}

// Nor does a marker of before the port was away tell of what another program has asked since.
TEST_F(ALineThatIsOpenedAgain, EndsNoDoubtByAMarkerOfBefore)
{
    line.settings.isShared = true;
    line.start();
    line.askRead(readOf100, 1);
    ASSERT_EQ(line.sent.size(), 1U);
    ASSERT_EQ(line.sent[0].at(1), 8);
    line.pass(milliseconds(100));
    line.exchange->stop();
    line.pass(seconds(1)); // another program opens the port, asks for R_W:1000, and goes
    line.start();
    line.exchange->bytesCame(line.sent[0], line.now); // slow as it is
    line.pass(milliseconds(10));
    line.askRead(readOf100, 1);
    line.pass(milliseconds(10));
    ASSERT_EQ(line.sent.size(), 2U);
    EXPECT_EQ(line.sent[1].at(1), 8) << "a marker";
    line.comeWhole("01030203E8"); // what the other one has asked for
    EXPECT_FALSE(line.ended.has_value());
}

// Another program has asked for R_W:1000 meanwhile: its reply looks like ours.
TEST_F(ALineThatIsOpenedAgain, TakesNoReplyThatMayBeAnotherPrograms)
{
    leaveOneOpen();
    line.settings.isShared = true;
    line.start();
    line.askRead(readOf100, 1);
    for (int i = 0; i < 10000 && !line.ended; ++i)
        line.pass(milliseconds(1));
    ASSERT_TRUE(line.ended.has_value()) << "it answers no marker";
    const std::size_t sent = line.sent.size();
    line.askRead(readOf100, 1);
    line.comeWhole("01030203E8");
    EXPECT_FALSE(line.ended.has_value()) << "it is listened to, and nothing was sent";
    EXPECT_EQ(line.sent.size(), sent);
    ASSERT_EQ(line.strays.size(), 1U);
    EXPECT_EQ(line.strays.front().kind, StrayKind::late);
}

TEST_F(ALineThatIsOpenedAgain, TakesItsOwnReplyOnceAnEchoHasComeBack)
{
    leaveOneOpen();
    line.settings.isShared = true;
    line.start();
    line.askRead(readOf100, 1);
    line.comeWhole("0103020001");
    line.exchange->bytesCame(line.sent.back(), line.now);
    line.pass(milliseconds(5));
    ASSERT_EQ(line.sent.size(), 2U);
    line.comeWhole(replyTo100);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.bytes.mid(3, 2).toHex(), "0064");
}

// What can no longer come says nothing of a station's time.
TEST(ALineThatIsOpenedAfterHours, MakesNoStationSlow)
{
    HandLine last;
    last.start();
    last.askRead(readOf100, 1);
    last.pass(milliseconds(600));
    HandLine line;
    line.now = last.now + std::chrono::hours(2);
    line.settings.isShared = true;
    line.exchange->awaitLate(last.exchange->books());
    line.start();
    line.comeWhole(replyTo100); // another master's, before anything is asked
    line.pass(milliseconds(10));
    EXPECT_TRUE(line.notices.empty()) << line.notices.front();
}

} // namespace

} // namespace dov417
