#include "line/crc16.h"
#include "line_server_world.h"

#include <QFile>
#include <QFileInfo>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include "simulator/line_port.h"

namespace dov417::simulator {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

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

void setSpeed(const std::string& port, speed_t speed)
{
    const int descriptor = ::open(port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    termios settings{};
    ASSERT_EQ(tcgetattr(descriptor, &settings), 0);
    cfsetspeed(&settings, speed);
    ASSERT_EQ(tcsetattr(descriptor, TCSANOW, &settings), 0);
    ::close(descriptor);
}

TEST_F(LineServerTest, HearsNoFrameAtAnotherSpeedIfItGoesByItsOwn)
{
    options.ownSpeedOnly = true;
    options.line.baudRate = 9600;
    start();
    MasterEnd master(server->portName());
    ASSERT_TRUE(waitForNotice("the other side opened the line"));
    setSpeed(server->portName(), B19200);
    master.send(bytesOf(readRequest));
    ASSERT_TRUE(waitForEvents(LineEvent::garbage, 1));
    EXPECT_EQ(server->counters().requests, 0U);
    setSpeed(server->portName(), B9600);
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
}

TEST_F(LineServerTest, IsHeardAsNoFrameAtAnotherSpeedIfItGoesByItsOwn)
{
    options.ownSpeedOnly = true;
    options.line.baudRate = 9600;
    start("late:200=100%");
    MasterEnd master(server->portName());
    ASSERT_TRUE(waitForNotice("the other side opened the line"));
    setSpeed(server->portName(), B9600);
    master.send(bytesOf(readRequest));
    ASSERT_TRUE(waitForEvents(LineEvent::received, 1));
    setSpeed(server->portName(), B19200);
    ASSERT_TRUE(waitForEvents(LineEvent::sent, 1));
    QByteArray heard = master.receive(1);
    heard += master.readNow();
    EXPECT_FALSE(heard.isEmpty());
    EXPECT_FALSE(hasGoodCrc(heard)) << hexOf(heard);
}

TEST_F(LineServerTest, TakesAnySpeedOtherwise)
{
    options.line.baudRate = 9600;
    start();
    MasterEnd master(server->portName());
    ASSERT_TRUE(waitForNotice("the other side opened the line"));
    setSpeed(server->portName(), B19200);
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
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
    options.minSilenceMs = 60000; // the test may be slow
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

TEST_F(LineServerTest, SendsTheNextMasterNoLateReplyOfTheOneThatWent)
{
    start("late:300=every:1");
    {
        MasterEnd master(server->portName());
        master.send(bytesOf(readRequest));
        ASSERT_TRUE(waitForEvents(LineEvent::received, 1));
    }
    ASSERT_TRUE(waitForNotice("the other side closed the line"));
    MasterEnd next(server->portName());
    next.send(bytesOf(writeRequest));
    EXPECT_EQ(hexOf(next.receive(8)), writeRequest);
}

TEST_F(LineServerTest, IsRawAgainAfterAMasterThatWasNot)
{
    start();
    {
        // A terminal that somebody left in its everyday mode would echo and edit what it gets.
        const int descriptor = ::open(server->portName().c_str(), O_RDWR | O_NOCTTY);
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
    options.link = inFolder("plc");
    start();
    EXPECT_EQ(server->portName(), options.link);
    {
        MasterEnd master(options.link);
        server->close();
        EXPECT_TRUE(master.isHungUp());
        EXPECT_FALSE(linkInFolder("plc").isSymLink());
        EXPECT_FALSE(server->isOpen());
        EXPECT_EQ(server->portName(), "");
    }
    ASSERT_EQ(complaint([this]() { server->open(); }), "");
    MasterEnd master(options.link);
    master.send(bytesOf(readRequest));
    EXPECT_EQ(hexOf(master.receive(7)), readReply);
}

TEST_F(LineServerTest, MayBeClosedAndReopenedByWhoeverHearsOfARequest)
{
    options.link = inFolder("plc");
    start();
    int served = 0;
    QObject::connect(server.get(), &LineServer::served, server.get(), [&](const Answer&) {
        if (++served == 1) {
            server->close();
            server->open();
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
    EXPECT_EQ(server->counters().replies, 1U); // the first one went with its line
}

TEST_F(LineServerTest, ReplacesAStaleLinkButNothingElse)
{
    options.link = inFolder("plc");
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/pts/none"), QString::fromStdString(options.link)));
    start();
    EXPECT_TRUE(linkInFolder("plc").exists());
    server.reset();
    EXPECT_FALSE(linkInFolder("plc").isSymLink());

    QFile file(QString::fromStdString(options.link));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("precious");
    file.close();
    LineServer other(controller, faults, options);
    EXPECT_EQ(complaint([&other]() { other.open(); }),
              options.link + ": there is something that is no symbolic link");
    EXPECT_EQ(linkInFolder("plc").size(), 8);
}

TEST_F(LineServerTest, LeavesTheLinkOfALivingControllerAlone)
{
    options.link = inFolder("plc");
    start();
    const std::string device = linkInFolder("plc").symLinkTarget().toStdString();
    LineServer second(controller, faults, options);
    EXPECT_EQ(complaint([&second]() { second.open(); }),
              options.link + " leads to " + device +
                  "; if that is no controller, remove the link first");
    EXPECT_EQ(linkInFolder("plc").symLinkTarget().toStdString(), device);
}

TEST_F(LineServerTest, SaysWhyALineCannotBeHad)
{
    options.device = inFolder("none");
    LineServer missing(controller, faults, options);
    EXPECT_THAT(complaint([&]() { missing.open(); }),
                StartsWith(options.device + ": No such file"));

    options.device = "/dev/null";
    LineServer noTerminal(controller, faults, options);
    EXPECT_THAT(complaint([&]() { noTerminal.open(); }), StartsWith("/dev/null: "));

    options.line.baudRate = 12345;
    LineServer oddRate(controller, faults, options);
    EXPECT_THAT(complaint([&]() { oddRate.open(); }), HasSubstr("12345"));

    options.device.clear();
    options.link = inFolder("no/such/folder/plc");
    LineServer noLink(controller, faults, options);
    EXPECT_NE(complaint([&]() { noLink.open(); }), "");
    EXPECT_FALSE(noLink.isOpen());
}

TEST_F(LineServerTest, ServesADeviceAndTellsWhenItIsGone)
{
    LinePort cable; // its other end is the device
    ASSERT_EQ(complaint([&]() { cable.openPseudoTerminal(""); }), "");
    options.device = cable.name();
    start();
    server.reset(); // and once more: the kernel refuses to set a parity that it set before
    start();
    std::string reason;
    QObject::connect(server.get(), &LineServer::lost, server.get(),
                     [&](const QString& text) { reason = text.toStdString(); });
    cable.write(bytesOf(readRequest));
    QByteArray received;
    ASSERT_TRUE(waitFor([&]() {
        bool lost = false;
        received += cable.read(&lost);
        return received.size() >= 7;
    }));
    EXPECT_EQ(hexOf(received), readReply);

    cable.close();
    ASSERT_TRUE(waitFor([&]() { return !reason.empty(); }));
    EXPECT_EQ(reason, "port " + options.device + " is gone");
    EXPECT_FALSE(server->isOpen());
}

} // namespace
} // namespace dov417::simulator
