#include "link/link_runner.h"

#include <QFile>
#include <QTimer>
#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include "exchange.h"
#include "loaded_library.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;

// R_W:10 of station 1 is register 0x050A; it holds 42.
const char* const garbledReply = "010302002A0000";
const char* const shortReply = "01030200";
const char* const refusedAddress = "018302C0F1";
const char* const refusedValue = "0183030131";
const char* const otherStation = "0203020007BD86";

std::vector<Clock::time_point> polls;
decltype(&intf_getSendFrame) driversGetSendFrame = nullptr;

int countedGetSendFrame(FRAME_PRO* frame)
{
    polls.push_back(Clock::now());
    return driversGetSendFrame(frame);
}

class RunnerOnALine : public LoadedLibrary {
protected:
    RunnerOnALine()
    {
        line.device = slave.port();
        line.isShared = false;
        line.timeout = minutes(10);
        events.port = [this](bool, const std::string& message) { ports.push_back(message); };
        events.stray = [this](const Stray& stray) { strays.push_back(stray.kind); };
        events.notice = [this](const std::string& text) { notices.push_back(text); };
        events.began = [](const Transmission&) {};
        events.markerEnded = [](const Transmission&) {};
        events.partEnded = [](const Transmission&) {};
        events.ended = [this](const Transmission& transmission) {
            ended.push_back(transmission);
            if (transmission.verdict == replyBad)
                return;
            settled = transmission.verdict;
            // Nothing is left to send, and no further request changes the counters.
            library.driver->readList.clear();
        };
    }

    // So many bad replies in a row give the request up.
    void pollOneWord(int retryLimit)
    {
        int result = 0;
        const std::string property = "1#0#0#" + std::to_string(retryLimit) + "#20";
        library.intf_initProperty(nullptr, 0, nullptr, &result, property.c_str(), nullptr);
        KEY_ADDRESS key = KEY_ADDRESS();
        key.stationNo = 1;
        key.regName = QStringLiteral("R_W");
        key.address = 10;
        key.length = 1;
        QList<KEY_ADDRESS> keys = {key};
        ASSERT_EQ(library.intf_addrMerge(keys), 1);
        start();
    }

    void start()
    {
        runner = std::make_unique<LinkRunner>(library, events);
        ASSERT_TRUE(runner->open(line).accepted);
    }

    // Each request that arrives is answered with the next of these.
    void answerWith(std::vector<std::vector<const char*>> answers)
    {
        slave.arrived = [this, answers](const QByteArray& bytes) {
            received += bytes;
            if (received.size() % 8 != 0)
                return;
            const std::size_t index = static_cast<std::size_t>(received.size() / 8 - 1);
            if (index < answers.size())
                for (const char* const lump : answers.at(index))
                    slave.send(QByteArray::fromHex(lump));
        };
    }

    PtySlave slave;
    LineSettings line;
    LinkEvents events;
    QByteArray received;
    std::vector<std::string> ports;
    std::vector<std::string> notices;
    std::vector<StrayKind> strays;
    std::vector<Transmission> ended;
    std::optional<ReplyResult> settled;
    std::unique_ptr<LinkRunner> runner;
};

TEST_F(RunnerOnALine, TellsThatAStationIsSlowerThanItIsWaitedFor)
{
    line.timeout = milliseconds(20);
    line.isTimeoutFixed = true;
    slave.arrived = [this](const QByteArray&) {
        QTimer::singleShot(200, [this]() { slave.send(hex(readReply)); });
    };
    pollOneWord(1);
    ASSERT_TRUE(waitUntil([this]() { return !notices.empty(); }));
    EXPECT_THAT(notices.front(), ::testing::StartsWith("station 1 answers after "));
    EXPECT_THAT(notices.front(), ::testing::EndsWith(": raise --timeout"));
}

TEST_F(RunnerOnALine, BadRepliesAreCountedByTheirKind)
{
    answerWith({{garbledReply},
                {garbledReply},
                {garbledReply},
                {shortReply},
                {shortReply},
                {refusedAddress},
                {refusedValue},
                {refusedValue},
                {readReply}});
    pollOneWord(20);
    ASSERT_TRUE(waitUntil([this]() { return settled.has_value(); }));
    EXPECT_EQ(*settled, replyAccepted);
    EXPECT_TRUE(runner->statistics().linkIsGood);
    ASSERT_THAT(runner->statistics().order, ::testing::ElementsAre("read  1#R_W10(1)"));
    const RequestCounters& counters = runner->statistics().requests.at("read  1#R_W10(1)");
    EXPECT_EQ(counters.sent, 9);
    EXPECT_EQ(counters.good, 1);
    EXPECT_EQ(counters.badFor(Reason::badCrc), 3);
    EXPECT_EQ(counters.badFor(Reason::cutShort), 2);
    EXPECT_EQ(counters.badFor(Reason::exception), 3);
    EXPECT_EQ(counters.exceptions, (std::map<int, long long>{{2, 1}, {3, 2}}));
    EXPECT_EQ(counters.retries, 8);
    EXPECT_EQ(counters.badFor(Reason::silence), 0);
    EXPECT_EQ(counters.abandoned, 0);
}

TEST_F(RunnerOnALine, SilenceIsCountedUntilTheRequestIsGivenUp)
{
    line.timeout = milliseconds(5);
    pollOneWord(3);
    ASSERT_TRUE(waitUntil([this]() { return settled.has_value(); }));
    EXPECT_EQ(*settled, replyAbandoned);
    EXPECT_FALSE(runner->statistics().linkIsGood);
    const RequestCounters total = runner->statistics().total();
    EXPECT_EQ(total.sent, 3);
    EXPECT_EQ(total.badFor(Reason::silence), 3);
    EXPECT_EQ(total.retries, 2);
    EXPECT_EQ(total.abandoned, 1);
    EXPECT_EQ(total.good, 0);
}

// To a station that may have been asked by another program the echo goes first; where that is not
// answered, nothing else goes out for a while.
TEST_F(RunnerOnALine, WhatNeverWentOutIsCountedAsNotSent)
{
    line.isShared = true;
    line.timeout = milliseconds(5);
    slave.arrived = [this](const QByteArray& bytes) { received += bytes; };
    pollOneWord(3);
    ASSERT_TRUE(waitUntil([this]() { return settled.has_value(); }));
    const long long reads = received.count(QByteArray::fromHex(readRequest));
    const RequestCounters total = runner->statistics().total();
    EXPECT_LT(reads, 3);
    EXPECT_EQ(total.sent, reads);
    EXPECT_EQ(total.notSent, 3 - reads);
    EXPECT_EQ(total.badFor(Reason::silence), 3);
    EXPECT_LE(total.retries, total.sent);
    EXPECT_EQ(total.abandoned, 1);
}

TEST_F(RunnerOnALine, BytesThatWereNoReplyAreCountedAndTold)
{
    answerWith({{otherStation, readReply}});
    pollOneWord(3);
    ASSERT_TRUE(waitUntil([this]() { return settled.has_value(); }));
    EXPECT_THAT(strays, ::testing::Not(::testing::IsEmpty()));
    const auto& counted = runner->statistics().strays;
    for (std::size_t kind = 0; kind < counted.size(); ++kind)
        EXPECT_EQ(counted.at(kind),
                  std::count(strays.begin(), strays.end(), static_cast<StrayKind>(kind)))
            << kind;
}

TEST_F(RunnerOnALine, APortThatGoesIsOneLossHoweverLongItStaysAway)
{
    slave.arrived = [this](const QByteArray&) { slave.unplug(); };
    pollOneWord(3);
    const std::string port = slave.port().toStdString();
    ASSERT_TRUE(waitUntil([this]() { return ports.size() == 2; }));
    // It is tried again; that there is none is said once, that there is something else is news.
    QFile other(slave.port());
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    ASSERT_TRUE(waitUntil([this]() { return ports.size() == 3; }));
    EXPECT_EQ(ports.at(0), "port " + port + " is open");
    EXPECT_EQ(ports.at(1), "port " + port + " is gone");
    EXPECT_EQ(ports.at(2).find("port " + port + " cannot be used: "), 0U) << ports.at(2);
    ASSERT_TRUE(other.remove());
    EXPECT_FALSE(runner->statistics().portIsOpen);
    EXPECT_EQ(runner->statistics().portLosses, 1);
    answerWith({{readReply}});
    slave.plug();
    ASSERT_TRUE(waitUntil([this]() { return settled.has_value(); }));
    EXPECT_EQ(received, QByteArray::fromHex(readRequest)) << "the same request again";
    EXPECT_EQ(runner->statistics().portLosses, 1);
}

TEST_F(RunnerOnALine, AnIdleRunnerDoesNotSpin)
{
    polls.clear();
    driversGetSendFrame = library.intf_getSendFrame;
    library.intf_getSendFrame = countedGetSendFrame;
    start(); // without an address there is nothing to send
    // A poll asks the driver twice. Two idle times, each no shorter than 15 ms:
    ASSERT_TRUE(waitUntil([]() { return polls.size() >= 6; }));
    EXPECT_GE(polls.at(4) - polls.at(0), milliseconds(30));

    const std::size_t before = polls.size();
    runner->wake();
    EXPECT_EQ(polls.size(), before + 2) << "a write does not wait";
}

} // namespace

} // namespace dov417
