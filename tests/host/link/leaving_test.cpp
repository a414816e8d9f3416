// The line is left: when is it quiet?
#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// One register of station 1; the request takes 8 characters, the reply 7.
const char* const oneRegister = "0103050A0001";
const char* const itsReply = "0103020007";
constexpr int itsLength = 7;

class ALineThatIsLeft : public ::testing::Test {
protected:
    void start()
    {
        line.start();
    }
    void askAndHear(milliseconds delay)
    {
        line.ask(oneRegister, itsLength);
        line.pass(delay);
        line.comeWhole(itsReply);
    }
    // From now on, in whole milliseconds.
    long long wait() const
    {
        return std::chrono::floor<milliseconds>(line.exchange->quietAt() - line.now).count();
    }
    bool isQuiet() const
    {
        return line.exchange->quietAt() <= line.now;
    }
    HandLine line;
};

TEST_F(ALineThatIsLeft, IsQuietWhereNothingWasAsked)
{
    start();
    line.exchange->sendNoMore();
    EXPECT_TRUE(isQuiet());
}

TEST_F(ALineThatIsLeft, IsQuietOnceTheReplyHasCome)
{
    start();
    line.ask(oneRegister, itsLength);
    line.exchange->sendNoMore();
    EXPECT_FALSE(isQuiet());
    line.comeWhole(itsReply);
    EXPECT_TRUE(isQuiet());
    EXPECT_TRUE(line.ended.has_value()) << "it counts";
}

TEST_F(ALineThatIsLeft, WaitsForAStationAsLongAsItHasBeenSeenToTake)
{
    line.settings.timeout.isFixed = true;
    line.settings.timeout.initial = seconds(60);
    start();
    askAndHear(milliseconds(602));
    line.pass(milliseconds(10));
    line.ask(oneRegister, itsLength);
    line.exchange->sendNoMore();
    EXPECT_EQ(wait(), 903) << "half as long again, with 15 characters of 0.286 ms";
    line.pass(milliseconds(904));
    EXPECT_TRUE(isQuiet());
}

TEST_F(ALineThatIsLeft, WaitsForAStationThatHasNotAnsweredYetAsLongAsItsTimeout)
{
    start();
    line.ask(oneRegister, itsLength);
    line.exchange->sendNoMore();
    EXPECT_EQ(wait(), 504);
}

TEST_F(ALineThatIsLeft, WaitsForTheEndOfAReplyThatHasBegun)
{
    start();
    line.ask(oneRegister, itsLength);
    line.exchange->sendNoMore();
    line.pass(milliseconds(490));
    line.come("0103");
    EXPECT_EQ(wait(), 100);
    line.pass(milliseconds(60));
    line.come("02");
    EXPECT_EQ(wait(), 100);
}

TEST_F(ALineThatIsLeft, WaitsForTheLateReplyOfARequestThatIsNotAwaitedAnyMore)
{
    line.settings.timeout.isFixed = true;
    start();
    askAndHear(milliseconds(800));
    line.pass(milliseconds(10));
    line.ask(oneRegister, itsLength);
    line.pass(milliseconds(510));
    ASSERT_EQ(line.reason(), "no answer: no byte came");
    line.exchange->sendNoMore();
    EXPECT_FALSE(isQuiet());
    line.comeWhole(itsReply);
    EXPECT_TRUE(isQuiet());
}

TEST_F(ALineThatIsLeft, GivesControllersTheirTimeAfterABroadcast)
{
    start();
    line.ask("000605000001", 0);
    line.exchange->sendNoMore();
    EXPECT_EQ(wait(), 102);
    line.pass(milliseconds(102));
    EXPECT_FALSE(line.ended.has_value());
    line.pass(milliseconds(1));
    EXPECT_TRUE(line.ended.has_value());
    EXPECT_TRUE(isQuiet());
}

TEST_F(ALineThatIsLeft, CarriesNothingMore)
{
    start();
    line.ask(oneRegister, itsLength);
    line.comeWhole(itsReply);
    line.ask(oneRegister, itsLength); // keeps the silence before it
    line.exchange->sendNoMore();
    line.pass(seconds(10));
    EXPECT_EQ(line.sent.size(), 1U);
    EXPECT_FALSE(line.ended.has_value());
}

TEST_F(ALineThatIsLeft, CarriesNoRequestBehindAMarker)
{
    line.settings.isShared = true;
    start();
    line.ask(oneRegister, itsLength);
    ASSERT_EQ(line.sent.size(), 1U);
    line.exchange->sendNoMore();
    line.exchange->bytesCame(line.sent.front(), line.now); // the echo
    EXPECT_TRUE(isQuiet());
    line.pass(seconds(10));
    EXPECT_EQ(line.sent.size(), 1U);
}

TEST_F(ALineThatIsLeft, IsUsedAgainOnceItIsOpenedAgain)
{
    start();
    line.exchange->sendNoMore();
    start();
    askAndHear(milliseconds(20));
    EXPECT_TRUE(line.ended.has_value());
}

} // namespace

} // namespace dov417
