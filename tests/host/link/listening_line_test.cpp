#include "link/listening_line.h"

#include <QTcpServer>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "exchange.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

class AListeningLine : public ::testing::Test {
protected:
    void begin(const QString& device)
    {
        LineSettings settings;
        settings.device = device;
        line = std::make_unique<ListeningLine>(
            settings, ListeningEvents{[this](const Heard& each) { heard.push_back(each); },
                                      [this](bool isOpen, const std::string& message) {
                                          opened.push_back(isOpen);
                                          messages.push_back(message);
                                      }});
        line->open();
    }

    std::vector<Heard> heard;
    std::vector<bool> opened;
    std::vector<std::string> messages;
    std::unique_ptr<ListeningLine> line;
};

TEST_F(AListeningLine, IsToldToBeOpenOnceBytesCanCome)
{
    PtySlave slave;
    begin(slave.port());
    EXPECT_EQ(opened, std::vector<bool>{true});
    slave.send(hex(readRequest) + hex(readReply));
    ASSERT_TRUE(waitUntil([this]() { return heard.size() == 2; }));
    EXPECT_EQ(heard.at(0).as, HeardAs::request);
    EXPECT_EQ(heard.at(1).as, HeardAs::reply);
    EXPECT_EQ(heard.at(1).request, hex(readRequest));
}

// The master goes on while the port is away: the reply may be to what it has asked meanwhile.
TEST_F(AListeningLine, ExplainsNoReplyByARequestOfBeforeThePortWasAway)
{
    PtySlave slave;
    begin(slave.port());
    slave.send(hex(readRequest));
    ASSERT_TRUE(waitUntil([this]() { return heard.size() == 1; }));
    slave.unplug();
    ASSERT_TRUE(waitUntil([this]() { return opened.size() == 2; }));
    slave.plug();
    ASSERT_TRUE(waitUntil([this]() { return opened.size() == 3; }));
    slave.send(hex(readReply));
    ASSERT_TRUE(waitUntil([this]() { return heard.size() == 2; }));
    EXPECT_EQ(heard.at(1).as, HeardAs::unclear);
}

TEST_F(AListeningLine, OverANetworkIsOpenOnceTheConnectionIsMade)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    begin(QStringLiteral("tcp://127.0.0.1:%1").arg(server.serverPort()));
    EXPECT_EQ(opened, std::vector<bool>());
    ASSERT_TRUE(waitUntil([this]() { return !opened.empty(); }));
    EXPECT_EQ(opened, std::vector<bool>{true});
}

TEST_F(AListeningLine, SaysOnceWhyItIsNotOpenAndTriesOn)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    const quint16 port = server.serverPort();
    const std::string name = "port tcp://127.0.0.1:" + std::to_string(port);
    server.close();
    begin(QString::fromStdString(name.substr(name.find("tcp"))));
    ASSERT_TRUE(waitUntil([this]() { return !opened.empty(); }));
    EXPECT_EQ(messages.front(), name +
                                    " cannot be used: 127.0.0.1 refuses the connection: "
                                    "nothing listens on port " +
                                    std::to_string(port) + " there");
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost, port));
    ASSERT_TRUE(waitUntil([this]() { return opened.back(); }));
    EXPECT_EQ(messages, (std::vector<std::string>{messages.front(), name + " is open"}));
}

} // namespace

} // namespace dov417
