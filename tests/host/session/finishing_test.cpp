// A program ends: the line it leaves is quiet.
#include "session_world.h"

namespace dov417 {

namespace {

using std::chrono::minutes;

class FinishingOnALine : public SessionOnALine {
protected:
    // The slave notes the request and says nothing until it is told to.
    void holdReplies()
    {
        slave.arrived = [this](const QByteArray& bytes) { received += bytes; };
    }
    void openWith(Micros timeout)
    {
        line.timeout = timeout;
        ASSERT_TRUE(session->open(line).accepted);
    }
    bool waitForRequests(int count)
    {
        return waitUntil([this, count]() { return received.size() >= 8 * count; });
    }
    void finish()
    {
        session->finish([this]() { isQuiet = true; });
    }
    bool isQuiet = false;
};

TEST_F(FinishingOnALine, IsAtOnceWhereNothingIsOut)
{
    finish();
    EXPECT_FALSE(isQuiet) << "it is told from the event loop";
    EXPECT_TRUE(waitUntil([this]() { return isQuiet; }));
}

TEST_F(FinishingOnALine, IsAtOnceWhereTheLineIsClosed)
{
    session->close();
    finish();
    EXPECT_TRUE(waitUntil([this]() { return isQuiet; }));
}

TEST_F(FinishingOnALine, TakesTheReplyThatIsOutAndSendsNothingMore)
{
    openWith(minutes(10));
    holdReplies();
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitForRequests(1));
    finish();
    session->readOnce(words("R_W", 20), outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(outcomes[1], "the line is being left");
    EXPECT_FALSE(isQuiet);
    slave.send(QByteArray::fromHex("010302002A399B"));
    ASSERT_TRUE(waitUntil([this]() { return isQuiet; }));
    EXPECT_EQ(received.size(), 8);
    EXPECT_EQ(session->views().front().quality(), Quality::good);
    EXPECT_EQ(number(session->views().front()), 42);
}

TEST_F(FinishingOnALine, TellsTheOutcomeOfAWriteThatIsOut)
{
    openWith(minutes(10));
    holdReplies();
    session->write(wordWrite("R_W", 10, 7), outcome(1));
    session->write(wordWrite("R_W", 30, 7), outcome(2));
    ASSERT_TRUE(waitForRequests(1));
    finish();
    slave.send(received);
    ASSERT_TRUE(waitUntil([this]() { return isQuiet; }));
    EXPECT_EQ(outcomes, (std::map<int, std::string>{{1, "accepted"}}));
    session->close("interrupted");
    EXPECT_EQ(outcomes[2], "interrupted");
}

TEST_F(FinishingOnALine, DoesNotWaitForASilentStationForEver)
{
    openWith(minutes(10));
    holdReplies();
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitForRequests(1));
    finish();
    EXPECT_TRUE(waitUntil([this]() { return isQuiet; }));
    EXPECT_EQ(received.size(), 8);
}

TEST_F(FinishingOnALine, DoesNotWaitForAPortThatIsAway)
{
    openWith(minutes(10));
    holdReplies();
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitForRequests(1));
    bool isAway = false;
    QObject::connect(session.get(), &Session::portChanged, session.get(),
                     [&isAway](bool open, const std::string&) { isAway = !open; });
    slave.unplug();
    ASSERT_TRUE(waitUntil([&isAway]() { return isAway; }));
    finish();
    EXPECT_TRUE(waitUntil([this]() { return isQuiet; }));
}

TEST_F(FinishingOnALine, ComesWithTheLastOfTheCyclesThatWereAskedFor)
{
    beAController();
    session->watch({words("R_W", 10), words("R_W", 500)});
    session->finishAfterCycles(3, [this]() { isQuiet = true; });
    ASSERT_TRUE(waitUntil([this]() { return isQuiet; }));
    EXPECT_EQ(requests, 6);
}

TEST_F(FinishingOnALine, IsOverWhenTheLineIsOpenedAgain)
{
    finish();
    ASSERT_TRUE(waitUntil([this]() { return isQuiet; }));
    ASSERT_TRUE(session->open(line).accepted);
    beAController();
    session->readOnce(words("R_W", 10), outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(outcomes[1], "accepted");
}

} // namespace

} // namespace dov417
