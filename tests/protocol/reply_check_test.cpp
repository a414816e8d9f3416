#include "protocol/reply_check.h"

#include <gtest/gtest.h>

#include "made_records.h"

namespace {

class ReplyChecked : public ::testing::Test {
protected:
    // The frame awaits a reply of this length with this many values.
    void await(int replyLength, int dataCount)
    {
        awaiting.replyLength = replyLength;
        awaiting.dataCount = dataCount;
    }
    int check(const QByteArray& reply) const
    {
        return checkReply(awaiting, reinterpret_cast<const unsigned char*>(reply.constData()),
                          static_cast<int>(reply.size()));
    }

    FRAME_PRO awaiting = FRAME_PRO();
};

const char* const oneRegister = "01 03 02 12 34";

TEST_F(ReplyChecked, NothingReceivedIsGoodWhereNothingIsAwaited)
{
    await(0, 0);
    EXPECT_EQ(check(QByteArray()), 2);
    EXPECT_EQ(checkReply(awaiting, nullptr, 0), 2);
}

TEST_F(ReplyChecked, NothingReceivedIsBadWhereAReplyIsAwaited)
{
    await(7, 1);
    EXPECT_EQ(check(QByteArray()), 0);
    EXPECT_EQ(checkReply(awaiting, nullptr, 0), 0);
}

TEST_F(ReplyChecked, AnyReplyIsBadWhereNothingIsAwaited)
{
    await(0, 0);
    EXPECT_EQ(check(withCrc(oneRegister)), 0);
    EXPECT_EQ(check(hex("00")), 0);
}

TEST_F(ReplyChecked, ReplyOfTheRightLengthAndCrcIsGoodWithDataWhereTheFrameReads)
{
    await(7, 1);
    EXPECT_EQ(check(withCrc(oneRegister)), 1);
    EXPECT_EQ(check(hex("01 03 02 12 34 B5 33")), 1);
}

TEST_F(ReplyChecked, ReplyOfTheRightLengthAndCrcIsGoodWithoutDataWhereTheFrameWrites)
{
    await(8, 0);
    EXPECT_EQ(check(withCrc("01 06 05 0A 12 34")), 2);
}

TEST_F(ReplyChecked, AnyCountAboveZeroMeansData)
{
    for (int count : {1, 2, 128, 65536}) {
        await(7, count);
        EXPECT_EQ(check(withCrc(oneRegister)), 1) << count;
    }
}

TEST_F(ReplyChecked, ReplyOfEveryOtherLengthIsBad)
{
    for (int awaited : {5, 7, 8, 9, 255, 261}) {
        for (int length = 1; length <= 300; ++length) {
            await(awaited, 1);
            const QByteArray reply =
                length < 2 ? QByteArray(length, 'x') : withCrc(QByteArray(length - 2, 'x'));
            ASSERT_EQ(check(reply), length == awaited ? 1 : 0)
                << length << " received, " << awaited << " awaited";
        }
    }
}

TEST_F(ReplyChecked, ReplyWithAnyFlippedBitIsBad)
{
    await(7, 1);
    const QByteArray good = withCrc(oneRegister);
    for (int bit = 0; bit < 7 * 8; ++bit) {
        QByteArray flipped = good;
        flipped[bit / 8] = static_cast<char>(flipped.at(bit / 8) ^ (1 << bit % 8));
        EXPECT_EQ(check(flipped), 0) << "bit " << bit;
    }
}

TEST_F(ReplyChecked, CrcWithItsBytesSwappedIsBad)
{
    await(7, 1);
    EXPECT_EQ(check(hex("01 03 02 12 34 33 B5")), 0);
}

TEST_F(ReplyChecked, ExceptionReplyIsTooShortForARead)
{
    await(7, 1);
    EXPECT_EQ(check(withCrc("01 83 02")), 0);
}

TEST_F(ReplyChecked, StationAndFunctionAreNotCompared)
{
    await(7, 1);
    awaiting.request = request("R_W", 10, 1, 1);
    EXPECT_EQ(check(withCrc("05 03 02 12 34")), 1);
    EXPECT_EQ(check(withCrc("01 83 02 12 34")), 1);
    EXPECT_EQ(check(withCrc("FF FF FF FF FF")), 1);
}

// Such lengths and counts are those of a read of negative length.
TEST_F(ReplyChecked, NothingAnswersAReadOfNegativeLength)
{
    await(3, -1);
    EXPECT_EQ(check(withCrc("01")), 0);
    // What stands before the one byte is none of the reply's.
    unsigned char received[2] = {0xFF, 0xFF};
    await(1, -2);
    EXPECT_EQ(checkReply(awaiting, received + 1, 1), 0);
    await(1, 2147483646); // the length that wraps around to the same
    EXPECT_EQ(checkReply(awaiting, received + 1, 1), 0);
    await(-1, -3);
    EXPECT_EQ(check(QByteArray()), 0);
    EXPECT_EQ(checkReply(awaiting, nullptr, -1), 0);
}

// Two bytes a value and the five around them come to three.
TEST_F(ReplyChecked, NothingAnswersAReadWhoseReplyWouldBeLongerThanCanBeCounted)
{
    await(3, 2147483647);
    EXPECT_EQ(check(withCrc("01")), 0);
}

TEST_F(ReplyChecked, LongReplyThatIsAwaitedIsChecked)
{
    QByteArray reply = withCrc(QByteArray(70000, 'x'));
    await(70002, 1);
    EXPECT_EQ(check(reply), 1);
    reply[69999] = 'y';
    EXPECT_EQ(check(reply), 0);
}

} // namespace
