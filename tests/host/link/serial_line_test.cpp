#include "link/serial_line.h"

#include <QFile>
#include <QTemporaryFile>
#include <QTimer>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/file.h>
#include <unistd.h>

#include "exchange.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;

// Far beyond the patience of a test: what waits for it fails.
constexpr Micros forEver = minutes(10);

// Registers 0x050A and 0x050B of station 1, one each; they hold 42 and 43.
const char* const firstRead = "0103050A0001A4C4";
const char* const firstReply = "010302002A399B";
const char* const secondRead = "0103050B0001F504";
const char* const secondReply = "010302002BF85B";
constexpr int shortReplyLength = 7;

class OnALine : public ::testing::Test {
protected:
    void open(Micros timeout)
    {
        LineSettings settings;
        settings.device = slave.port();
        settings.isShared = false;
        settings.wire = wire;
        settings.timeout = timeout;
        settings.turnaround = turnaround;
        LineObserver observer;
        observer.sent = [](const Transmission&) {};
        observer.markerEnded = [](const Transmission&) {};
        observer.stray = [this](const Stray& stray) {
            strays.push_back(stray);
            if (strayed)
                strayed();
        };
        observer.notice = [this](const std::string& text) { notices.push_back(text); };
        observer.port = [this](bool isOpen, const QString& message) {
            ports.push_back(isOpen);
            lastMessage = message.toStdString();
        };
        line = std::make_unique<SerialLine>(settings, observer);
        QString reason;
        ASSERT_TRUE(line->open(&reason)) << reason.toStdString();
    }

    void begin(const char* request, int length)
    {
        outcome.reset();
        Transmission transmission;
        transmission.sent = hex(request);
        transmission.replyLength = length;
        line->transact(transmission,
                       [this](const Transmission& ended) { outcome = ended.reception; });
    }

    void expectOutcome(LineResult result, const char* bytes)
    {
        ASSERT_TRUE(waitUntil([this]() { return outcome.has_value(); }));
        EXPECT_EQ(outcome->result, result);
        EXPECT_EQ(outcome->bytes.toHex(), hex(bytes).toHex());
    }

    // Each whole request that arrives is answered with the next of these, in lumps.
    void answerWith(std::vector<std::vector<const char*>> answers)
    {
        slave.arrived = [this, answers](const QByteArray& bytes) {
            received += bytes;
            if (received.size() % 8 != 0)
                return;
            arrivals.push_back(Clock::now());
            const std::size_t index = static_cast<std::size_t>(received.size() / 8 - 1);
            if (index < answers.size())
                for (const char* const lump : answers.at(index))
                    slave.send(hex(lump));
        };
    }

    PtySlave slave;
    SerialFormat wire;
    Micros turnaround = milliseconds(1);
    std::unique_ptr<SerialLine> line;
    QByteArray received;
    std::vector<Clock::time_point> arrivals; // of the whole requests
    std::vector<Stray> strays;
    std::vector<std::string> notices;
    std::function<void()> strayed;
    std::vector<bool> ports;
    std::string lastMessage;
    std::optional<Reception> outcome;
};

TEST_F(OnALine, ARequestGoesOutUnchangedAndItsReplyComesBack)
{
    open(forEver);
    answerWith({{firstReply}});
    begin(firstRead, shortReplyLength);
    expectOutcome(LineResult::reply, firstReply);
    EXPECT_EQ(received, hex(firstRead));
}

TEST_F(OnALine, AnExceptionDoesNotWaitForTheTimeout)
{
    open(forEver);
    answerWith({{"018302C0F1"}});
    begin(firstRead, shortReplyLength);
    expectOutcome(LineResult::exception, "018302C0F1");
}

TEST_F(OnALine, ATruncatedReplyDoesNotWaitForTheTimeout)
{
    open(forEver);
    answerWith({{"01030200"}});
    begin(firstRead, shortReplyLength);
    expectOutcome(LineResult::reply, "01030200");
}

TEST_F(OnALine, SilenceEndsWithTheTimeout)
{
    open(milliseconds(5));
    begin(firstRead, shortReplyLength);
    expectOutcome(LineResult::timeout, "");
}

TEST_F(OnALine, ABroadcastWaitsForNobody)
{
    open(forEver);
    begin("0006050A002A290A", 0);
    expectOutcome(LineResult::broadcast, "");
}

TEST_F(OnALine, ABroadcastLeavesTheControllersTheirTurnaround)
{
    turnaround = milliseconds(100);
    open(forEver);
    const Clock::time_point begun = Clock::now();
    begin("0006050A002A290A", 0);
    expectOutcome(LineResult::broadcast, "");
    EXPECT_GE(Clock::now() - begun, turnaround);
}

TEST_F(OnALine, ThreeAndAHalfCharactersOfSilenceGoBeforeEachFrame)
{
    // So slow that nothing else takes as long: 3.5 characters of 11 bits at 300 baud.
    wire.baudRate = 300;
    const Micros silence(128333);
    const Clock::time_point before = Clock::now();
    open(forEver);
    answerWith({{firstReply}, {secondReply}});
    begin(firstRead, shortReplyLength);
    expectOutcome(LineResult::reply, firstReply);
    begin(secondRead, shortReplyLength);
    expectOutcome(LineResult::reply, secondReply);
    ASSERT_EQ(arrivals.size(), 2U);
    EXPECT_GE(arrivals.at(0) - before, silence);
    EXPECT_GE(arrivals.at(1) - arrivals.at(0), silence) << "the first reply came between";
}

TEST_F(OnALine, ALineThatNeverFallsSilentIsNotWaitedForForEver)
{
    wire.baudRate = 300;
    // The next byte is there as soon as one has been read: 3.5 characters never pass.
    strayed = [this]() { slave.deliver(hex("55")); };
    open(milliseconds(50));
    answerWith({});
    slave.send(hex("55"));
    begin(firstRead, shortReplyLength);
    ASSERT_TRUE(waitUntil([this]() { return !arrivals.empty(); }));
    EXPECT_EQ(received, hex(firstRead));
}

TEST_F(OnALine, BytesSentAndBytesReceivedTakeTimeOnTheWire)
{
    wire = {10000, 8, Parity::none, 1}; // 1 ms a character
    open(forEver);
    answerWith({{firstReply}});
    begin(firstRead, shortReplyLength);
    expectOutcome(LineResult::reply, firstReply);
    EXPECT_EQ(line->wireTime(), milliseconds(8 + 7));
}

TEST_F(OnALine, AReplyOfAnotherStationIsShownAndTheAwaitedOneTaken)
{
    open(forEver);
    slave.arrived = [this](const QByteArray&) { slave.send(hex("0203020007BD86")); };
    begin(firstRead, shortReplyLength);
    ASSERT_TRUE(waitUntil([this]() { return !strays.empty(); }));
    EXPECT_EQ(strays.front().kind, StrayKind::otherStation);
    EXPECT_FALSE(outcome.has_value());
    slave.send(hex(firstReply));
    expectOutcome(LineResult::reply, firstReply);
}

TEST_F(OnALine, OnlyRepliesOfAnotherStationEndWithTheTimeout)
{
    open(milliseconds(100));
    answerWith({{"0203020007BD86"}});
    begin(firstRead, shortReplyLength);
    expectOutcome(LineResult::timeout, "");
    ASSERT_EQ(strays.size(), 1U);
    EXPECT_EQ(strays.front().kind, StrayKind::otherStation);
}

TEST_F(OnALine, BytesThatNobodyAwaitsAreFlushedBeforeTheNextRequest)
{
    open(forEver);
    answerWith({{secondReply}});
    slave.send(hex(firstReply));
    ASSERT_TRUE(waitUntil([this]() { return !strays.empty(); }));
    begin(secondRead, shortReplyLength);
    expectOutcome(LineResult::reply, secondReply);
    EXPECT_EQ(strays.front().kind, StrayKind::late);
}

TEST_F(OnALine, NoiseThatNobodyAwaitsIsNoLateReply)
{
    open(forEver);
    slave.send(hex("550055"));
    ASSERT_TRUE(waitUntil([this]() { return !strays.empty(); }));
    EXPECT_EQ(strays.front().kind, StrayKind::noise);
}

TEST_F(OnALine, ALateReplyIsNotTakenForTheOneToTheNextRequest)
{
    open(milliseconds(300));
    answerWith({{}, {secondReply}});
    begin(firstRead, shortReplyLength);
    expectOutcome(LineResult::timeout, "");
    // The first reply comes when the second request is about to go out; both look alike.
    begin(secondRead, shortReplyLength);
    slave.send(hex(firstReply));
    ASSERT_TRUE(waitUntil([this]() { return !strays.empty(); }));
    EXPECT_EQ(strays.front().kind, StrayKind::late);
    expectOutcome(LineResult::reply, secondReply);
}

TEST_F(OnALine, AVanishedPortIsReportedAndTheLineGoesOnWhenItIsBack)
{
    open(forEver);
    slave.arrived = [this](const QByteArray&) { slave.unplug(); };
    begin(firstRead, shortReplyLength);
    ASSERT_TRUE(waitUntil([this]() { return ports.size() == 2; }));
    EXPECT_FALSE(ports.back());
    EXPECT_FALSE(line->isOpen());
    EXPECT_FALSE(outcome.has_value()) << "the request is to be repeated, not to be given up";

    answerWith({{firstReply}});
    slave.plug();
    ASSERT_TRUE(waitUntil([this]() { return line->isOpen(); }));
    EXPECT_TRUE(ports.back());
    begin(firstRead, shortReplyLength);
    expectOutcome(LineResult::reply, firstReply);
}

TEST_F(OnALine, AReplyToWhatWasSentBeforeThePortVanishedIsNotTakenForAnother)
{
    open(forEver);
    slave.arrived = [this](const QByteArray&) { slave.unplug(); };
    begin(firstRead, shortReplyLength);
    ASSERT_TRUE(waitUntil([this]() { return ports.size() == 2; }));
    // Whoever uses the line may have something else to ask by now. The controller answers first
    // what it was asked first, however late.
    bool isAnswered = false;
    slave.arrived = [&](const QByteArray& bytes) {
        if (!isAnswered)
            slave.send(hex(firstReply));
        isAnswered = true;
        const bool isMarker = bytes.at(1) == 8;
        slave.send(isMarker ? bytes : hex(secondReply));
    };
    slave.plug();
    ASSERT_TRUE(waitUntil([this]() { return line->isOpen(); }));
    begin(secondRead, shortReplyLength);
    expectOutcome(LineResult::reply, secondReply);
    EXPECT_EQ(strays.size(), 1U);
}

TEST_F(OnALine, APortThatVanishesWhileIdleIsReported)
{
    open(forEver);
    slave.unplug();
    ASSERT_TRUE(waitUntil([this]() { return !line->isOpen(); }));
    EXPECT_EQ(lastMessage, "port " + slave.port().toStdString() + " is gone");
}

TEST_F(OnALine, WhoeverHasThePortIsToldOfAgainOnceItWasOpenInBetween)
{
    open(forEver);
    LineSettings settings;
    settings.device = slave.port();
    LineObserver observer;
    observer.port = [](bool, const QString&) {};
    for (int round = 0; round < 2; ++round) {
        slave.unplug();
        ASSERT_TRUE(waitUntil([this]() { return !line->isOpen(); }));
        const std::size_t told = ports.size();
        auto other = std::make_unique<SerialLine>(settings, observer);
        slave.plug();
        QString reason;
        ASSERT_TRUE(other->open(&reason)) << reason.toStdString();
        ASSERT_TRUE(waitUntil([&]() { return ports.size() > told; })) << "round " << round;
        EXPECT_FALSE(ports.back());
        other.reset();
        ASSERT_TRUE(waitUntil([this]() { return line->isOpen(); }));
    }
}

TEST_F(OnALine, TwoProgramsDoNotShareAPort)
{
    open(forEver);
    LineSettings settings;
    settings.device = slave.port();
    SerialLine other(settings, LineObserver());
    QString reason;
    EXPECT_FALSE(other.open(&reason));
    EXPECT_NE(reason.toStdString().find("is busy: another program uses it"), std::string::npos)
        << reason.toStdString();
}

TEST(OpeningAPort, RespectsTheLockOfAnotherProgram)
{
    // Neither exclusive access nor a lock file: against a program without them only the lock holds.
    const PtySlave slave;
    LineSettings settings;
    settings.device = slave.port();
    const int other =
        open(settings.device.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    LineObserver observer;
    observer.port = [](bool, const QString&) {};
    QString reason;
    EXPECT_FALSE(SerialLine(settings, observer).open(&reason));
    EXPECT_NE(reason.toStdString().find("is busy: another program uses it"), std::string::npos)
        << reason.toStdString();
    close(other);
}

TEST(OpeningAPort, SaysThatThereIsNone)
{
    LineSettings settings;
    settings.device = QStringLiteral("/dev/no-such-port");
    SerialLine line(settings, LineObserver());
    QString reason;
    EXPECT_FALSE(line.open(&reason));
    EXPECT_EQ(reason.toStdString(), "there is no port /dev/no-such-port");
}

TEST(OpeningAPort, SaysThatAFileIsNone)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    LineSettings settings;
    settings.device = file.fileName();
    SerialLine line(settings, LineObserver());
    QString reason;
    EXPECT_FALSE(line.open(&reason));
    EXPECT_NE(reason.toStdString().find("cannot be used"), std::string::npos)
        << reason.toStdString();
}

} // namespace

} // namespace dov417
