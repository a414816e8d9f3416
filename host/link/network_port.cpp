#include "link/network_port.h"

#include <QNetworkProxy>
#include <algorithm>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace dov417 {

namespace {

constexpr std::chrono::milliseconds connectPatience(10000);
constexpr std::chrono::milliseconds minTrial(100);
constexpr std::chrono::milliseconds maxTrial(10000);
constexpr int trialGrowth = 10;
constexpr std::chrono::milliseconds reconnectPause(1000);

// A host that has been switched off says nothing, not even that it is gone: what is not
// acknowledged for so long ends the connection, and so does silence to the questions that are asked
// while nothing is sent. What is on its way for longer could be answered when nobody expects it.
constexpr int acknowledgedWithinMs = 10000;
constexpr int askedAfterSeconds = 5;
constexpr int askedEverySeconds = 2;

void setOption(const QTcpSocket& socket, int option, int value)
{
    setsockopt(static_cast<int>(socket.socketDescriptor()), IPPROTO_TCP, option, &value,
               sizeof value);
}

} // namespace

NetworkPort::NetworkPort(const QString& name, const NetworkAddress& address,
                         const PortEvents& events)
    : name_(name), address_(address), events_(events)
{
    patience_.setSingleShot(true);
    patience_.setInterval(connectPatience);
    QObject::connect(&patience_, &QTimer::timeout, &patience_, [this]() {
        ended(QStringLiteral("%1 does not answer").arg(QString::fromStdString(address_.host)));
    });
    trial_.setSingleShot(true);
    trial_.setInterval(minTrial);
    QObject::connect(&trial_, &QTimer::timeout, &trial_, [this]() { stayed(); });
}

NetworkPort::~NetworkPort()
{
    if (socket_)
        socket_->disconnect();
}

Opening NetworkPort::open(QString*)
{
    socket_ = std::make_unique<QTcpSocket>();
    QTcpSocket* const socket = socket_.get();
    socket->setProxy(QNetworkProxy::NoProxy);
    QObject::connect(socket, &QTcpSocket::connected, socket, [this]() { connected(); });
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [this]() {
        const QByteArray bytes = socket_->readAll();
        if (!isOpen_ || bytes.isEmpty())
            return;
        wasOfUse_ = events_.came(bytes);
        if (wasOfUse_)
            trial_.setInterval(minTrial);
    });
    QObject::connect(socket, &QTcpSocket::errorOccurred, socket,
                     [this](QAbstractSocket::SocketError error) { ended(why(error)); });
    patience_.start();
    // An address that needs no look-up may be refused at once: not from within this call.
    QMetaObject::invokeMethod(
        socket,
        [this, socket]() {
            socket->connectToHost(QString::fromStdString(address_.host),
                                  static_cast<quint16>(address_.port));
        },
        Qt::QueuedConnection);
    return Opening::underWay;
}

void NetworkPort::connected()
{
    patience_.stop();
    socket_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket_->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    setOption(*socket_, TCP_KEEPIDLE, askedAfterSeconds);
    setOption(*socket_, TCP_KEEPINTVL, askedEverySeconds);
    setOption(*socket_, TCP_USER_TIMEOUT, acknowledgedWithinMs);
    trial_.start();
}

// What came until now was for somebody else.
void NetworkPort::stayed()
{
    socket_->readAll();
    isOpen_ = true;
    wasOfUse_ = false;
    events_.opened();
}

void NetworkPort::ended(const QString& reason)
{
    patience_.stop();
    trial_.stop();
    // The error comes from within the socket's own code, so the socket must outlive this call.
    socket_->disconnect();
    socket_.release()->deleteLater();
    const bool wasOpen = isOpen_;
    isOpen_ = false;
    if (wasOpen && !wasOfUse_)
        trial_.setInterval(std::min(maxTrial, trialGrowth * trial_.intervalAsDuration()));
    if (wasOpen)
        events_.gone();
    else
        events_.refused(QStringLiteral("port %1 cannot be used: %2").arg(name_, reason));
}

QString NetworkPort::why(QAbstractSocket::SocketError error) const
{
    const QString host = QString::fromStdString(address_.host);
    switch (error) {
    case QAbstractSocket::HostNotFoundError:
        return QStringLiteral("the name %1 is not found").arg(host);
    case QAbstractSocket::ConnectionRefusedError:
        return QStringLiteral("%1 refuses the connection: nothing listens on port %2 there")
            .arg(host)
            .arg(address_.port);
    case QAbstractSocket::SocketTimeoutError:
        return QStringLiteral("%1 does not answer").arg(host);
    case QAbstractSocket::RemoteHostClosedError:
        return QStringLiteral(
                   "%1 closes the connection: another program may be using it, or nothing is "
                   "behind it")
            .arg(host);
    default:
        return socket_->errorString().toLower();
    }
}

void NetworkPort::write(const QByteArray& bytes)
{
    // cppcheck-suppress nullPointerRedundantCheck
    socket_->write(bytes);
    if (socket_) // a failed write may have told us that the connection is gone
        socket_->flush();
}

bool NetworkPort::bytesWait() const
{
    int count = 0;
    const auto descriptor = static_cast<int>(socket_->socketDescriptor());
    return ioctl(descriptor, FIONREAD, &count) == 0 && count > 0;
}

void NetworkPort::giveUp()
{
    ended(QString());
}

QString NetworkPort::name() const
{
    return name_;
}

bool NetworkPort::isAway() const
{
    return false;
}

std::chrono::milliseconds NetworkPort::pause() const
{
    return reconnectPause;
}

} // namespace dov417
