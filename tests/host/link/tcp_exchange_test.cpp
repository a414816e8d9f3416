#include "link/tcp_exchange.h"

#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <random>

#include "line/crc16.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

int wordAt(const QByteArray& bytes, int index)
{
    return static_cast<unsigned char>(bytes.at(index)) * 256 +
           static_cast<unsigned char>(bytes.at(index + 1));
}

QByteArray twoBytes(int number)
{
    return QByteArray(1, static_cast<char>(number >> 8)).append(static_cast<char>(number & 0xFF));
}

// An exchange whose connection and time are in the hands of the test.
class ATcpExchange : public ::testing::Test {
protected:
    ATcpExchange()
    {
        ExchangeLine line;
        line.write = [this](const QByteArray& bytes) { sent.push_back(bytes); };
        line.bytesWait = [this]() { return bytesWait; };
        line.wakeAt = [this](Clock::time_point when) { wake = when; };
        line.sleep = [this]() { wake = Clock::time_point::max(); };
        line.sent = [](const Transmission&) {};
        line.markerEnded = [](const Transmission&) { FAIL() << "a marker"; };
        line.stray = [this](const Stray& stray) { strays.push_back(stray); };
        line.notice = [this](const std::string& text) { notices.push_back(text); };
        line.doubt = []() { FAIL() << "a doubt"; };
        line.useless = [this]() {
            ++useless;
            exchange->stop();
        };
        exchange = std::make_unique<TcpExchange>(line);
        settings.timeout = {milliseconds(500), seconds(15), false};
        settings.turnaround = milliseconds(100);
        settings.replyGap = milliseconds(500);
        settings.horizon = seconds(30);
        exchange->start(settings, now);
    }

    void ask(const QByteArray& request, int length)
    {
        Transmission transmission;
        transmission.sent = withCrc(request);
        transmission.replyLength = length;
        ended.reset();
        exchange->transact(
            transmission, [this](const Transmission& each) { ended = each; }, now);
    }
    // In hex, without CRC.
    void ask(const char* request, int length)
    {
        ask(QByteArray::fromHex(request), length);
    }

    void pass(Clock::duration time)
    {
        const Clock::time_point until = now + time;
        while (wake <= until) {
            now = std::max(now, wake);
            wake = Clock::time_point::max();
            exchange->timerDue(now);
        }
        now = until;
    }

    // The number of the frame that was sent last, or as many before.
    int mark(std::size_t before = 0) const
    {
        return wordAt(sent.at(sent.size() - 1 - before), 0);
    }

    // In hex, from the unit on.
    void reply(int number, const char* frame)
    {
        const QByteArray bytes = QByteArray::fromHex(frame);
        come(twoBytes(number) + twoBytes(0) + twoBytes(static_cast<int>(bytes.size())) + bytes);
    }

    void come(const QByteArray& bytes)
    {
        exchange->bytesCame(bytes, now);
    }

    std::string reason() const
    {
        return ended ? reasonText(ended->reception, ended->replyLength) : "under way";
    }
    std::string bytes() const
    {
        return ended ? ended->reception.bytes.toHex().toStdString() : "";
    }

    ExchangeSettings settings;
    std::unique_ptr<TcpExchange> exchange;
    Clock::time_point now = Clock::time_point() + std::chrono::hours(1);
    bool bytesWait = false; // at the port, not handed on yet
    Clock::time_point wake = Clock::time_point::max();
    std::vector<QByteArray> sent;
    std::vector<Stray> strays;
    std::vector<std::string> notices;
    int useless = 0;
    std::optional<Transmission> ended;
};

TEST_F(ATcpExchange, SendsTheFrameBehindAHeaderAndMakesTheCrcOfTheReply)
{
    ask("0103050A0001", 7);
    ASSERT_EQ(sent.size(), 1U) << "at once: no silence goes before it";
    EXPECT_EQ(sent.front().mid(2).toHex().toStdString(), "000000060103050a0001");
    reply(mark(), "010302002A");
    ASSERT_TRUE(ended);
    EXPECT_EQ(ended->reception.result, LineResult::reply);
    EXPECT_EQ(bytes(), "010302002a399b");
    EXPECT_TRUE(exchange->wasSound());
}

// On two wires it would be an adapter's echo, and one such value were enough for it to be known.
TEST_F(ATcpExchange, TakesAValueThatLooksLikeItsRequestForAValue)
{
    ask("010304000002", 9);
    reply(mark(), "010304000002C5");
    ASSERT_TRUE(ended);
    EXPECT_EQ(ended->reception.result, LineResult::reply);
    EXPECT_EQ(bytes().substr(0, 14), "010304000002c5");
    ask("010600050007", 8);
    reply(mark(), "010600050007");
    ASSERT_TRUE(ended);
    EXPECT_EQ(ended->reception.result, LineResult::reply);
}

TEST_F(ATcpExchange, NumbersEachFrameAnewAlsoWhereTheNumbersBeginAgain)
{
    std::map<int, int> seen;
    for (int i = 0; i < 0x10000; ++i) {
        ask("0103050A0001", 7);
        ++seen[mark()];
        reply(mark(), "010302002A");
    }
    EXPECT_EQ(seen.size(), 0x10000U);
}

TEST_F(ATcpExchange, TakesAReplyInAnyPieces)
{
    ask("0103050A0001", 7);
    const QByteArray frame = twoBytes(mark()) + QByteArray::fromHex("00000005010302002A");
    for (int i = 0; i < frame.size(); ++i) {
        EXPECT_FALSE(ended);
        come(frame.mid(i, 1));
        pass(milliseconds(150)); // beyond the time-out, but it is under way
    }
    EXPECT_EQ(bytes(), "010302002a399b");
}

TEST_F(ATcpExchange, TakesAnException)
{
    ask("0103050A0001", 7);
    reply(mark(), "018302");
    EXPECT_EQ(reason(), "exception 2 (illegal data address)");
}

TEST_F(ATcpExchange, ThrowsAwayWhatHasAnotherNumberAndCountsItAsLate)
{
    settings.timeout.isFixed = true;
    exchange->start(settings, now);
    ask("0103050A0001", 7);
    pass(milliseconds(500));
    EXPECT_EQ(reason(), "no answer: no byte came");
    ask("0103050B0001", 7);
    reply(mark(1), "0103020001");
    EXPECT_FALSE(ended) << "a late reply of the same shape";
    ASSERT_EQ(strays.size(), 1U);
    EXPECT_EQ(strays.front().kind, StrayKind::late);
    EXPECT_EQ(strays.front().answers, 1);
    reply(mark(), "0103020002");
    EXPECT_EQ(bytes(), withCrc(QByteArray::fromHex("0103020002")).toHex().toStdString());
    EXPECT_EQ(notices, std::vector<std::string>()) << "it took no longer than it is given";

    reply(mark(), "0103020003");
    ASSERT_EQ(strays.size(), 2U) << "the reply once more";
    EXPECT_EQ(strays.back().kind, StrayKind::late);
}

TEST_F(ATcpExchange, EndsWithLateIfThatIsAllThatCame)
{
    settings.timeout.isFixed = true;
    exchange->start(settings, now);
    ask("0103050A0001", 7);
    pass(milliseconds(500));
    ask("0103050B0001", 7);
    reply(mark(1), "0103020001");
    pass(milliseconds(500));
    EXPECT_EQ(reason(), "no answer: only a late reply to an earlier request came");
}

TEST_F(ATcpExchange, ThrowsAwayWhatComesFromAnotherUnit)
{
    ask("0103050A0001", 7);
    reply(mark(), "020302002A");
    EXPECT_FALSE(ended);
    pass(milliseconds(500));
    EXPECT_EQ(reason(), "no answer: another station answered (2)");
}

TEST_F(ATcpExchange, EndsAtOnceWhereTheReplyIsToSomethingElse)
{
    for (const char* const wrong : {"01030400010002", "0104020001", "01030200", "0103020001FF"}) {
        ask("0103050A0001", 7);
        reply(mark(), wrong);
        ASSERT_TRUE(ended) << wrong;
        EXPECT_EQ(ended->reception.result, LineResult::timeout) << wrong;
        EXPECT_EQ(bytes(), "") << wrong;
    }
    EXPECT_EQ(strays.size(), 4U);
}

TEST_F(ATcpExchange, TakesAWriteThatIsConfirmedAsItIsAndHandsOnOneThatIsNot)
{
    ask("0106050A002A", 8);
    reply(mark(), "0106050A002A");
    ASSERT_TRUE(ended);
    EXPECT_EQ(ended->reception.result, LineResult::reply);
    ask("0106050A002A", 8);
    reply(mark(), "0106050A0029");
    EXPECT_EQ(bytes(), withCrc(QByteArray::fromHex("0106050A0029")).toHex().toStdString());
    ask("0106050A002A", 8);
    reply(mark(), "0106050B002A");
    EXPECT_EQ(reason(), "no answer: another request was answered");
}

TEST_F(ATcpExchange, ThrowsAwayWhatIsAnsweredToABroadcast)
{
    ask("0006050A002A", 0);
    reply(mark(), "0006050A002A");
    pass(milliseconds(99));
    EXPECT_FALSE(ended) << "controllers have their time to digest it all the same";
    pass(milliseconds(1));
    ASSERT_TRUE(ended);
    EXPECT_EQ(ended->reception.result, LineResult::broadcast);
    ask("0103050A0001", 7);
    reply(mark(1), "0006050A002A");
    EXPECT_FALSE(ended);
    ASSERT_EQ(strays.size(), 2U);
    EXPECT_EQ(strays.back().kind, StrayKind::late);
}

TEST_F(ATcpExchange, GivesUpNoRequestWhoseReplyLiesAtThePort)
{
    for (const bool comes : {true, false}) {
        ask("0103050A0001", 7);
        bytesWait = true;
        pass(seconds(comes ? 1 : 2)); // once it has taken one, it is given 1.5
        EXPECT_FALSE(ended);
        bytesWait = false; // handed on, or thrown away
        if (comes)
            reply(mark(), "010302002A");
        pass(milliseconds(10));
        ASSERT_TRUE(ended);
        EXPECT_EQ(ended->reception.result, comes ? LineResult::reply : LineResult::timeout);
    }
}

TEST_F(ATcpExchange, GivesUpAConnectionThatSendsSomethingElse)
{
    // The protocol; a length that no frame has.
    for (const char* const wrong : {"000100010005010302002A", "0001000000020103", "00010000FFFF01",
                                    "0001000000FF", "485454502F312E31"}) {
        exchange->start(settings, now);
        ask("0103050A0001", 7);
        useless = 0;
        come(QByteArray::fromHex(wrong));
        EXPECT_EQ(useless, 1) << wrong;
        EXPECT_FALSE(exchange->isRunning());
        EXPECT_FALSE(exchange->wasSound());
    }
    // What is left of it is not taken for the beginning of the next connection's.
    exchange->start(settings, now);
    ask("0103050A0001", 7);
    reply(mark(), "010302002A");
    EXPECT_TRUE(ended);
}

TEST_F(ATcpExchange, TakesTheLongestFrameThereIs)
{
    ask("01030500007D", 255);
    QByteArray data(250, '\x07');
    come(twoBytes(mark()) + QByteArray::fromHex("000000FD0103FA") + data);
    ASSERT_TRUE(ended);
    EXPECT_EQ(ended->reception.bytes, withCrc(QByteArray::fromHex("0103FA") + data));
}

TEST_F(ATcpExchange, WaitsLongerForAStationThatIsSlow)
{
    ask("0103050A0001", 7);
    pass(milliseconds(500));
    ASSERT_TRUE(ended);
    ask("0103050A0001", 7);
    EXPECT_EQ(sent.size(), 1U) << "it has a little longer before it is asked again";
    pass(milliseconds(200));
    reply(mark(), "010302002A");
    EXPECT_EQ(notices, std::vector<std::string>{
                           "station 1 answers after 700 ms: waiting longer from now on"});
    EXPECT_EQ(sent.size(), 2U) << "now it is free";
    pass(milliseconds(700));
    EXPECT_FALSE(ended);
    reply(mark(), "010302002A");
    EXPECT_EQ(bytes(), "010302002a399b");
    EXPECT_EQ(notices.size(), 1U) << "said once";
}

TEST_F(ATcpExchange, IsQuietOnceTheReplyHadItsTime)
{
    EXPECT_LE(exchange->quietAt(), now);
    ask("0106050A002A", 8);
    EXPECT_EQ(exchange->quietAt(), now + milliseconds(500));
    exchange->sendNoMore();
    reply(mark(), "0106050A002A");
    EXPECT_TRUE(ended) << "a write that is out gets its outcome";
    ask("0106050A002A", 8);
    EXPECT_EQ(sent.size(), 1U);
    EXPECT_LE(exchange->quietAt(), now);
}

TEST_F(ATcpExchange, CountsNoTimeOnAWireThatItDoesNotKnow)
{
    ask("0103050A0001", 7);
    reply(mark(), "010302002A");
    ASSERT_TRUE(ended);
    EXPECT_EQ(exchange->wireTime(), Micros(0)) << "shown as the load of the line";
}

// A gateway that answers in any order, late, twice or never, in pieces or several at once.
class AnyGateway : public ATcpExchange {
protected:
    bool by(double share)
    {
        return std::uniform_real_distribution<>(0, 1)(chance) < share;
    }
    int upTo(int high)
    {
        return std::uniform_int_distribution<>(0, high)(chance);
    }

    void serve()
    {
        for (; served < sent.size(); ++served) {
            const QByteArray request = sent.at(served);
            const int address = wordAt(request, 8);
            QByteArray answer = request.left(4) + twoBytes(5) + request.mid(6, 1) +
                                QByteArray::fromHex("0302") + twoBytes(address * 7 & 0xFFFF);
            if (by(0.1))
                answer[6] = static_cast<char>(upTo(3)); // of another unit
            if (by(0.05))
                answer[1] = static_cast<char>(upTo(255)); // with a number of its own
            if (by(0.1))
                answer =
                    request.left(4) + twoBytes(3) + request.mid(6, 1) + QByteArray::fromHex("8306");
            const int copies = by(0.1) ? 0 : by(0.2) ? 2 : 1;
            for (int copy = 0; copy < copies; ++copy)
                due.emplace(now + milliseconds(by(0.5) ? upTo(20) : upTo(4000)), answer);
        }
    }

    void deliver()
    {
        QByteArray bytes;
        while (!due.empty() && due.begin()->first <= now) {
            bytes += due.begin()->second;
            due.erase(due.begin());
        }
        for (int at = 0; at < bytes.size();) {
            const int length = 1 + upTo(30);
            come(bytes.mid(at, length));
            at += length;
        }
    }

    std::mt19937 chance{4711};
    std::size_t served = 0;
    std::multimap<Clock::time_point, QByteArray> due;
};

TEST_F(AnyGateway, NeverBringsAValueUnderAnotherAddress)
{
    int values = 0;
    for (int i = 0; i < 20000; ++i) {
        const int address = upTo(9);
        const int unit = 1 + upTo(2);
        ask(QByteArray(1, static_cast<char>(unit)) + '\x03' + twoBytes(address) + twoBytes(1), 7);
        while (!ended) {
            serve();
            const Clock::time_point next = due.empty() ? wake : std::min(wake, due.begin()->first);
            pass(std::max(Clock::duration(0), next - now));
            deliver();
        }
        if (ended->reception.result != LineResult::reply)
            continue;
        ++values;
        ASSERT_EQ(static_cast<unsigned char>(ended->reception.bytes.at(0)), unit);
        ASSERT_EQ(wordAt(ended->reception.bytes, 3), address * 7);
    }
    EXPECT_GT(values, 5000);
    EXPECT_EQ(useless, 0);
}

} // namespace

} // namespace dov417
