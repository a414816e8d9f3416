#include "link/serial_line.h"

#include <QFileInfo>
#include <QSerialPort>
#include <algorithm>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

#include "line/failure.h"
#include "line/pseudo_terminal.h"

namespace dov417 {

namespace {

constexpr int reopenMilliseconds = 200;

ExchangeSettings exchangeSettings(const LineSettings& line)
{
    ExchangeSettings settings;
    settings.wire = line.wire;
    settings.timeout = {line.timeout, line.maxTimeout, line.isTimeoutFixed, line.minTimeout};
    settings.turnaround = line.turnaround;
    settings.replyGap =
        std::max(line.replyGap, std::chrono::round<Micros>(line.wire.interFrameDelay()));
    settings.horizon = line.horizon;
    settings.mayMark = line.mayMark;
    settings.isShared = line.isShared;
    return settings;
}

QString whyNotOpened(const QString& device, const QString& systemText)
{
    const QFileInfo file(device);
    if (!file.exists())
        return QStringLiteral("there is no port %1").arg(device);
    if (access(device.toLocal8Bit().constData(), R_OK | W_OK) != 0) {
        const QString refused = QStringLiteral("permission refused on port %1").arg(device);
        const QFile::Permissions group = QFile::ReadGroup | QFile::WriteGroup;
        return (file.permissions() & group) != group
                   ? refused
                   : refused + QStringLiteral(": it belongs to group %1; 'sudo adduser $USER %1' "
                                              "and a new login let you in")
                                   .arg(file.group());
    }
    return QStringLiteral("port %1 cannot be used: %2").arg(device, systemText);
}

QSerialPort::Parity parityOf(Parity parity)
{
    return parity == Parity::even  ? QSerialPort::EvenParity
           : parity == Parity::odd ? QSerialPort::OddParity
                                   : QSerialPort::NoParity;
}

} // namespace

SerialLine::SerialLine(const LineSettings& settings, const LineObserver& observer)
    : settings_(settings), observer_(observer),
      timer_([this]() { exchange_.timerDue(Clock::now()); }),
      exchange_({[this](const QByteArray& bytes) { write(bytes); },
                 [this]() { return bytesWait(); }, [this](Clock::time_point when) { wakeAt(when); },
                 [this]() { timer_.cancel(); }, observer.sent, observer.markerEnded, observer.stray,
                 observer.notice, observer.doubt})
{
    // A bare name is one of /dev. QSerialPort takes a relative path for one too.
    QString& device = settings_.device;
    device = device.contains(QLatin1Char('/')) ? QFileInfo(device).absoluteFilePath()
                                               : QStringLiteral("/dev/") + device;
    if (!timer_.isValid())
        throw Failure("the system has no timer left");
    reopenTimer_.setInterval(reopenMilliseconds);
    QObject::connect(&reopenTimer_, &QTimer::timeout, &reopenTimer_, [this]() { reopen(); });
}

SerialLine::~SerialLine()
{
    if (port_)
        port_->disconnect();
}

bool SerialLine::isOpen() const
{
    return exchange_.isRunning();
}

void SerialLine::sendNoMore()
{
    exchange_.sendNoMore();
}

Clock::time_point SerialLine::quietAt() const
{
    return exchange_.quietAt();
}

std::vector<StationTime> SerialLine::stationTimes() const
{
    return exchange_.stationTimes();
}

Micros SerialLine::wireTime() const
{
    return exchange_.wireTime();
}

Books SerialLine::unanswered() const
{
    return exchange_.books();
}

void SerialLine::awaitLate(const Books& earlier)
{
    exchange_.awaitLate(earlier);
}

bool SerialLine::open(QString* reason)
{
    if (!tryOpen(reason))
        return false;
    observer_.port(true, QStringLiteral("port %1 is open").arg(settings_.device));
    return true;
}

void SerialLine::reopen()
{
    QString reason;
    if (open(&reason)) {
        reopenTimer_.stop();
    } else if (reason != lastReason_ && QFileInfo::exists(settings_.device)) {
        // That it is gone has been said.
        lastReason_ = reason;
        observer_.port(false, reason);
    }
}

bool SerialLine::tryOpen(QString* reason)
{
    auto port = std::make_unique<QSerialPort>();
    port->setPortName(settings_.device);
    if (!port->open(QIODevice::ReadWrite)) {
        *reason =
            port->error() == QSerialPort::PermissionError &&
                    access(settings_.device.toLocal8Bit().constData(), R_OK | W_OK) == 0
                ? QStringLiteral("port %1 is busy: another program uses it").arg(settings_.device)
                : whyNotOpened(settings_.device, port->errorString());
        return false;
    }
    // Exclusive access does not hold against root; the lock does, against those who ask for it.
    if (flock(port->handle(), LOCK_EX | LOCK_NB) != 0) {
        *reason = QStringLiteral("port %1 is busy: another program uses it").arg(settings_.device);
        return false;
    }
    port_ = std::move(port);
    if (!applyFormat(reason)) {
        port_.reset();
        return false;
    }
    port_->clear();
    exchange_.start(exchangeSettings(settings_), Clock::now());
    QObject::connect(port_.get(), &QSerialPort::readyRead, port_.get(), [this]() {
        const QByteArray bytes = port_->readAll();
        if (!bytes.isEmpty())
            exchange_.bytesCame(bytes, Clock::now());
    });
    QObject::connect(port_.get(), &QSerialPort::errorOccurred, port_.get(),
                     [this](QSerialPort::SerialPortError error) {
                         if (error != QSerialPort::NoError && error != QSerialPort::TimeoutError)
                             lost();
                     });
    return true;
}

bool SerialLine::applyFormat(QString* reason)
{
    if (isPseudoTerminal(settings_.device))
        return true;
    const bool taken =
        port_->setBaudRate(settings_.wire.baudRate) &&
        port_->setDataBits(static_cast<QSerialPort::DataBits>(settings_.wire.dataBits)) &&
        port_->setParity(parityOf(settings_.wire.parity)) &&
        port_->setStopBits(settings_.wire.stopBits == 2 ? QSerialPort::TwoStop
                                                        : QSerialPort::OneStop) &&
        port_->setFlowControl(QSerialPort::NoFlowControl);
    if (!taken)
        *reason =
            QStringLiteral("port %1 refuses %2 baud, %3 data bits, parity %4, %5 stop bits: %6")
                .arg(settings_.device)
                .arg(settings_.wire.baudRate)
                .arg(settings_.wire.dataBits)
                .arg(QLatin1Char(static_cast<char>(settings_.wire.parity)))
                .arg(settings_.wire.stopBits)
                .arg(port_->errorString());
    return taken;
}

// However it has gone, pulled out, switched off or closed at its far end: the system has many words
// for it.
void SerialLine::lost()
{
    exchange_.stop();
    // The error comes from within the port's own code, so the port must outlive this call. Its lock
    // must not: the line may be opened again before the event loop comes to delete it.
    port_->disconnect();
    port_->close();
    port_.release()->deleteLater();
    lastReason_.clear();
    observer_.port(false, QStringLiteral("port %1 is gone").arg(settings_.device));
    reopenTimer_.start();
}

void SerialLine::transact(const Transmission& request, Exchange::Done done)
{
    exchange_.transact(request, std::move(done), Clock::now());
}

void SerialLine::write(const QByteArray& bytes)
{
    // cppcheck-suppress nullPointerRedundantCheck
    port_->write(bytes);
    if (port_) // a failed write may have told us that the port is gone
        port_->flush();
}

bool SerialLine::bytesWait() const
{
    int count = 0;
    return ioctl(port_->handle(), FIONREAD, &count) == 0 && count > 0;
}

void SerialLine::wakeAt(Clock::time_point when)
{
    using std::chrono::nanoseconds; // steady_clock is the timer's clock here
    timer_.wakeAt(std::chrono::duration_cast<nanoseconds>(when.time_since_epoch()).count());
}

} // namespace dov417
