// What comes in: whose reply is it, and what does it tell of its station?
#include "link/exchange.h"

#include <algorithm>
#include <utility>

#include "line/crc16.h"

namespace dov417 {

namespace {

constexpr int babbleLength = 1024; // bytes that came for one request and are no reply to it
constexpr char diagnostics = 8;

std::string milliseconds(Micros duration)
{
    return std::to_string(std::chrono::round<std::chrono::milliseconds>(duration).count()) + " ms";
}

} // namespace

void Exchange::bytesCame(const QByteArray& bytes, Clock::time_point now)
{
    gap_.came(bytes, now);
    lastActivity_ = now;
    wireTime_ += onTheWire(static_cast<int>(bytes.size()));
    Transmission& frame = isMarking_ ? marker_ : current_;
    switch (state_) {
    case State::stopped:
        break;
    case State::idle:
    case State::awaitingTurnaround:
        flushLateBytes(bytes, now);
        break;
    case State::silence:
        flushLateBytes(bytes, now);
        beginSilence(now);
        break;
    case State::listening:
    case State::awaitingReply:
        if (frame.reception.firstByte == Clock::time_point())
            frame.reception.firstByte = now;
        frame.reception.lastByte = now;
        bytesCame_ += static_cast<int>(bytes.size());
        takeArrival(collector_.add(bytes), now);
        break;
    }
}

void Exchange::takeArrival(Arrival arrival, Clock::time_point now)
{
    reportStrays(now);
    if (arrival == Arrival::incomplete) {
        if (state_ == State::listening)
            line_.wakeAt(collector_.isEmpty() ? listenEnd_ : now + gap_.value());
        else if (bytesCame_ > babbleLength)
            deadlinePassed(now);
        else
            armReplyTimer();
        return;
    }
    const LineResult result = arrival == Arrival::reply ? LineResult::reply : LineResult::exception;
    Transmission& frame = isMarking_ ? marker_ : current_;
    frame.reception.bytes = collector_.reply();
    if (!hasGoodCrc(frame.reception.bytes)) {
        // Garbled. Whose reply it was cannot be told, so that may still come.
        if (frame.reception.bytes.size() < frame.replyLength)
            gap_.ended(frame.reception.bytes, frame.replyLength, lastActivity_);
        flushBehind(now);
        if (state_ == State::listening)
            next(now);
        else if (isMarking_)
            markerFinished(LineResult::timeout, now);
        else
            finish(result);
        return;
    }
    if (!takeReply(result, now)) {
        // The reply to something else: this one's is awaited still, and may have come with it.
        collector_.begin(frame.sent, frame.replyLength);
        frame.reception = Reception();
        const QByteArray behind = std::move(behind_);
        behind_.clear();
        if (!behind.isEmpty()) {
            frame.reception.firstByte = frame.reception.lastByte = now;
            takeArrival(collector_.add(behind), now);
        } else if (state_ == State::awaitingReply)
            armReplyTimer();
        else
            next(now);
    }
}

// A sound frame that could be the reply. False if it belongs to an earlier transmission, and that
// was another request.
bool Exchange::takeReply(LineResult result, Clock::time_point now)
{
    Transmission& frame = isMarking_ ? marker_ : current_;
    const QByteArray bytes = frame.reception.bytes;
    const std::optional<OpenTransmission> answered = settle(bytes, now);
    const bool endsDoubt =
        isMarking_ && answered && (answered->number == marker_.number || !isInDoubt(now));
    if (endsDoubt) {
        flushBehind(now);
        markerFinished(result, now);
        return true;
    }
    OpenTransmission mine = openOf(current_);
    if (mine.number == 0)
        mine.number = transmissions_ + 1;
    if (isMarking_ || !answered || !books_.standsFor(*answered, mine)) {
        report({StrayKind::late, bytes, now, answered ? answered->number : 0});
        return false;
    }
    if (current_.number == 0) {
        current_.number = answered->number;
        current_.sendBegin = answered->sentAt;
        current_.sendEnd = answered->sentAt + onTheWire(static_cast<int>(current_.sent.size()));
    }
    flushBehind(now);
    current_.asOf = answered->number == mine.number ? now : answered->sentAt;
    finish(result);
    return true;
}

void Exchange::reportStrays(Clock::time_point now)
{
    for (Stray& stray : collector_.takeStrays()) {
        if (stray.kind == StrayKind::late) {
            behind_ = stray.bytes;
            continue;
        }
        stray.at = lastActivity_;
        if (stray.kind != StrayKind::echo)
            if (const auto answered = settle(stray.bytes, now)) {
                stray.kind = StrayKind::late;
                stray.answers = answered->number;
            }
        report(stray);
    }
}

void Exchange::report(const Stray& stray)
{
    astray_.add(stray);
    line_.stray(stray);
}

// What came after a frame is somebody's only once that frame is.
void Exchange::flushBehind(Clock::time_point now)
{
    const QByteArray behind = std::move(behind_);
    behind_.clear();
    if (!behind.isEmpty())
        flushLateBytes(behind, now);
}

void Exchange::flushLateBytes(const QByteArray& bytes, Clock::time_point now)
{
    const auto answered = settle(bytes, now);
    report({StrayKind::late, bytes, now, answered ? answered->number : 0});
}

// A frame came: whose answer is it, and what does it tell of the station?
std::optional<OpenTransmission> Exchange::settle(const QByteArray& frame, Clock::time_point now)
{
    if (!hasGoodCrc(frame))
        return std::nullopt;
    astray_.lineWasSound = true;
    auto answered = books_.take(frame);
    if (!answered)
        return std::nullopt;
    Station& heard = stations_.at(static_cast<unsigned char>(frame.at(0)));
    const Transmission& onLine = isMarking_ ? marker_ : current_;
    const bool inTime =
        onLine.sent == answered->sent && onLine.reception.firstByte != Clock::time_point();
    // A frame of another kind is known to have ended only some silence after its last byte.
    const Clock::time_point began = inTime ? onLine.reception.firstByte : lastActivity_;
    // Sent several times, it may be the last that is answered: a station that was switched off for
    // an hour does not take an hour.
    const Clock::time_point ended = books_.lastSent(answered->sent).value_or(answered->sentAt) +
                                    onTheWire(static_cast<int>(answered->sent.size()));
    const Micros delay = std::max(Micros(0), std::chrono::duration_cast<Micros>(began - ended));
    heard.timeout.answered(delay, settings_.timeout);
    nameIfSlow(static_cast<unsigned char>(frame.at(0)), delay);
    heard.listenUntil = now;
    if (answered->sent.at(1) == diagnostics) {
        heard.marksIgnored = 0;
        // Also a late one, to a marker that was given up.
        heard.isUnknown = heard.isUnknown && answered->number <= 0;
    } else if (heard.markFailed) {
        ++heard.marksIgnored; // it lives, and said nothing to the marker before
    }
    heard.markFailed = false;
    return answered;
}

// A person wonders why it is slow, or why values do not come: said once.
void Exchange::nameIfSlow(unsigned char station, Micros delay)
{
    const TimeoutSettings& settings = settings_.timeout;
    Station& slow = stations_.at(station);
    if (slow.isNamed || delay <= settings.initial)
        return;
    slow.isNamed = true;
    const bool isLearned = !settings.isFixed && delay < settings.max;
    line_.notice("station " + std::to_string(station) + " answers after " + milliseconds(delay) +
                 (isLearned          ? ": waiting longer from now on"
                  : settings.isFixed ? ", later than it is waited for: raise --timeout"
                                     : ", later than it is waited for: raise --timeout-max"));
}

} // namespace dov417
