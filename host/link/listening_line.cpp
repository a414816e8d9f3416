#include "link/listening_line.h"

#include <algorithm>

#include "line/failure.h"

namespace dov417 {

ListeningLine::ListeningLine(const LineSettings& settings, const ListeningEvents& events)
    : events_(events), gap_(std::max(settings.replyGap,
                                     std::chrono::round<Micros>(settings.wire.interFrameDelay()))),
      listener_(settings.wire, settings.horizon, events.heard),
      silence_([this]() { listener_.silence(); }),
      port_(settings.device, settings.wire,
            PortEvents{nullptr, nullptr,
                       [this](const QByteArray& bytes) {
                           came(bytes);
                           return true;
                       },
                       [this]() { gone(); }},
            PortUse::listening)
{
    if (!silence_.isValid())
        throw Failure("the system has no timer left");
    reopenTimer_.setSingleShot(true);
    reopenTimer_.setInterval(port_.pause());
    QObject::connect(&reopenTimer_, &QTimer::timeout, &reopenTimer_, [this]() { reopen(); });
}

void ListeningLine::open()
{
    QString reason;
    if (port_.open(&reason) != Opening::done)
        throw Failure(reason.toStdString());
    events_.port(true, "port " + port_.name().toStdString() + " is open");
}

void ListeningLine::end()
{
    silence_.cancel();
    listener_.silence();
}

void ListeningLine::came(const QByteArray& bytes)
{
    using std::chrono::nanoseconds; // steady_clock is the timer's clock here
    const Clock::time_point now = Clock::now();
    listener_.bytesCame(bytes, now);
    if (listener_.isWaiting())
        silence_.wakeAt(
            std::chrono::duration_cast<nanoseconds>((now + gap_).time_since_epoch()).count());
    else
        silence_.cancel();
}

void ListeningLine::gone()
{
    end();
    events_.port(false, "port " + port_.name().toStdString() + " is gone");
    reopenTimer_.start();
}

void ListeningLine::reopen()
{
    QString reason;
    if (port_.open(&reason) == Opening::done)
        events_.port(true, "port " + port_.name().toStdString() + " is open");
    else
        reopenTimer_.start();
}

} // namespace dov417
