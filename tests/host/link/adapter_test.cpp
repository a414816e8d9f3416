// Two-wire adapters that hear what they send: nothing of that is a station's reply.
#include <gmock/gmock.h>

#include "hand_line.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class AnAdapterThatEchoes : public ::testing::Test {
protected:
    AnAdapterThatEchoes()
    {
        line.settings.isShared = true;
    }

    // Everything that goes out comes back, behind what a driver that is switched on makes of the
    // line.
    void passWithEcho(milliseconds time, const char* glitch = "")
    {
        for (const auto end = line.now + time; line.now < end;) {
            for (; heard < line.sent.size(); ++heard)
                line.exchange->bytesCame(QByteArray::fromHex(glitch) + line.sent[heard], line.now);
            line.pass(milliseconds(1));
        }
    }
    // What goes out is not heard: the plug is out.
    void passInSilence(milliseconds time)
    {
        line.pass(time);
        heard = line.sent.size();
    }
    bool wasAnswered() const
    {
        return line.ended && line.ended->reception.result == LineResult::reply;
    }

    HandLine line;
    std::size_t heard = 0;
};

TEST_F(AnAdapterThatEchoes, ShowsNoLateReplyUnderAnotherAddressBehindAGlitch)
{
    line.start();
    line.askRead(readOf100, 1);
    passWithEcho(seconds(8), "00");
    line.askRead(readOf200, 1);
    passWithEcho(milliseconds(20), "00");
    line.comeWhole("0103020064"); // what the first was asked for
    passWithEcho(milliseconds(200), "00");
    EXPECT_FALSE(wasAnswered());
}

TEST_F(AnAdapterThatEchoes, ConfirmsNoWriteByItselfBehindAGlitch)
{
    line.start();
    line.ask(writeOf5, 8);
    passWithEcho(seconds(20), "00");
    ASSERT_TRUE(line.ended);
    EXPECT_FALSE(wasAnswered());
}

TEST_F(AnAdapterThatEchoes, ConfirmsNoWriteByItselfOnceItsPlugIsIn)
{
    line.start();
    line.askRead(readOf100, 1);
    passInSilence(seconds(40));
    line.ask(writeOf5, 8);
    passWithEcho(seconds(20));
    ASSERT_TRUE(line.ended);
    EXPECT_FALSE(wasAnswered());
}

TEST_F(AnAdapterThatEchoes, ConfirmsNoWriteByItselfInThePlaceOfOneThatDoesNot)
{
    line.start();
    line.askRead(readOf100, 1);
    for (int i = 0; i < 2; ++i) { // the marker, the read
        const QByteArray& sent = line.sent.back();
        if (sent.at(1) == 8)
            line.exchange->bytesCame(sent, line.now);
        else
            line.comeWhole("0103020007");
        line.pass(milliseconds(10));
    }
    ASSERT_TRUE(wasAnswered());
    line.exchange->stop();
    line.pass(seconds(5));
    line.start();
    heard = line.sent.size();
    line.ask(writeOf5, 8);
    passWithEcho(seconds(20));
    ASSERT_TRUE(line.ended);
    EXPECT_FALSE(wasAnswered());
}

TEST_F(AnAdapterThatEchoes, ShowsAStationThatWasOffWhenTheLineWasOpened)
{
    line.start();
    for (int i = 0; i < 4; ++i) {
        line.askRead(readOf100, 1);
        passWithEcho(seconds(20));
        EXPECT_FALSE(wasAnswered());
    }
    line.askRead(readOf100, 1);
    std::size_t answered = heard;
    for (int i = 0; i < 8 && !wasAnswered(); ++i) { // it is on, and answers markers and reads
        passWithEcho(milliseconds(50));
        for (; answered < heard; ++answered) {
            const QByteArray sent = line.sent[answered];
            const int words = sent.at(5);
            if (sent.at(1) == 8)
                line.exchange->bytesCame(sent, line.now);
            else
                line.exchange->bytesCame(withCrc(QByteArray::fromHex("0103") +
                                                 static_cast<char>(2 * words) +
                                                 QByteArray(2 * words, 7)),
                                         line.now);
        }
    }
    EXPECT_TRUE(wasAnswered());
}

} // namespace

} // namespace dov417
