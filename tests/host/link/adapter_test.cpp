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

// What an adapter hears of a request may be here only behind the request's end.
class AnEchoThatIsLate : public ::testing::Test {
protected:
    // A read has told that the adapter echoes.
    void startKnown()
    {
        line.settings.timeout.isFixed = true;
        line.start();
        line.askRead("010300000002", 2);
        comesBack();
        line.comeWhole("01030400000000");
        line.pass(milliseconds(10));
        ASSERT_TRUE(line.ended && line.ended->reception.result == LineResult::reply);
    }
    void comesBack()
    {
        line.exchange->bytesCame(line.sent.back(), line.now);
    }

    HandLine line;
};

TEST_F(AnEchoThatIsLate, ConfirmsNoWriteWithTheEchoOfItsRepetition)
{
    line.settings.bytesTakeTime = false; // as over a network
    startKnown();
    line.ask(writeOf5, 8);
    line.pass(milliseconds(510));
    ASSERT_TRUE(line.ended);
    line.ask(writeOf5, 8);
    line.exchange->bytesCame(line.sent.back() + line.sent.back(), line.now);
    line.pass(seconds(5));
    EXPECT_NE(line.ended->reception.result, LineResult::reply) << "no station is there";
}

TEST_F(AnEchoThatIsLate, AnswersNothingThatWasAskedBefore)
{
    line.settings.mayMark = false;
    startKnown();
    line.askRead(readOf100, 1); // the station is slow
    comesBack();
    line.pass(milliseconds(600));
    ASSERT_TRUE(line.ended);
    line.ask(writeOf5, 8);
    line.come("0106000300070000"); // what was on its way before, garbled
    ASSERT_TRUE(line.ended);
    const QByteArray echo = line.sent.back();
    line.ask("010600050008", 8); // held back, as the other write's reply is out
    line.exchange->bytesCame(echo, line.now);
    line.pass(milliseconds(800));
    if (line.sent.back().at(5) == 8)
        comesBack();
    line.pass(seconds(1));
    line.askRead(readOf200, 1);
    line.pass(milliseconds(10));
    if (line.sent.back() == withCrc(QByteArray::fromHex(readOf200)))
        comesBack();
    line.comeWhole("0103020064"); // of 100
    line.pass(milliseconds(10));
    EXPECT_FALSE(line.ended && line.ended->reception.result == LineResult::reply)
        << "the value of 100 under 200";
}

// Between two requests it is taken for what it is, once: the station's answer looks like it.
TEST_F(AnEchoThatIsLate, IsHeardOnce)
{
    startKnown();
    line.ask(writeOf5, 8);
    line.pass(milliseconds(510));
    ASSERT_TRUE(line.ended);
    line.strays.clear();
    comesBack();
    comesBack();
    ASSERT_EQ(line.strays.size(), 2U);
    EXPECT_EQ(line.strays[0].kind, StrayKind::echo);
    EXPECT_EQ(line.strays[1].kind, StrayKind::late);
    EXPECT_NE(line.strays[1].answers, 0);
}

// At the start what the adapter hears of a marker is taken for the station's answer, until a read
// tells. Then all is open again that it had closed, not that marker alone.
TEST_F(AnAdapterThatEchoes, HasEndedNoneOfTheRequestsThatItSeemedToAnswer)
{
    line.start();
    const auto comesBack = [this]() {
        line.exchange->bytesCame(line.sent.back(), line.now);
        line.pass(milliseconds(10));
    };
    const auto passUntilSent = [this]() {
        const std::size_t before = line.sent.size();
        for (int i = 0; i < 5000 && line.sent.size() == before; ++i)
            line.pass(milliseconds(1));
    };
    line.askRead(readOf100, 1);
    QByteArray garbled = line.sent.back(); // the first marker, as it is heard
    ASSERT_EQ(garbled.at(1), 8);
    garbled[7] = static_cast<char>(garbled.at(7) ^ 1);
    line.exchange->bytesCame(garbled, line.now);
    passUntilSent();
    ASSERT_EQ(line.sent.back().at(1), 8);
    comesBack(); // the second, which the station has not answered
    ASSERT_EQ(line.sent.back(), withCrc(QByteArray::fromHex(readOf100)));
    comesBack(); // so that is known now
    for (int i = 0; i < 5000 && !line.ended; ++i)
        line.pass(milliseconds(1));
    ASSERT_TRUE(line.ended);
    line.askRead(readOf200, 1);
    passUntilSent();
    ASSERT_EQ(line.sent.back().at(1), 8);
    comesBack();
    line.comeWhole("018801"); // no function 8, and slow: to the first marker
    line.pass(milliseconds(5));
    line.comeWhole("018801"); // to the second
    line.pass(milliseconds(10));
    if (line.sent.back() == withCrc(QByteArray::fromHex(readOf200)))
        comesBack();
    line.comeWhole("0103020064"); // of 100
    line.pass(milliseconds(10));
    EXPECT_FALSE(wasAnswered()) << "the value of 100 under 200";
}

TEST_F(AnAdapterThatEchoes, ConfirmsNoWriteByItselfOnceItsPlugIsInBehindTheMarker)
{
    line.start();
    line.ask(writeOf5, 8);
    passInSilence(milliseconds(700)); // not even the marker is heard
    passWithEcho(seconds(20));
    ASSERT_TRUE(line.ended);
    EXPECT_FALSE(wasAnswered());
}

TEST_F(AnAdapterThatEchoes, ConfirmsNoWriteByItselfBehindGarbledMarkers)
{
    line.start();
    line.ask(writeOf5, 8);
    for (const auto end = line.now + seconds(30); line.now < end && !line.ended;) {
        for (; heard < line.sent.size(); ++heard) {
            QByteArray echo = line.sent[heard];
            if (echo.at(1) != 6)
                echo[7] = static_cast<char>(echo.at(7) ^ 1);
            line.exchange->bytesCame(echo, line.now);
        }
        line.pass(milliseconds(1));
    }
    ASSERT_TRUE(line.ended);
    EXPECT_FALSE(wasAnswered());
}

class AnAdapterThatEchoesAndMay : public AnAdapterThatEchoes,
                                  public ::testing::WithParamInterface<bool> {};

// Reads of one word and of two are out from the last line: there is no marker that could not be
// taken for one of them.
TEST_P(AnAdapterThatEchoesAndMay, ConfirmNoWriteByItselfWhereNoReadCanGoBeforeIt)
{
    HandLine last;
    last.settings.timeout.isFixed = true;
    last.start();
    for (const int words : {1, 2}) {
        last.askRead(words == 1 ? readOf100 : "010300640002", words);
        last.pass(milliseconds(600));
    }
    line.now = last.now + seconds(1);
    line.exchange->awaitLate(last.exchange->books());
    line.settings.mayMark = GetParam();
    line.start();
    line.ask(writeOf5, 8);
    passWithEcho(seconds(20));
    EXPECT_FALSE(wasAnswered());
}

INSTANTIATE_TEST_SUITE_P(UseFunction8, AnAdapterThatEchoesAndMay, ::testing::Bool(),
                         ::testing::PrintToStringParamName());

TEST_F(AnEchoThatIsLate, IsNoMeasureOfTheStationsTime)
{
    line.start();
    for (int i = 0; i < 3; ++i) {
        line.askRead(readOf100, 1);
        line.pass(milliseconds(3));
        comesBack();
        line.pass(milliseconds(400));
        line.comeWhole("0103020064");
        line.pass(milliseconds(10));
        ASSERT_TRUE(line.ended && line.ended->reception.result == LineResult::reply);
    }
    ASSERT_EQ(line.exchange->stationTimes().size(), 1U);
    EXPECT_GT(line.exchange->stationTimes().front().last, milliseconds(300));
}

// The echo of the first read was to tell. Its reply may be another program's.
TEST_F(AnAdapterThatEchoes, ShowsNoReplyBehindAFirstEchoThatIsGarbled)
{
    line.start();
    line.askRead(readOf100, 1);
    line.exchange->bytesCame(line.sent.back(), line.now);
    line.pass(milliseconds(10));
    ASSERT_EQ(line.sent.size(), 2U);
    line.come("019F10020001210A");
    line.pass(milliseconds(300));
    line.comeWhole("01030203E8"); // what another program has asked for just before
    line.pass(milliseconds(10));
    EXPECT_FALSE(wasAnswered());
}

} // namespace

} // namespace dov417
