#include "session/single_request.h"

#include <utility>

#include "line/failure.h"
#include "line/frame_bytes.h"
#include "line/frame_length.h"

namespace dov417 {

namespace {

constexpr int readRequestLength = 8;

} // namespace

Transmission transmissionOf(const QByteArray& frame)
{
    Transmission transmission;
    transmission.sent = frame;
    transmission.request.station = stationOf(frame);
    const int length = lengthOfReplyTo(frame);
    if (transmission.request.station > 0)
        transmission.replyLength = length == neverTold ? untoldLength : length;
    if (transmission.isRead() && frame.size() == readRequestLength) {
        const int units = wordAt(frame, quantityIndex);
        transmission.request.length = functionOf(frame) <= readInputs ? units / bitsPerWord : units;
    }
    return transmission;
}

SingleRequest::SingleRequest(const QByteArray& frame, const LineSettings& settings,
                             const LineObserver& observer, std::function<void()> done)
    : told([](const Transmission&) {}), request_(transmissionOf(frame)), done_(std::move(done)),
      port_(observer.port), line_(settings, {observer.sent, observer.markerEnded, observer.stray,
                                             observer.notice, observer.doubt,
                                             [this](bool open, const QString& message) {
                                                 port_(open, message);
                                                 portChanged(open);
                                             }}),
      leaving_([this]() { return line_.isOpen() ? line_.quietAt() : Clock::time_point(); })
{
}

void SingleRequest::start()
{
    QString reason;
    if (!line_.open(&reason))
        throw Failure(reason.toStdString());
}

void SingleRequest::leave()
{
    line_.sendNoMore();
    if (!leaving_.isUnderWay())
        leaving_.begin(done_);
}

const std::optional<Transmission>& SingleRequest::ended() const
{
    return ended_;
}

void SingleRequest::portChanged(bool open)
{
    if (!open || hasBegun_) {
        leave();
        return;
    }
    hasBegun_ = true;
    line_.transact(request_, [this](const Transmission& transmission) {
        ended_ = transmission;
        told(transmission);
        leave();
    });
}

} // namespace dov417
