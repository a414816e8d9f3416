// A station that has answered an echo, and is slow to do so once the port was away: what another
// program has asked meanwhile looks like the answers to the reads of a station without function 8.
#include <gtest/gtest.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const char* const readOfStation2 = "020300640001";

class AStationThatHasAnsweredAnEcho : public ::testing::Test {
protected:
    AStationThatHasAnsweredAnEcho()
    {
        line.settings.isShared = true;
    }

    void answerWith(char station)
    {
        const QByteArray sent = line.sent.back();
        line.exchange->bytesCame(
            sent.at(1) == 8 ? sent
                            : withCrc(QByteArray(1, station) + QByteArray::fromHex("03020007")),
            line.now);
        line.pass(milliseconds(10));
    }
    void askAndAnswer(const char* read)
    {
        line.askRead(read, 1);
        answerWith(read[1] - '0');
        answerWith(read[1] - '0');
        ASSERT_TRUE(wasAnswered());
    }
    void losePort(HandLine& next)
    {
        line.exchange->stop();
        line.pass(seconds(40));
        next.now = line.now;
        next.settings.isShared = true;
        next.start();
    }
    // Nothing is answered in time; then what another program has asked is.
    static void expectOnlyItsEchoTells(HandLine& next)
    {
        const std::size_t before = next.sent.size();
        for (int i = 0; i < 40 && next.sent.size() < before + 4; ++i) {
            if (i == 0 || next.ended)
                next.askRead(readOf100, 1);
            next.pass(milliseconds(500));
        }
        ASSERT_EQ(next.sent.size(), before + 4);
        for (std::size_t i = before; i < next.sent.size(); ++i)
            EXPECT_EQ(next.sent[i].at(1), 8) << "no read tells";
        next.comeWhole("01030400010002");
        next.comeWhole("0103020003");
        next.comeWhole("010306000400050006");
        EXPECT_FALSE(next.ended && next.ended->reception.result == LineResult::reply);
        const QByteArray first = next.sent[before];
        next.exchange->bytesCame(first, next.now);
        EXPECT_EQ(next.doubts, 0);
    }
    bool wasAnswered() const
    {
        return line.ended && line.ended->reception.result == LineResult::reply;
    }

    HandLine line;
};

TEST_F(AStationThatHasAnsweredAnEcho, IsWaitedForOnceThePortIsBack)
{
    line.start();
    askAndAnswer(readOf100);
    losePort(line);
    expectOnlyItsEchoTells(line);
}

TEST_F(AStationThatHasAnsweredAnEcho, IsWaitedForWhereItHasRefusedOne)
{
    line.start();
    line.askRead(readOf100, 1);
    line.comeWhole("018801");
    line.pass(milliseconds(10));
    answerWith(1);
    ASSERT_TRUE(wasAnswered());
    losePort(line);
    expectOnlyItsEchoTells(line);
}

TEST_F(AStationThatHasAnsweredAnEcho, IsWaitedForOnTheNextLine)
{
    line.start();
    askAndAnswer(readOf100);
    HandLine next;
    next.exchange->awaitLate(line.exchange->books());
    losePort(next);
    expectOnlyItsEchoTells(next);
}

TEST_F(AStationThatHasAnsweredAnEcho, IsWaitedForWhereTheAdapterWasKnownBefore)
{
    line.start();
    askAndAnswer(readOfStation2);
    askAndAnswer(readOf100);
    losePort(line);
    expectOnlyItsEchoTells(line);
}

// No other program's reply comes any more then.
TEST_F(AStationThatHasAnsweredAnEcho, IsShownAfterTheHorizonWhereAnotherIsInItsPlace)
{
    line.start();
    askAndAnswer(readOf100);
    losePort(line);
    line.pass(seconds(40));
    line.askRead(readOf100, 1);
    EXPECT_EQ(line.sent.back(), withCrc(QByteArray::fromHex(readOf100)));
    answerWith(1);
    line.pass(milliseconds(600)); // it has never been so quick
    EXPECT_TRUE(wasAnswered());
}

// It says nothing to an echo, and one of its replies is lost.
TEST_F(AStationThatHasAnsweredAnEcho, IsAskedForReadsAfterTheHorizonWhereAnotherIsInItsPlace)
{
    line.settings.timeout.isFixed = true;
    line.start();
    askAndAnswer(readOf100);
    losePort(line);
    line.pass(seconds(40));
    line.askRead(readOf200, 1);
    line.pass(milliseconds(600));
    std::size_t heard = line.sent.size();
    for (const auto end = line.now + seconds(10); line.now < end && !wasAnswered();
         line.pass(milliseconds(10))) {
        if (line.ended)
            line.askRead(readOf100, 1);
        for (; heard < line.sent.size(); ++heard) {
            const int words = line.sent[heard].at(5);
            if (line.sent[heard].at(1) == 3)
                line.exchange->bytesCame(
                    withCrc(QByteArray::fromHex("0103").append(static_cast<char>(2 * words)) +
                            QByteArray(2 * words, 7)),
                    line.now);
        }
    }
    EXPECT_TRUE(wasAnswered());
}

TEST_F(AStationThatHasAnsweredAnEcho, IsSentNoneWhereFunction8IsForbidden)
{
    line.start();
    askAndAnswer(readOf100);
    line.settings.mayMark = false;
    losePort(line);
    const std::size_t before = line.sent.size();
    line.askRead(readOf100, 1);
    line.comeWhole("01030400010002"); // a read of two registers goes before
    line.pass(milliseconds(10));
    line.comeWhole("010306000400050006");
    line.pass(milliseconds(10));
    answerWith(1);
    EXPECT_TRUE(wasAnswered());
    ASSERT_EQ(line.sent.size(), before + 3);
    for (std::size_t i = before; i < line.sent.size(); ++i)
        EXPECT_EQ(line.sent[i].at(1), 3);
}

// What an adapter hears of its own sending is none.
TEST_F(AStationThatHasAnsweredAnEcho, IsNotOneWhereOnlyTheAdapterHasHeardIt)
{
    line.start();
    line.askRead(readOf100, 1);
    std::size_t heard = 0;
    const auto passWithEcho = [&](milliseconds time) {
        for (const auto end = line.now + time; line.now < end; line.pass(milliseconds(1)))
            for (; heard < line.sent.size(); ++heard)
                line.exchange->bytesCame(line.sent[heard], line.now);
    };
    passWithEcho(seconds(20)); // the first read tells that it does
    EXPECT_FALSE(line.exchange->books().hasAnsweredEcho(1));
    for (int i = 0; i < 4 && !line.exchange->books().hasAnsweredEcho(1); ++i) {
        line.askRead(readOf100, 1);
        passWithEcho(milliseconds(1));
        if (line.sent.back().at(1) == 8)
            answerWith(1);
        passWithEcho(seconds(20));
    }
    EXPECT_TRUE(line.exchange->books().hasAnsweredEcho(1)) << "the station's own";
}

} // namespace

} // namespace dov417
