#include "link/listening_line.h"

#include <algorithm>
#include <optional>

#include "line/failure.h"
#include "link/network_address.h"
#include "link/network_port.h"
#include "link/serial_port.h"

namespace dov417 {

ListeningLine::ListeningLine(const LineSettings& settings, const ListeningEvents& events)
    : events_(events), gap_(std::max(settings.replyGap,
                                     std::chrono::round<Micros>(settings.wire.interFrameDelay()))),
      listener_(settings.wire, settings.horizon, events.heard),
      silence_([this]() { listener_.silence(); })
{
    const PortEvents portEvents{[this]() { opened(); },
                                [this](const QString& reason) { refused(reason); },
                                [this](const QByteArray& bytes) {
                                    came(bytes);
                                    return true;
                                },
                                [this]() { gone(); }};
    const std::optional<NetworkAddress> address =
        parseNetworkAddress(settings.device.toStdString());
    if (address)
        port_ = std::make_unique<NetworkPort>(settings.device, *address, portEvents);
    else
        port_ = std::make_unique<SerialPort>(settings.device, settings.wire, portEvents,
                                             PortUse::listening);
    if (!silence_.isValid())
        throw Failure("the system has no timer left");
    reopenTimer_.setSingleShot(true);
    reopenTimer_.setInterval(port_->pause());
    QObject::connect(&reopenTimer_, &QTimer::timeout, &reopenTimer_, [this]() { reopen(); });
}

void ListeningLine::open()
{
    if (port_->opens())
        opened();
}

void ListeningLine::opened()
{
    lastReason_.clear();
    events_.port(true, "port " + port_->name().toStdString() + " is open");
}

// That it is gone has been said.
void ListeningLine::refused(const QString& reason)
{
    reopenTimer_.start();
    if (reason != lastReason_ && !port_->isAway()) {
        lastReason_ = reason;
        events_.port(false, reason.toStdString());
    }
}

void ListeningLine::end()
{
    listener_.silence();
}

void ListeningLine::came(const QByteArray& bytes)
{
    const Clock::time_point now = Clock::now();
    listener_.bytesCame(bytes, now);
    if (listener_.isWaiting())
        silence_.wakeAt((now + gap_).time_since_epoch().count());
    else
        silence_.cancel();
}

void ListeningLine::gone()
{
    end();
    listener_.missed();
    events_.port(false, "port " + port_->name().toStdString() + " is gone");
    reopenTimer_.start();
}

void ListeningLine::reopen()
{
    QString reason;
    const Opening opening = port_->open(&reason);
    if (opening == Opening::done)
        opened();
    else if (opening == Opening::refused)
        refused(reason);
}

} // namespace dov417
