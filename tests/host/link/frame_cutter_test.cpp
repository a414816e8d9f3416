#include "link/frame_cutter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "line/crc16.h"

namespace dov417 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Clock::time_point firstCame = Clock::time_point() + std::chrono::hours(1);

QByteArray sound(const char* withoutCrc)
{
    return withCrc(QByteArray::fromHex(withoutCrc));
}

// A frame as its hex, noise with "noise " before it.
std::vector<std::string> texts(const std::vector<Piece>& pieces)
{
    std::vector<std::string> all;
    for (const Piece& piece : pieces)
        all.push_back((piece.isFrame ? "" : "noise ") + piece.bytes.toHex().toStdString());
    return all;
}

std::string hexOf(const QByteArray& bytes)
{
    return bytes.toHex().toStdString();
}

class ACutter : public ::testing::Test {
protected:
    std::vector<std::string> add(const QByteArray& bytes)
    {
        return texts(cutter.add(bytes, firstCame));
    }
    std::vector<std::string> silence()
    {
        return texts(cutter.endOfFrame());
    }
    FrameCutter cutter;
    const QByteArray request = sound("01 03 05 0A 00 01");
    const QByteArray reply = sound("01 03 02 00 2A");
};

TEST_F(ACutter, KnowsAFrameWithItsLastByte)
{
    for (int i = 0; i < request.size() - 1; ++i)
        ASSERT_THAT(add(request.mid(i, 1)), IsEmpty());
    EXPECT_THAT(add(request.right(1)), ElementsAre(hexOf(request)));
    EXPECT_TRUE(cutter.isEmpty());
}

TEST_F(ACutter, CutsWhatAnAdapterHandsOverAtOnce)
{
    EXPECT_THAT(add(request + reply + request),
                ElementsAre(hexOf(request), hexOf(reply), hexOf(request)));
}

TEST_F(ACutter, KnowsTheLongestReplyAlthoughItsCountSaysNothing)
{
    const QByteArray longest = withCrc(QByteArray::fromHex("010300") + QByteArray(256, 7));
    EXPECT_THAT(add(longest.left(200)), IsEmpty());
    EXPECT_THAT(add(longest.mid(200) + request), ElementsAre(hexOf(longest), hexOf(request)));
}

TEST_F(ACutter, TakesAFunctionThatTellsNoLengthWhenItIsSound)
{
    const QByteArray identify = sound("01 2B 0E 01 00");
    EXPECT_THAT(add(identify.left(4)), IsEmpty());
    EXPECT_THAT(add(identify.mid(4)), ElementsAre(hexOf(identify)));
}

TEST_F(ACutter, CutsTwoFramesThatTellNoLengthOnceTheLineIsSilent)
{
    const QByteArray identify = sound("01 2B 0E 01 00");
    const QByteArray answer = sound("01 2B 0E 01 01 00 00 01 00 02 41 42");
    EXPECT_THAT(add(identify + answer), IsEmpty());
    EXPECT_THAT(silence(), ElementsAre(hexOf(identify), hexOf(answer)));
}

TEST_F(ACutter, LeavesOutTheNoiseBeforeAFrame)
{
    EXPECT_THAT(add(QByteArray::fromHex("FF00") + request),
                ElementsAre("noise ff00", hexOf(request)));
}

TEST_F(ACutter, LeavesOutAGarbledReplyWhenTheNextRequestHasCome)
{
    QByteArray garbled = reply;
    garbled[4] = '\x2B';
    EXPECT_THAT(add(garbled), IsEmpty());
    EXPECT_THAT(add(request), ElementsAre("noise " + hexOf(garbled), hexOf(request)));
}

TEST_F(ACutter, GivesUpWhatDoesNotGrow)
{
    EXPECT_THAT(add(request.left(5)), IsEmpty());
    EXPECT_THAT(silence(), ElementsAre("noise 0103050a00"));
    EXPECT_THAT(add(request), ElementsAre(hexOf(request)));
}

TEST_F(ACutter, KeepsNoMoreThanItNeedsOfALineOfAnotherSpeed)
{
    std::size_t noise = 0;
    for (int i = 0; i < 1000; ++i)
        for (const Piece& piece : cutter.add(QByteArray::fromHex("FFFEFDFCFB"), firstCame)) {
            EXPECT_FALSE(piece.isFrame);
            noise += static_cast<std::size_t>(piece.bytes.size());
        }
    EXPECT_GE(noise, 5000U - 1024U);
}

TEST_F(ACutter, TellsWhenTheLastByteOfEachCame)
{
    using std::chrono::milliseconds;
    cutter.add(request.left(3), firstCame);
    const auto pieces = cutter.add(request.mid(3) + reply.left(2), firstCame + milliseconds(10));
    ASSERT_EQ(pieces.size(), 1U);
    EXPECT_EQ(pieces.front().at, firstCame + milliseconds(10));
    const auto rest = cutter.add(reply.mid(2), firstCame + milliseconds(20));
    ASSERT_EQ(rest.size(), 1U);
    EXPECT_EQ(rest.front().at, firstCame + milliseconds(20));
}

} // namespace

} // namespace dov417
