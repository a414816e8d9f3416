#include "session/single_request.h"

#include <utility>

#include "line/crc16.h"
#include "line/failure.h"
#include "line/frame_bytes.h"
#include "line/frame_length.h"

namespace dov417 {

namespace {

constexpr int readRequestLength = 8;

// The answer to a write of one value is the request itself, and so is what an adapter hears of its
// own sending. A read tells which adapter it is.
bool looksLikeItsEcho(const Transmission& request)
{
    return request.replyLength == request.sent.size();
}

Transmission oneRegister(int station)
{
    QByteArray frame;
    frame.append(static_cast<char>(station));
    return transmissionOf(withCrc(frame + QByteArray::fromHex("0300000001")));
}

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
    if (!looksLikeItsEcho(request_)) {
        send();
        return;
    }
    line_.transact(oneRegister(request_.request.station), [this](const Transmission& read) {
        told(read);
        if (!leaving_.isUnderWay())
            send();
    });
}

void SingleRequest::send()
{
    line_.transact(request_, [this](const Transmission& transmission) {
        ended_ = transmission;
        told(transmission);
        leave();
    });
}

} // namespace dov417
