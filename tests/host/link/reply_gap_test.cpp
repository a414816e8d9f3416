#include "link/reply_gap.h"

#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// Two registers of station 1.
const char* const twoRegisters = "0103050A0002";
constexpr int twoRegistersDue = 9;

class AReplyWithAPause : public ::testing::Test {
protected:
    AReplyWithAPause()
    {
        whole = withCrc(QByteArray::fromHex("01030400070008")).toHex();
        line.start();
    }
    // The request and the front of its reply.
    void askAndHear(int bytes)
    {
        line.ask(twoRegisters, twoRegistersDue);
        line.pass(milliseconds(20));
        line.come(whole.left(2 * bytes).constData());
    }
    void hearTheRestAfter(int bytes)
    {
        line.come(whole.mid(2 * bytes).constData());
    }

    HandLine line;
    QByteArray whole; // in hex
};

TEST_F(AReplyWithAPause, IsWaitedForLongerOnceOneWentOnAfterItsEnd)
{
    askAndHear(4);
    line.pass(milliseconds(150));
    EXPECT_EQ(line.reason(), "reply cut short: 4 of 9 bytes");
    hearTheRestAfter(4);
    line.pass(seconds(1));

    askAndHear(4);
    line.pass(milliseconds(290)); // twice the pause is 300 ms
    EXPECT_EQ(line.reason(), "under way");
    hearTheRestAfter(4);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.bytes.toHex(), whole);
}

TEST_F(AReplyWithAPause, IsTakenWholeAlsoWhereItIsSoLateThatItsRequestIsAboutToBeRepeated)
{
    line.ask(twoRegisters, twoRegistersDue);
    line.pass(milliseconds(520));
    EXPECT_EQ(line.reason(), "no answer: no byte came");
    line.ask(twoRegisters, twoRegistersDue);
    line.pass(milliseconds(20));
    line.come(whole.left(8).constData());
    line.pass(milliseconds(90)); // of 100 ms
    hearTheRestAfter(4);
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.bytes.toHex(), whole);
    EXPECT_EQ(line.sent.size(), 1U) << "not sent into the reply";
}

TEST_F(AReplyWithAPause, IsWaitedForNoLongerWhereWhatCameLaterWasNotItsRest)
{
    askAndHear(4);
    line.pass(milliseconds(150));
    line.come("0007000800");
    line.pass(seconds(1));
    askAndHear(4);
    line.pass(milliseconds(150));
    ASSERT_TRUE(line.ended.has_value());
    EXPECT_EQ(line.ended->reception.bytes.size(), 4);
}

TEST(AReplyGap, GrowsByRestsThatComeByteByByte)
{
    ReplyGap gap{milliseconds(100)};
    const QByteArray whole = withCrc(QByteArray::fromHex("01030400070008"));
    Clock::time_point now{};
    gap.ended(whole.left(2), 9, now);
    for (int i = 2; i < 9; ++i) {
        now += milliseconds(i == 5 ? 200 : 120);
        gap.came(whole.mid(i, 1), now);
    }
    EXPECT_EQ(gap.value(), milliseconds(400));
}

TEST(AReplyGap, HasAnEnd)
{
    ReplyGap gap{milliseconds(100)};
    const QByteArray whole = withCrc(QByteArray::fromHex("01030400070008"));
    gap.ended(whole.left(2), 9, Clock::time_point());
    gap.came(whole.mid(2), Clock::time_point() + milliseconds(1500));
    EXPECT_EQ(gap.value(), seconds(2));
    ReplyGap other{milliseconds(100)};
    other.ended(whole.left(2), 9, Clock::time_point());
    other.came(whole.mid(2), Clock::time_point() + seconds(3));
    EXPECT_EQ(other.value(), milliseconds(100));
}

TEST(AReplyGap, GrowsToItsEndByRestsThatBeginThen)
{
    ReplyGap gap{milliseconds(100)};
    const QByteArray whole = withCrc(QByteArray::fromHex("01030400070008"));
    gap.ended(whole.left(2), 9, Clock::time_point());
    gap.came(whole.mid(2, 1), Clock::time_point() + seconds(2));
    gap.came(whole.mid(3), Clock::time_point() + seconds(2));
    EXPECT_EQ(gap.value(), seconds(2));
}

TEST(AReplyGap, IsLearnedAlsoAfterAPauseThatWasTooLong)
{
    const QByteArray whole = withCrc(QByteArray::fromHex("01030400070008"));
    ReplyGap gap(milliseconds(100));
    Clock::time_point now{};
    for (const milliseconds pause : {milliseconds(3000), milliseconds(150)}) {
        gap.ended(whole.left(4), twoRegistersDue, now);
        now += pause;
        gap.came(whole.mid(4), now);
    }
    EXPECT_EQ(gap.value(), milliseconds(300));
}

} // namespace

} // namespace dov417
