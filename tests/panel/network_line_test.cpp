// A line over a network, typed into the field of the first page: a serial line behind a device
// server, and Modbus TCP.
#include <QLineEdit>
#include <QRandomGenerator>
#include <QSocketNotifier>
#include <QTcpServer>
#include <QTcpSocket>
#include <QToolButton>
#include <fcntl.h>
#include <unistd.h>

#include "line/crc16.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::HasSubstr;

// A Modbus TCP header has these before the station: a number, 0, and a length.
constexpr int tcpHeaderSize = 6;
constexpr int crcBytes = 2;

// Below those that the system gives to connections: another program's could take it meanwhile.
quint16 freePort()
{
    QTcpServer nobody;
    while (
        !nobody.listen(QHostAddress::LocalHost,
                       static_cast<quint16>(QRandomGenerator::global()->bounded(20000, 32000)))) {
    }
    return nobody.serverPort();
}

// In front of a controller's serial port: as a device server it carries every byte to and fro, as a
// Modbus TCP gateway whole frames, without their CRC and with a header.
class NetworkServer {
public:
    NetworkServer(const std::string& port, bool isModbusTcp, quint16 number = 0)
        : isModbusTcp_(isModbusTcp),
          serial_(::open(port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)),
          heard_(serial_, QSocketNotifier::Read)
    {
        EXPECT_GE(serial_, 0);
        EXPECT_TRUE(server_.listen(QHostAddress::LocalHost, number));
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this]() {
            client_ = server_.nextPendingConnection();
            QObject::connect(client_, &QTcpSocket::readyRead, &server_, [this]() { ask(); });
        });
        QObject::connect(&heard_, &QSocketNotifier::activated, &server_, [this]() { answer(); });
    }
    ~NetworkServer()
    {
        heard_.setEnabled(false);
        ::close(serial_);
    }
    NetworkServer(const NetworkServer&) = delete;
    NetworkServer& operator=(const NetworkServer&) = delete;

    std::string address() const
    {
        return (isModbusTcp_ ? "mbtcp://127.0.0.1:" : "tcp://127.0.0.1:") +
               std::to_string(server_.serverPort());
    }
    void hangUp()
    {
        server_.close();
        client_->disconnectFromHost();
    }

private:
    void ask()
    {
        asked_ += client_->readAll();
        if (!isModbusTcp_) {
            put(asked_);
            asked_.clear();
            return;
        }
        while (asked_.size() >= tcpHeaderSize) {
            const int size = static_cast<unsigned char>(asked_.at(tcpHeaderSize - 1));
            if (asked_.size() < tcpHeaderSize + size)
                return;
            header_ = asked_.left(tcpHeaderSize);
            put(withCrc(asked_.mid(tcpHeaderSize, size)));
            asked_.remove(0, tcpHeaderSize + size);
        }
    }
    void put(const QByteArray& bytes) const
    {
        const ssize_t written = ::write(serial_, bytes.data(), static_cast<size_t>(bytes.size()));
        EXPECT_EQ(written, bytes.size());
    }
    void answer()
    {
        char bytes[512];
        const ssize_t size = ::read(serial_, bytes, sizeof bytes);
        if (size <= 0 || !client_)
            return;
        answered_.append(bytes, static_cast<int>(size));
        if (isModbusTcp_ && !hasGoodCrc(answered_))
            return; // more is to come
        if (isModbusTcp_) {
            answered_.chop(crcBytes);
            header_[tcpHeaderSize - 1] = static_cast<char>(answered_.size());
            answered_.prepend(header_);
        }
        client_->write(answered_);
        answered_.clear();
    }

    const bool isModbusTcp_;
    const int serial_;
    QSocketNotifier heard_;
    QTcpServer server_;
    QTcpSocket* client_ = nullptr; // the server's
    QByteArray asked_;
    QByteArray answered_;
    QByteArray header_;
};

class ALineOverANetwork : public ProjectWorld {
protected:
    ALineOverANetwork()
    {
        options.set = {"R_W:100=4711"};
        controller = std::make_unique<ControllerProcess>(options);
        watch({"R_W:100"});
    }
    // With the Return key.
    void type(const std::string& address)
    {
        window.showPage(0);
        auto* const port = window.findChild<QLineEdit*>("port");
        port->selectAll();
        QTest::keyClicks(port, QString::fromStdString(address));
        QTest::keyClick(port, Qt::Key_Return);
    }
    std::string sentence() const
    {
        return window.findChild<QLabel*>("lineSentence")->text().toStdString();
    }
    std::string verdict() const
    {
        return window.findChild<QLabel*>("portVerdict")->text().toStdString();
    }
    std::string shownValue() const
    {
        return shownIn(*window.findChild<QTableView*>("values"), 2).front();
    }
    // What is typed on the page of values reaches the controller through it.
    void showsItsValuesAndWritesThem(bool isModbusTcp)
    {
        NetworkServer server(controller->port(), isModbusTcp);
        type(server.address());
        ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); })) << sentence();
        EXPECT_TRUE(window.pages().at(1)->isVisible());
        EXPECT_EQ(shownValue(), "4711");
        EXPECT_EQ(sentence(), server.address() + " answers.");
        EXPECT_FALSE(desk.state().isUnlocked);
        answerWith(&window, QMessageBox::Yes, server.address());
        QTest::mouseClick(window.findChild<QToolButton*>("lock"), Qt::LeftButton);
        ASSERT_TRUE(waitUntil([this]() { return desk.state().isUnlocked; }));
        desk.write(desk.tags().values.front(), "815");
        ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
        EXPECT_TRUE(waitUntil([this]() { return shownValue() == "815"; }));
        server.hangUp();
        EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::old); }));
        EXPECT_TRUE(waitUntil([this]() { return desk.state().phase != LinePhase::open; }))
            << sentence();
        EXPECT_EQ(held("R_W", 100), 815);
    }
};

TEST_F(ALineOverANetwork, ShowsWhatIsBehindADeviceServer)
{
    showsItsValuesAndWritesThem(false);
}

TEST_F(ALineOverANetwork, ShowsWhatSpeaksModbusTcp)
{
    showsItsValuesAndWritesThem(true);
}

TEST_F(ALineOverANetwork, IsRefusedBesideTheFieldWhereItCannotBeOne)
{
    for (const char* const wrong : {"tcp://127.0.0.1", "tcp://:4001", "mbtcp://", "tcp://host:0",
                                    "tcp://host:70000", "udp://host:4001"}) {
        type(wrong);
        EXPECT_THAT(verdict(), HasSubstr("\u2717 ")) << wrong;
        EXPECT_EQ(desk.state().phase, LinePhase::closed) << wrong;
    }
}

TEST_F(ALineOverANetwork, IsOpenedAsSoonAsSomebodyListensThere)
{
    const quint16 number = freePort();
    type("tcp://127.0.0.1:" + std::to_string(number));
    EXPECT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::away; }));
    EXPECT_THAT(sentence(), HasSubstr("nothing listens on port " + std::to_string(number) +
                                      " there; it goes on as soon as the port is back."));
    EXPECT_EQ(shownValue(), "?");
    const NetworkServer server(controller->port(), false, number);
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); })) << sentence();
    EXPECT_EQ(shownValue(), "4711");
}

} // namespace

} // namespace dov417
