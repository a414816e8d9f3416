#include <QTcpServer>
#include <QTcpSocket>
#include <gtest/gtest.h>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <sys/socket.h>

#include "exchange.h"
#include "link/serial_line.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

class ALineOverANetwork : public ::testing::Test {
protected:
    ALineOverANetwork()
    {
        QObject::connect(&server, &QTcpServer::newConnection, &server, [this]() {
            ++connections;
            QTcpSocket* const next = server.nextPendingConnection();
            if (closesAtOnce) {
                next->write("in use\r\n");
                next->disconnectFromHost();
                return;
            }
            far = next;
            QObject::connect(next, &QTcpSocket::readyRead, next, [this, next]() {
                received += next->readAll();
                if (arrived)
                    arrived();
            });
        });
        server.listen(QHostAddress::LocalHost);
        port = server.serverPort();
    }

    // The observer has no more to say once the test is over.
    ~ALineOverANetwork() override
    {
        line.reset();
    }

    void begin(const QString& host = QStringLiteral("127.0.0.1"))
    {
        LineSettings settings;
        settings.device = QStringLiteral("tcp://%1:%2").arg(host).arg(port);
        settings.isShared = false;
        settings.timeout = std::chrono::minutes(10);
        LineObserver observer;
        observer.sent = [](const Transmission&) {};
        observer.markerEnded = [](const Transmission&) {};
        observer.stray = [](const Stray&) {};
        observer.notice = [](const std::string&) {};
        observer.port = [this](bool isOpen, const QString& message) {
            told.emplace_back(isOpen, message.toStdString());
        };
        line = std::make_unique<SerialLine>(settings, observer);
        QString reason;
        ASSERT_TRUE(line->open(&reason)) << reason.toStdString();
    }

    void expectTold(bool isOpen, const std::string& words)
    {
        const std::size_t before = heard;
        ASSERT_TRUE(waitUntil([&]() { return told.size() > before; }));
        EXPECT_EQ(told.at(before).first, isOpen);
        EXPECT_EQ(told.at(before).second, "port tcp://" + place() + words);
        heard = before + 1;
    }

    std::string place() const
    {
        return "127.0.0.1:" + std::to_string(port);
    }

    void read()
    {
        outcome.reset();
        received.clear();
        Transmission transmission;
        transmission.sent = hex(readRequest);
        transmission.replyLength = 7;
        line->transact(transmission,
                       [this](const Transmission& ended) { outcome = ended.reception; });
    }

    void expectReply()
    {
        ASSERT_TRUE(waitUntil([this]() { return outcome.has_value(); }));
        EXPECT_EQ(outcome->result, LineResult::reply);
        EXPECT_EQ(outcome->bytes.toHex(), hex(readReply).toHex());
    }

    QTcpServer server;
    quint16 port = 0;
    QTcpSocket* far = nullptr;
    QByteArray received;
    std::function<void()> arrived;
    int connections = 0;
    bool closesAtOnce = false;
    std::unique_ptr<SerialLine> line;
    std::vector<std::pair<bool, std::string>> told;
    std::size_t heard = 0;
    std::optional<Reception> outcome;
};

TEST_F(ALineOverANetwork, CarriesARequestAndItsReplyInAnyPieces)
{
    begin();
    EXPECT_FALSE(line->isOpen()) << "nothing waits for a connection";
    expectTold(true, " is open");
    arrived = [this]() {
        if (received == hex(readRequest))
            far->write(hex("010302"));
    };
    read();
    ASSERT_TRUE(waitUntil([this]() { return received == hex(readRequest); }));
    far->flush();
    far->write(hex("002A399B"));
    expectReply();
    EXPECT_EQ(line->wireTime(), Micros(0)) << "that of the far end is not known";
}

TEST_F(ALineOverANetwork, IsMadeAgainWhenItWasCutAndWhatWasUnderWayIsRepeated)
{
    begin();
    expectTold(true, " is open");
    arrived = [this]() { far->write(hex(readReply)); };
    read();
    expectReply();
    arrived = [this]() { far->abort(); };
    read();
    expectTold(false, " is gone");
    EXPECT_FALSE(line->isOpen());
    EXPECT_FALSE(outcome.has_value()) << "the request is to be repeated, not to be given up";
    arrived = [this]() {
        // Sound echoes of the markers that end the doubt, and the reply.
        far->write(received.at(1) == 8 ? received : hex(readReply));
        received.clear();
    };
    expectTold(true, " is open");
    read();
    expectReply();
}

TEST_F(ALineOverANetwork, IsTriedUntilThereIsSomebodyAndTheReasonIsToldOnce)
{
    server.close();
    begin();
    expectTold(false,
               " cannot be used: 127.0.0.1 refuses the connection: nothing listens on port " +
                   std::to_string(port) + " there");
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost, port));
    expectTold(true, " is open");
}

TEST_F(ALineOverANetwork, SaysWhyItIsNotMadeAgain)
{
    begin();
    expectTold(true, " is open");
    server.close();
    far->abort();
    expectTold(false, " is gone");
    expectTold(false,
               " cannot be used: 127.0.0.1 refuses the connection: nothing listens on port " +
                   std::to_string(port) + " there");
}

TEST_F(ALineOverANetwork, IsNotOpenWhereTheOtherSideClosesItAtOnce)
{
    closesAtOnce = true;
    begin();
    expectTold(false, " cannot be used: 127.0.0.1 closes the connection: another program may be "
                      "using it, or nothing is behind it");
    ASSERT_TRUE(waitUntil([this]() { return connections == 2; }));
    closesAtOnce = false;
    expectTold(true, " is open");
}

TEST_F(ALineOverANetwork, ThatWasOfNoUseHasToStayForLongerTheNextTime)
{
    begin();
    expectTold(true, " is open");
    // It answers whatever it gets with words of its own, and ends.
    arrived = [this]() {
        far->write("HTTP/1.1 400 Bad Request\r\n\r\n");
        far->disconnectFromHost();
    };
    read();
    expectTold(false, " is gone");
    ASSERT_TRUE(waitUntil([this]() { return connections == 2; }));
    const Clock::time_point before = Clock::now();
    expectTold(true, " is open");
    EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(800));
}

TEST_F(ALineOverANetwork, SaysThatANameIsNotFound)
{
    // Longer than a name can be: nobody is asked for it.
    const QString name(70, QLatin1Char('x'));
    begin(name);
    ASSERT_TRUE(waitUntil([this]() { return !told.empty(); }));
    EXPECT_EQ(told.front().second, "port tcp://" + name.toStdString() + ":" + std::to_string(port) +
                                       " cannot be used: the name " + name.toStdString() +
                                       " is not found");
}

TEST_F(ALineOverANetwork, CanBeLeftWhileItIsBeingConnected)
{
    begin();
    line.reset();
    begin();
    ASSERT_TRUE(waitUntil([this]() { return connections > 0; }));
    line.reset();
    EXPECT_TRUE(told.empty());
}

// An option of the line's own socket, by the port that the far end sees it at; -1: there is none.
int optionOf(const QTcpSocket& far, int level, int option)
{
    for (int descriptor = 0; descriptor < 1024; ++descriptor) {
        sockaddr_in name = {};
        socklen_t size = sizeof name;
        if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&name), &size) != 0 ||
            name.sin_family != AF_INET || ntohs(name.sin_port) != far.peerPort())
            continue;
        int value = 0;
        size = sizeof value;
        return getsockopt(descriptor, level, option, &value, &size) == 0 ? value : -1;
    }
    return -1;
}

// A host that was switched off says nothing: only the kernel's questions find that out.
TEST_F(ALineOverANetwork, IsWatchedByTheKernelWhileNothingIsSent)
{
    begin();
    expectTold(true, " is open");
    EXPECT_EQ(optionOf(*far, SOL_SOCKET, SO_KEEPALIVE), 1);
    EXPECT_EQ(optionOf(*far, IPPROTO_TCP, TCP_KEEPIDLE), 5);
    EXPECT_EQ(optionOf(*far, IPPROTO_TCP, TCP_USER_TIMEOUT), 10000);
    EXPECT_EQ(optionOf(*far, IPPROTO_TCP, TCP_NODELAY), 1);
}

TEST_F(ALineOverANetwork, LeadsToAnIpv6Host)
{
    server.close();
    if (!server.listen(QHostAddress::LocalHostIPv6, port))
        FAIL() << "this machine has no ::1";
    begin(QStringLiteral("[::1]"));
    ASSERT_TRUE(waitUntil([this]() { return !told.empty(); }));
    EXPECT_EQ(told.front().second, "port tcp://[::1]:" + std::to_string(port) + " is open");
}

} // namespace

} // namespace dov417
