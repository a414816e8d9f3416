#include "link/serial_port.h"

#include <QFileInfo>
#include <QSerialPort>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "line/pseudo_terminal.h"
#include "link/port_list.h"

namespace dov417 {

namespace {

constexpr std::chrono::milliseconds reopenPause(200);

QString whyNotOpened(const QString& device, const QString& systemText)
{
    if (!QFileInfo::exists(device))
        return QStringLiteral("there is no port %1").arg(device);
    if (access(device.toLocal8Bit().constData(), R_OK | W_OK) != 0) {
        const QString refused = QStringLiteral("permission refused on port %1").arg(device);
        const std::string group = groupThatMayOpen(device.toStdString());
        return group.empty()
                   ? refused
                   : refused + QStringLiteral(": it belongs to group %1; 'sudo adduser $USER %1' "
                                              "and a new login let you in")
                                   .arg(QString::fromStdString(group));
    }
    const QFileInfo file(device);
    return QStringLiteral("port %1 cannot be used: %2")
        .arg(device, file.isFile()  ? QStringLiteral("it is a file")
                     : file.isDir() ? QStringLiteral("it is a folder")
                                    : systemText);
}

QSerialPort::Parity parityOf(Parity parity)
{
    return parity == Parity::even  ? QSerialPort::EvenParity
           : parity == Parity::odd ? QSerialPort::OddParity
                                   : QSerialPort::NoParity;
}

} // namespace

// QSerialPort takes a relative path for a name of /dev too.
SerialPort::SerialPort(const QString& device, const SerialFormat& format, const PortEvents& events,
                       PortUse use, const Rs485& direction)
    : device_(device.contains(QLatin1Char('/')) ? QFileInfo(device).absoluteFilePath()
                                                : QStringLiteral("/dev/") + device),
      format_(format), events_(events), use_(use), direction_(direction)
{
}

SerialPort::~SerialPort()
{
    if (port_)
        port_->disconnect();
}

Opening SerialPort::open(QString* reason)
{
    auto port = std::make_unique<QSerialPort>();
    port->setPortName(device_);
    if (!port->open(use_ == PortUse::listening ? QIODevice::ReadOnly : QIODevice::ReadWrite)) {
        *reason = port->error() == QSerialPort::PermissionError &&
                          access(device_.toLocal8Bit().constData(), R_OK | W_OK) == 0
                      ? QStringLiteral("port %1 is busy: another program uses it").arg(device_)
                      : whyNotOpened(device_, port->errorString());
        return Opening::refused;
    }
    // Exclusive access does not hold against root; the lock does, against those who ask for it.
    if (flock(port->handle(), LOCK_EX | LOCK_NB) != 0) {
        *reason = QStringLiteral("port %1 is busy: another program uses it").arg(device_);
        return Opening::refused;
    }
    port_ = std::move(port);
    if (!applyFormat(reason) ||
        (direction_.isWanted && !driveDirection(port_->handle(), device_, direction_, reason))) {
        port_.reset();
        return Opening::refused;
    }
    port_->clear();
    QObject::connect(port_.get(), &QSerialPort::readyRead, port_.get(), [this]() {
        const QByteArray bytes = port_->readAll();
        if (!bytes.isEmpty())
            events_.came(bytes);
    });
    QObject::connect(port_.get(), &QSerialPort::errorOccurred, port_.get(),
                     [this](QSerialPort::SerialPortError error) {
                         if (error != QSerialPort::NoError && error != QSerialPort::TimeoutError)
                             lost();
                     });
    return Opening::done;
}

bool SerialPort::setFormat(const SerialFormat& format, QString* reason)
{
    format_ = format;
    return applyFormat(reason);
}

bool SerialPort::applyFormat(QString* reason)
{
    // Its far end may go by the speed.
    if (isPseudoTerminal(device_))
        return port_->setBaudRate(format_.baudRate);
    const bool taken =
        port_->setBaudRate(format_.baudRate) &&
        port_->setDataBits(static_cast<QSerialPort::DataBits>(format_.dataBits)) &&
        port_->setParity(parityOf(format_.parity)) &&
        port_->setStopBits(format_.stopBits == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop) &&
        port_->setFlowControl(QSerialPort::NoFlowControl);
    if (!taken)
        *reason =
            QStringLiteral("port %1 refuses %2 baud, %3 data bits, parity %4, %5 stop bits: %6")
                .arg(device_)
                .arg(format_.baudRate)
                .arg(format_.dataBits)
                .arg(QLatin1Char(static_cast<char>(format_.parity)))
                .arg(format_.stopBits)
                .arg(port_->errorString());
    return taken;
}

// However it has gone, pulled out, switched off or closed at its far end: the system has many words
// for it.
void SerialPort::lost()
{
    // The error comes from within the port's own code, so the port must outlive this call. Its lock
    // must not: the line may be opened again before the event loop comes to delete it.
    port_->disconnect();
    port_->close();
    port_.release()->deleteLater();
    events_.gone();
}

void SerialPort::write(const QByteArray& bytes)
{
    // cppcheck-suppress nullPointerRedundantCheck
    port_->write(bytes);
    if (port_) // a failed write may have told us that the port is gone
        port_->flush();
}

bool SerialPort::bytesWait() const
{
    int count = 0;
    return ioctl(port_->handle(), FIONREAD, &count) == 0 && count > 0;
}

void SerialPort::giveUp()
{
    lost();
}

QString SerialPort::name() const
{
    return device_;
}

bool SerialPort::isAway() const
{
    return !QFileInfo::exists(device_);
}

std::chrono::milliseconds SerialPort::pause() const
{
    return reopenPause;
}

} // namespace dov417
