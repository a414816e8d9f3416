#include "link/serial_line.h"

#include <algorithm>
#include <utility>

#include "line/failure.h"
#include "link/exchange.h"
#include "link/network_address.h"
#include "link/network_port.h"
#include "link/serial_port.h"
#include "link/tcp_exchange.h"

namespace dov417 {

namespace {

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
    settings.stationNames = line.stationNames;
    settings.bytesTakeTime = !parseNetworkAddress(line.device.toStdString());
    return settings;
}

} // namespace

SerialLine::SerialLine(const LineSettings& settings, const LineObserver& observer)
    : settings_(settings), observer_(observer),
      timer_([this]() { exchange_->timerDue(Clock::now()); })
{
    const ExchangeLine line{[this](const QByteArray& bytes) { port_->write(bytes); },
                            [this]() { return port_->bytesWait(); },
                            [this](Clock::time_point when) { wakeAt(when); },
                            [this]() { timer_.cancel(); },
                            observer.sent,
                            observer.markerEnded,
                            observer.stray,
                            observer.notice,
                            observer.doubt,
                            [this]() { useless(); }};
    const PortEvents events{[this]() { opened(); },
                            [this](const QString& reason) { refused(reason); },
                            [this](const QByteArray& bytes) {
                                exchange_->bytesCame(bytes, Clock::now());
                                return exchange_->wasSound();
                            },
                            [this]() { gone(); }};
    const QString& device = settings_.device;
    const std::optional<NetworkAddress> address = parseNetworkAddress(device.toStdString());
    if (address)
        port_ = std::make_unique<NetworkPort>(device, *address, events);
    else
        port_ = std::make_unique<SerialPort>(device, settings_.wire, events, PortUse::talking,
                                             settings_.direction);
    if (address && address->isModbusTcp)
        exchange_ = std::make_unique<TcpExchange>(line);
    else
        exchange_ = std::make_unique<Exchange>(line);
    if (!timer_.isValid())
        throw Failure("the system has no timer left");
    reopenTimer_.setSingleShot(true);
    reopenTimer_.setInterval(port_->pause());
    QObject::connect(&reopenTimer_, &QTimer::timeout, &reopenTimer_, [this]() { reopen(); });
}

SerialLine::~SerialLine() = default;

bool SerialLine::isOpen() const
{
    return exchange_->isRunning();
}

void SerialLine::sendNoMore()
{
    exchange_->sendNoMore();
}

Clock::time_point SerialLine::quietAt() const
{
    return exchange_->quietAt();
}

std::vector<StationTime> SerialLine::stationTimes() const
{
    return exchange_->stationTimes();
}

Micros SerialLine::wireTime() const
{
    return exchange_->wireTime();
}

Books SerialLine::unanswered() const
{
    return exchange_->books();
}

void SerialLine::awaitLate(const Books& earlier)
{
    exchange_->awaitLate(earlier);
}

bool SerialLine::open(QString* reason)
{
    const Opening opening = port_->open(reason);
    if (opening == Opening::done)
        opened();
    return opening != Opening::refused;
}

void SerialLine::opened()
{
    exchange_->start(exchangeSettings(settings_), Clock::now());
    observer_.port(true, QStringLiteral("port %1 is open").arg(port_->name()));
}

void SerialLine::refused(const QString& reason)
{
    reopenTimer_.start();
    // That it is gone has been said.
    if (reason != lastReason_ && !port_->isAway()) {
        lastReason_ = reason;
        observer_.port(false, reason);
    }
}

void SerialLine::reopen()
{
    QString reason;
    if (!open(&reason))
        refused(reason);
}

void SerialLine::gone()
{
    exchange_->stop();
    lastReason_.clear();
    observer_.port(false, QStringLiteral("port %1 is gone").arg(port_->name()));
    reopenTimer_.start();
}

// What cannot be understood cannot be read on from where it ends, either.
void SerialLine::useless()
{
    if (!wasUseless_)
        observer_.notice("port " + port_->name().toStdString() +
                         " sends what is no Modbus TCP: the connection is closed and made again");
    wasUseless_ = true;
    port_->giveUp();
}

void SerialLine::transact(const Transmission& request, LineProtocol::Done done)
{
    exchange_->transact(request, std::move(done), Clock::now());
}

void SerialLine::wakeAt(Clock::time_point when)
{
    timer_.wakeAt(when.time_since_epoch().count());
}

} // namespace dov417
