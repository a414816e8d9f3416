#include "line_server.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <termios.h>
#include <unistd.h>
#include <vector>

#include "line_port.h"
#include "support.h"
#include "wake_timer.h"

namespace simulator {
namespace {

const char* const readRequest = "01 03 05 0A 00 01 A4 C4";
const char* const readReply = "01 03 02 12 34 B5 33";
const char* const writeRequest = "01 06 05 0B 00 07 B9 06";
const char* const broadcast = "00 06 05 0C 00 07 09 16";

class LineServerTest : public testing::Test {
protected:
    LineServerTest()
    {
        memory.station(1)->setWord(Area::R, 10, 0x1234);
    }

    void start(const char* fault = nullptr)
    {
        if (fault)
            faults = Faults({parseFaultRule(QLatin1String(fault), nullptr).value()});
        server = std::make_unique<LineServer>(controller, faults, options);
        QObject::connect(server.get(), &LineServer::logged, server.get(),
                         [this](const LineEvent& event) { events.push_back(event); });
        QString error;
        ASSERT_TRUE(server->open(&error)) << error.toStdString();
    }

    std::size_t countOf(LineEvent::Kind kind) const
    {
        std::size_t count = 0;
        for (const LineEvent& event : events)
            count += event.kind == kind ? 1U : 0U;
        return count;
    }
    bool waitForEvents(LineEvent::Kind kind, std::size_t count)
    {
        return waitFor([&]() { return countOf(kind) >= count; });
    }
    bool waitForNotice(const char* text)
    {
        return waitFor([&]() {
            for (const LineEvent& event : events) {
                if (event.kind == LineEvent::notice && event.meaning == QLatin1String(text))
                    return true;
            }
            return false;
        });
    }

    QTemporaryDir folder;
    Memory memory{{1}};
    Controller controller{memory};
    Faults faults;
    LineServerOptions options;
    std::vector<LineEvent> events;
    std::unique_ptr<LineServer> server;
};

TEST_F(LineServerTest, AnswersOnAPseudoTerminalOfItsOwn)
{
    start();
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
    EXPECT_EQ(server->counters().requests, 1U);
    EXPECT_EQ(server->counters().replies, 1U);
    EXPECT_EQ(server->counters().bytesReceived, 8U);
    EXPECT_EQ(server->counters().bytesSent, 7U);
}

TEST_F(LineServerTest, PassesEveryByteValueUnchanged)
{
    start();
    MasterEnd master(server->portName());
    QByteArray data;
    for (int value = 0; value < 256; ++value)
        data += static_cast<char>(value);
    master.send(withCrc(bytesOf("01 10 05 00 00 80 00") + data));
    EXPECT_EQ(hexOf(master.receive(8)), "01 10 05 00 00 80 C1 65");
    master.send(bytesOf("01 03 05 00 00 80 44 A6"));
    const QByteArray reply = master.receive(261);
    EXPECT_EQ(hexOf(reply.mid(3, 256)), hexOf(data));
}

TEST_F(LineServerTest, TakesARequestThatComesByteByByte)
{
    options.leastSilenceMs = 60000; // the test may be slow
    start();
    MasterEnd master(server->portName());
    const QByteArray request = bytesOf(readRequest);
    for (int i = 0; i < request.size(); ++i) {
        master.send(request.mid(i, 1));
        ASSERT_TRUE(waitFor([&]() {
            return server->counters().bytesReceived == static_cast<std::uint64_t>(i) + 1;
        }));
    }
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
}

TEST_F(LineServerTest, AnswersRequestsThatComeTogetherInTheirOrder)
{
    start();
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest) + bytesOf(writeRequest));
    EXPECT_EQ(hexOf(master.receive(15)), std::string(readReply) + " " + writeRequest);
}

TEST_F(LineServerTest, ExecutesABroadcastAndSaysNothing)
{
    start();
    MasterEnd master(server->portName());
    master.send(bytesOf(broadcast));
    master.send(bytesOf(readRequest)); // the next thing to be heard is its reply
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
    EXPECT_EQ(memory.station(1)->word(Area::R, 12), 7);
    EXPECT_EQ(server->counters().replies, 1U);
}

TEST_F(LineServerTest, DropsWhatIsNoFrameAtTheNextSilence)
{
    start();
    MasterEnd master(server->portName());
    master.send(bytesOf("01 03 05 0A 00 01 A4 C5"));
    ASSERT_TRUE(waitForEvents(LineEvent::garbage, 1));
    master.send(bytesOf("01 10 05"));
    ASSERT_TRUE(waitForEvents(LineEvent::garbage, 2));
    EXPECT_EQ(hexOf(events.back().bytes), "01 10 05");
    EXPECT_EQ(server->counters().dropped, 2U);
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
}

TEST_F(LineServerTest, RefusesAnUnknownFunctionOnceTheLineIsSilent)
{
    start();
    MasterEnd master(server->portName());
    master.send(bytesOf("01 2B 0E 01 00 70 77"));
    EXPECT_EQ(hexOf(master.receive(5)), "01 AB 01 9E F0");
}

TEST_F(LineServerTest, GivesUpOnBytesThatNeverEnd)
{
    start();
    MasterEnd master(server->portName());
    for (int i = 0; i < 5 && countOf(LineEvent::garbage) == 0; ++i) {
        const std::uint64_t before = server->counters().bytesReceived;
        master.send(QByteArray(1024, '\x01'));
        ASSERT_TRUE(waitFor([&]() { return server->counters().bytesReceived >= before + 1024; }));
    }
    ASSERT_TRUE(waitForEvents(LineEvent::garbage, 1));
}

TEST_F(LineServerTest, ServesTheNextMasterWhenOneHasGone)
{
    start();
    for (int i = 0; i < 3; ++i) {
        MasterEnd master(server->portName());
        master.send(bytesOf(readRequest));
        EXPECT_EQ(hexOf(master.receive(7)), readReply) << i;
    }
    EXPECT_TRUE(waitForNotice("the other side opened the line"));
    EXPECT_TRUE(waitForNotice("the other side closed the line"));
}

TEST_F(LineServerTest, ExecutesTheLastRequestOfAMasterThatGoesAtOnce)
{
    start();
    {
        MasterEnd master(server->portName());
        master.send(bytesOf(writeRequest));
    }
    ASSERT_TRUE(waitForEvents(LineEvent::withheld, 1)); // nobody there for the reply
    EXPECT_EQ(memory.station(1)->word(Area::R, 11), 7);
    EXPECT_EQ(server->counters().unheard, 1U);
    MasterEnd next(server->portName());
    next.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(next.receive(7)), readReply);
}

TEST_F(LineServerTest, KeepsNothingUnreadForTheNextMaster)
{
    start();
    {
        MasterEnd master(server->portName());
        master.send(bytesOf(readRequest));
        ASSERT_TRUE(waitForEvents(LineEvent::sent, 1));
    }
    ASSERT_TRUE(waitForNotice("the other side closed the line"));
    MasterEnd next(server->portName());
    EXPECT_EQ(hexOf(next.readNow()), "");
    next.send(bytesOf(writeRequest));
    EXPECT_EQ(hexOf(next.receive(8)), writeRequest);
}

TEST_F(LineServerTest, IsRawAgainAfterAMasterThatWasNot)
{
    start();
    {
        // A terminal that somebody left in its everyday mode would echo and edit what it gets.
        const int descriptor =
            ::open(QFile::encodeName(server->portName()).constData(), O_RDWR | O_NOCTTY);
        termios everyday{};
        ASSERT_EQ(tcgetattr(descriptor, &everyday), 0);
        everyday.c_lflag |= ICANON | ECHO;
        ASSERT_EQ(tcsetattr(descriptor, TCSANOW, &everyday), 0);
        ::close(descriptor);
    }
    ASSERT_TRUE(waitForNotice("the other side closed the line"));
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
}

TEST_F(LineServerTest, HangsUpWhenItIsClosedAndComesBackUnderTheSameLink)
{
    options.link = folder.filePath(QStringLiteral("plc"));
    start();
    EXPECT_EQ(server->portName(), options.link);
    {
        MasterEnd master(options.link);
        server->close();
        EXPECT_TRUE(master.isHungUp());
        EXPECT_FALSE(QFileInfo(options.link).isSymLink());
        EXPECT_FALSE(server->isOpen());
        EXPECT_EQ(text(server->portName()), "");
    }
    QString error;
    ASSERT_TRUE(server->open(&error)) << text(error);
    MasterEnd master(options.link);
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
}

TEST_F(LineServerTest, MayBeClosedAndReopenedByWhoeverHearsOfARequest)
{
    options.link = folder.filePath(QStringLiteral("plc"));
    start();
    int served = 0;
    QObject::connect(server.get(), &LineServer::served, server.get(), [&](const Answer&) {
        if (++served == 1) {
            server->close();
            server->open(nullptr);
        }
    });
    {
        MasterEnd master(options.link);
        master.send(bytesOf(readRequest));
        ASSERT_TRUE(waitFor([&]() { return served == 1; }));
        EXPECT_TRUE(master.isHungUp());
    }
    MasterEnd master(options.link);
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
}

TEST_F(LineServerTest, ReplacesAStaleLinkButNothingElse)
{
    options.link = folder.filePath(QStringLiteral("plc"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/pts/none"), options.link));
    start();
    EXPECT_TRUE(QFileInfo::exists(options.link));
    server.reset();
    EXPECT_FALSE(QFileInfo(options.link).isSymLink());

    QFile file(options.link);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("precious");
    file.close();
    LineServer other(controller, faults, options);
    QString error;
    EXPECT_FALSE(other.open(&error));
    EXPECT_TRUE(error.contains(options.link)) << text(error);
    EXPECT_EQ(QFileInfo(options.link).size(), 8);
}

TEST_F(LineServerTest, SaysWhyALineCannotBeHad)
{
    options.device = folder.filePath(QStringLiteral("none"));
    LineServer missing(controller, faults, options);
    QString error;
    EXPECT_FALSE(missing.open(&error));
    EXPECT_TRUE(error.startsWith(options.device + QLatin1String(": No such file"))) << text(error);

    options.device = QStringLiteral("/dev/null");
    LineServer noTerminal(controller, faults, options);
    EXPECT_FALSE(noTerminal.open(&error));
    EXPECT_TRUE(error.startsWith(QLatin1String("/dev/null: "))) << text(error);

    options.line.baudRate = 12345;
    LineServer oddRate(controller, faults, options);
    EXPECT_FALSE(oddRate.open(&error));
    EXPECT_TRUE(error.contains(QLatin1String("12345"))) << text(error);

    options.device.clear();
    options.link = folder.filePath(QStringLiteral("no/such/folder/plc"));
    LineServer noLink(controller, faults, options);
    EXPECT_FALSE(noLink.open(&error));
    EXPECT_FALSE(noLink.isOpen());
}

TEST_F(LineServerTest, ServesADeviceAndTellsWhenItIsGone)
{
    LinePort cable; // its other end is the device
    QString error;
    ASSERT_TRUE(cable.openPseudoTerminal(QString(), &error)) << text(error);
    options.device = cable.name();
    start();
    QString reason;
    QObject::connect(server.get(), &LineServer::lost, server.get(),
                     [&](const QString& text) { reason = text; });
    cable.write(bytesOf(readRequest));
    QByteArray received;
    ASSERT_TRUE(waitFor([&]() {
        bool lost = false;
        received += cable.read(&lost);
        return received.size() >= 7;
    }));
    EXPECT_EQ(hexOf(received), readReply);

    cable.close();
    ASSERT_TRUE(waitFor([&]() { return !reason.isEmpty(); }));
    EXPECT_EQ(text(reason), text(options.device + QLatin1String(" is gone")));
    EXPECT_FALSE(server->isOpen());
}

TEST_F(LineServerTest, LogsRequestsRepliesAndWhatHappenedToThem)
{
    start("flip=every:2");
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    master.receive(7);
    master.send(bytesOf("01 03 14 A0 00 01 81 D8"));
    master.receive(5);
    ASSERT_TRUE(waitForEvents(LineEvent::sent, 2));
    std::vector<std::string> meanings;
    for (const LineEvent& event : events) {
        if (event.kind != LineEvent::notice)
            meanings.push_back(event.meaning.toStdString());
    }
    EXPECT_EQ(meanings, (std::vector<std::string>{
                            "station 1 reads register 1290", "reply",
                            "station 1 reads register 5280: exception 2, illegal data address",
                            "reply: exception 2, illegal data address [flip]"}));
    LineEvent event;
    event.kind = LineEvent::received;
    event.timeNs = 12345678;
    event.bytes = bytesOf(readRequest);
    event.meaning = QStringLiteral("meaning");
    EXPECT_EQ(text(logText(event)), "    0.012346 <- 01 03 05 0A 00 01 A4 C4  meaning");
}

TEST_F(LineServerTest, WithholdsASilencedReplyAndGoesOn)
{
    start("silence=every:2");
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
    master.send(bytesOf(writeRequest));
    ASSERT_TRUE(waitForEvents(LineEvent::withheld, 1));
    EXPECT_EQ(memory.station(1)->word(Area::R, 11), 7); // executed all the same
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
}

TEST_F(LineServerTest, EchoesTheRequestBeforeTheReply)
{
    start("echo=every:1");
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(15)), std::string(readRequest) + " " + readReply);
}

TEST_F(LineServerTest, SendsALateReplyLateAndThoseOfLaterRequestsBehindIt)
{
    start("late:50=every:2");
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
    master.send(bytesOf(writeRequest) + bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(15)), std::string(writeRequest) + " " + readReply);
    ASSERT_TRUE(waitForEvents(LineEvent::sent, 3));
    std::int64_t executed = 0;
    std::int64_t sent = 0;
    for (const LineEvent& event : events) {
        if (event.kind == LineEvent::received && hexOf(event.bytes) == writeRequest)
            executed = event.timeNs;
        if (event.kind == LineEvent::sent && hexOf(event.bytes) == writeRequest)
            sent = event.timeNs;
    }
    EXPECT_GE(sent - executed, 45000000); // never early
}

TEST_F(LineServerTest, SendsASlowReplyWhole)
{
    start("slow:2=every:1");
    MasterEnd master(server->portName());
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
    EXPECT_EQ(server->counters().replies, 1U);
    ASSERT_TRUE(waitForEvents(LineEvent::sent, 1));
    EXPECT_EQ(hexOf(events.back().bytes), readReply);
}

TEST_F(LineServerTest, PacedNeverIsFasterThanTheLine)
{
    options.paced = true;
    options.line.baudRate = 9600;
    options.turnaroundMs = 3;
    start();
    MasterEnd master(server->portName());
    const std::int64_t begin = monotonicNow();
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
    // 8 + 7 characters of 1.1458 ms, a silence of 4.0104 ms, 3 ms of turnaround.
    EXPECT_GE(monotonicNow() - begin, 24197917);
}

TEST_F(LineServerTest, PacedKeepsARequestThatTakesLongerThanTheSilence)
{
    options.paced = true;
    options.line.baudRate = 300;
    options.leastSilenceMs = 0; // 128 ms of the line
    start();
    MasterEnd master(server->portName());
    // The first 9 characters take 330 ms, the other 12 follow for 440 ms: when the second request
    // has begun, its end is on its way.
    const QByteArray second = bytesOf("01 10 05 0A 00 02 04 00 0A 01 02 EC D3");
    master.send(bytesOf(readRequest) + second.left(1));
    ASSERT_TRUE(waitFor([&]() { return server->counters().bytesReceived == 9; }));
    master.send(second.mid(1));
    EXPECT_EQ(hexOf(master.receive(15)), std::string(readReply) + " 01 10 05 0A 00 02 61 06");
    EXPECT_EQ(server->counters().dropped, 0U);
}

TEST_F(LineServerTest, PacedSendsEveryKindOfFaultyReply)
{
    options.paced = true;
    start("any=every:1");
    MasterEnd master(server->portName());
    for (std::size_t i = 1; i <= 40; ++i) {
        master.send(bytesOf(readRequest));
        ASSERT_TRUE(waitFor(
            [&]() { return countOf(LineEvent::sent) + countOf(LineEvent::withheld) == i; }));
        master.readNow();
    }
    EXPECT_EQ(server->counters().requests, 40U);
    EXPECT_EQ(faults.faulty(), 40U);
}

} // namespace
} // namespace simulator
