// Bytes that come and come and are no reply, as from a second master, an open pair of wires or a
// station at another speed: nothing is waited for on their account without end.
#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const char* const wordReply = "01030211AA";
// What a request may take on a line of which nothing is known: see Exchange::isBabble().
constexpr seconds maxBabbled(5);

class Babble : public ::testing::Test {
protected:
    // A byte so often, until the request has ended. So long it took.
    Clock::duration babble(Clock::duration each)
    {
        const Clock::time_point begin = line.now;
        while (!line.ended && line.now < begin + seconds(60)) {
            line.come("55");
            ++came;
            line.pass(each);
        }
        return line.now - begin;
    }

    int strayBytes() const
    {
        int bytes = 0;
        for (const Stray& stray : line.strays)
            bytes += static_cast<int>(stray.bytes.size());
        return bytes;
    }

    HandLine line;
    int came = 0;
};

class BabbleEachSoMany : public Babble, public ::testing::WithParamInterface<int> {};

TEST_P(BabbleEachSoMany, EndsARequestWithItsReason)
{
    line.start();
    line.ask(readOf100, 7);
    EXPECT_LT(babble(milliseconds(GetParam())), maxBabbled);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.reason(), "no answer: " + std::to_string(came) +
                                 " bytes came, but no frame; looks like another speed or parity");
    EXPECT_EQ(strayBytes(), came) << "all of them are in the log";
}

TEST_P(BabbleEachSoMany, EndsTheWaitForAStationThatIsListenedTo)
{
    line.start();
    line.ask(readOf100, 7);
    line.pass(milliseconds(600));
    ASSERT_TRUE(line.ended.has_value());
    line.ask(readOf100, 7);
    ASSERT_EQ(line.sent.size(), 1U) << "it is listened to";
    EXPECT_LT(babble(milliseconds(GetParam())), 2 * maxBabbled);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.sent.size(), 2U);
    EXPECT_EQ(strayBytes(), came);
}

// Another station has its turn.
TEST_P(BabbleEachSoMany, EndsTheWaitOfARequestThatIsHeldBack)
{
    line.settings.timeout.isFixed = true;
    line.settings.mayMark = false;
    line.start();
    line.ask(writeOf5, 8);
    line.pass(milliseconds(600));
    line.ask("010600050008", 8); // the answer to the one before would be taken for its own
    EXPECT_LT(babble(milliseconds(GetParam())), maxBabbled);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::heldBack);
    EXPECT_EQ(line.sent.size(), 2U) << "and the read that was to end the doubt";
}

TEST_P(BabbleEachSoMany, DoesNotKeepAReplyThatIsHeldBack)
{
    line.start();
    for (int i = 0; i < 3; ++i) {
        line.ask(readOf100, 7);
        line.pass(milliseconds(400));
        line.comeWhole(wordReply);
        line.pass(milliseconds(20));
    }
    line.ask(readOf100, 7);
    line.comeWhole(wordReply); // too soon
    ASSERT_FALSE(line.ended.has_value());
    EXPECT_LT(babble(milliseconds(GetParam())), maxBabbled);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(strayBytes(), came);
}

INSTANTIATE_TEST_SUITE_P(Milliseconds, BabbleEachSoMany, ::testing::Values(1, 20, 90),
                         ::testing::PrintToStringParamName());

TEST_F(Babble, IsNoReplyHoweverSlowlyItsBytesCome)
{
    line.start();
    constexpr int words = 125;
    line.ask("01030000007D", 5 + 2 * words);
    const QByteArray whole = withCrc(QByteArray::fromHex("0103FA") + QByteArray(2 * words, '\x11'));
    for (const char byte : whole) {
        line.pass(milliseconds(40)); // ten seconds in all
        line.exchange->bytesCame(QByteArray(1, byte), line.now);
    }
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.bytes, whole);
}

} // namespace

} // namespace dov417
