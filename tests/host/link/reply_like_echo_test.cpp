// A reply may begin with its own request: two registers at 0x0400 that hold 0x000002C5. An adapter
// that hears what it sends makes the same of every reply.
#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const char* const readOfTwo = "010304000002";
const char* const replyLikeEcho = "010304000002C5";

class AReplyLikeItsEcho : public ::testing::TestWithParam<bool> {
protected:
    AReplyLikeItsEcho()
    {
        line.settings.isShared = true;
    }

    bool echoes() const
    {
        return GetParam();
    }
    // What the station says of it; of all other registers the value is 7.
    QByteArray replyTo(const QByteArray& request) const
    {
        if (request.at(1) == 8)
            return request;
        if (request == withCrc(QByteArray::fromHex(readOfTwo)))
            return withCrc(QByteArray::fromHex(replyLikeEcho));
        QByteArray reply = request.left(2);
        reply.append(static_cast<char>(2 * request.at(5)));
        for (int i = 0; i < request.at(5); ++i)
            reply.append('\0').append('\7');
        return withCrc(reply);
    }
    // Everything that goes out is answered, but for the first so many.
    void passWithAnswers(milliseconds time, int silentFor = 0)
    {
        for (const auto end = line.now + time; line.now < end; line.pass(milliseconds(1))) {
            for (; heard < line.sent.size(); ++heard) {
                const QByteArray sent = line.sent[heard];
                if (echoes())
                    line.exchange->bytesCame(sent, line.now);
                if (silentFor-- <= 0 && (knowsFunction8 || sent.at(1) != 8))
                    line.exchange->bytesCame(replyTo(sent), line.now);
            }
        }
    }
    void expectTheValue()
    {
        ASSERT_TRUE(line.ended.has_value());
        EXPECT_EQ(line.ended->reception.result, LineResult::reply);
        EXPECT_EQ(line.ended->reception.bytes, withCrc(QByteArray::fromHex(replyLikeEcho)));
    }

    HandLine line;
    std::size_t heard = 0;
    bool knowsFunction8 = true;
};

TEST_P(AReplyLikeItsEcho, IsShownWhereItIsTheFirstThatIsAsked)
{
    line.start();
    line.askRead(readOfTwo, 2);
    passWithAnswers(seconds(2));
    expectTheValue();
}

TEST_P(AReplyLikeItsEcho, IsShownWithoutFunction8)
{
    line.settings.mayMark = false;
    line.start();
    line.askRead(readOfTwo, 2);
    passWithAnswers(seconds(2));
    expectTheValue();
}

// The read that tells of the adapter is none of the two that such a station is to answer.
TEST_P(AReplyLikeItsEcho, IsShownWhereNothingIsSaidToAnEcho)
{
    knowsFunction8 = false;
    line.settings.timeout.isFixed = true;
    line.start();
    line.askRead(readOfTwo, 2);
    passWithAnswers(seconds(5));
    expectTheValue();
}

TEST_P(AReplyLikeItsEcho, CostsNothingOnceAnotherReadHasTold)
{
    line.start();
    for (int i = 0; i < 2; ++i) { // the first may only tell of the adapter
        line.askRead(readOf100, 1);
        passWithAnswers(seconds(2));
    }
    ASSERT_TRUE(line.ended && line.ended->reception.result == LineResult::reply);
    for (int i = 0; i < 3; ++i) {
        const std::size_t before = line.sent.size();
        line.askRead(readOfTwo, 2);
        passWithAnswers(milliseconds(50));
        expectTheValue();
        EXPECT_EQ(line.sent.size(), before + 1);
    }
}

// Whether it echoes is not known then: it may be another adapter.
TEST_P(AReplyLikeItsEcho, IsShownAgainOnceThePortIsBack)
{
    line.start();
    line.askRead(readOfTwo, 2);
    passWithAnswers(seconds(2));
    line.exchange->stop();
    line.pass(seconds(40));
    line.start();
    heard = line.sent.size();
    line.askRead(readOfTwo, 2);
    passWithAnswers(seconds(2));
    expectTheValue();
}

TEST_P(AReplyLikeItsEcho, IsShownOnceAStationThatWasSilentAnswers)
{
    line.start();
    for (int i = 0; i < 3 && !(line.ended && line.ended->reception.result == LineResult::reply);
         ++i) {
        line.askRead(readOfTwo, 2);
        passWithAnswers(seconds(60), i == 0 ? 100 : 0);
    }
    expectTheValue();
}

// Nor does it keep a write from being confirmed.
TEST_P(AReplyLikeItsEcho, TellsNothingOfTheAdapter)
{
    line.start();
    line.askRead(readOfTwo, 2);
    passWithAnswers(seconds(2));
    line.ask(writeOf5, 8);
    if (echoes())
        line.comeWhole(writeOf5);
    ASSERT_FALSE(line.ended.has_value());
    line.comeWhole(writeOf5);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.result, LineResult::reply);
}

INSTANTIATE_TEST_SUITE_P(OnAnAdapterThatEchoes, AReplyLikeItsEcho, ::testing::Bool(),
                         ::testing::PrintToStringParamName());

// Where nothing has told, the front is an adapter's: the value is not known, and nothing is learnt.
TEST(AFrontLikeAnEcho, IsNoReplyWhereNothingHasTold)
{
    ReplyCollector collector;
    const QByteArray request = withCrc(QByteArray::fromHex(readOfTwo));
    collector.begin(request, 9);
    collector.sent();
    EXPECT_EQ(collector.add(withCrc(QByteArray::fromHex(replyLikeEcho))), Arrival::incomplete);
    EXPECT_EQ(collector.endOfFrame(), Arrival::incomplete);
    EXPECT_FALSE(collector.knowsAdapter());
    EXPECT_FALSE(collector.echoes());
}

} // namespace

} // namespace dov417
