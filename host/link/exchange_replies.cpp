// What comes in for one request, and what is thrown away of it.
#include "link/exchange.h"

#include <algorithm>
#include <utility>

#include "line/crc16.h"

namespace dov417 {

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
    case State::interFrameDelay:
        flushLateBytes(bytes, now);
        if (doubts_ != doubtsBefore_ || station().wasAdapters)
            next(now);
        else
            beginDelay(now);
        break;
    case State::holdingBack: {
        const Arrival arrival = collector_.add(bytes);
        heldBackGoesOn(isBabble(now) ? collector_.endOfFrame() : arrival, now);
        break;
    }
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

// Many frames may have come at once.
void Exchange::takeArrival(Arrival arrival, Clock::time_point now)
{
    for (bool goesOn = true; goesOn;) {
        reportStrays(now);
        goesOn = arrival != Arrival::incomplete && takeFrame(arrival, now);
        if (goesOn)
            arrival = collector_.add(std::exchange(behind_, QByteArray()));
    }
    if (arrival == Arrival::incomplete)
        awaitMore(now);
}

void Exchange::awaitMore(Clock::time_point now)
{
    if (collector_.isEmpty()) // it was an echo or noise: the reply has not begun
        (isMarking_ ? marker_ : current_).reception.firstByte = Clock::time_point();
    if (isBabble(now))
        takeBabble(now);
    else if (state_ == State::listening)
        line_.wakeAt(collector_.isEmpty() ? listenEnd_ : now + gap_.value());
    else
        armReplyTimer();
}

// Whether the reply is awaited still, and bytes are here behind this frame.
bool Exchange::takeFrame(Arrival arrival, Clock::time_point now)
{
    const LineResult result = arrival == Arrival::reply ? LineResult::reply : LineResult::exception;
    Transmission& frame = isMarking_ ? marker_ : current_;
    frame.reception.bytes = collector_.reply();
    if (!hasGoodCrc(frame.reception.bytes)) {
        garbledCame(result, now);
        return false;
    }
    if (takeReply(result, now))
        return false;
    // The reply to something else: that to this frame is still awaited, and its bytes may have come
    // together with the other.
    collector_.goOn();
    frame.reception = Reception();
    if (!behind_.isEmpty()) {
        frame.reception.firstByte = frame.reception.lastByte = now;
        return true;
    }
    if (state_ == State::awaitingReply)
        armReplyTimer();
    else
        next(now);
    return false;
}

// It closes nothing, as whose reply it was cannot be told.
void Exchange::garbledCame(LineResult result, Clock::time_point now)
{
    const Transmission& frame = isMarking_ ? marker_ : current_;
    if (frame.reception.bytes.size() < frame.replyLength)
        gap_.ended(frame.reception.bytes, frame.replyLength, lastActivity_);
    flushBehind(now);
    if (state_ == State::listening) {
        report({StrayKind::noise, frame.reception.bytes, now});
        next(now);
    } else if (isMarking_)
        markerFinished(result, now);
    else
        finish(result);
}

// Takes a sound frame that could be the reply. False if it answers another request.
bool Exchange::takeReply(LineResult result, Clock::time_point now)
{
    const Transmission& frame = isMarking_ ? marker_ : current_;
    const QByteArray bytes = frame.reception.bytes;
    const bool wasListening = state_ == State::listening;
    if (isDropped(false, now))
        return !wasListening;
    if (!isMarking_ && mayBeOthers(bytes, now)) {
        // The reply to an earlier request of ours or to another program: they look the same.
        astray_.lineWasSound = true;
        report({StrayKind::late, bytes, now, 0});
        return false;
    }
    // An exception says of no request which one was refused.
    const bool isUnclear = result == LineResult::exception && !books_.isOfOneRequest(bytes);
    const Settled settled = settle(bytes, now);
    const std::optional<OpenTransmission>& answered = settled.answered;
    if (answered && answered->number == frame.number)
        collector_.wasAnswer(bytesCame_ == bytes.size());
    if (isDropped(mayHaveBeenEchoed(), now)) // its echo may have come behind the reply
        return !wasListening;
    if (isMarking_ && answered && endsDoubt(*answered, result, now)) {
        markerAnswered(result);
        flushBehind(now);
        markerFinished(result, now);
        return true;
    }
    if (isMarking_ || !answered || isUnclear || !books_.standsFor(*answered, openOf(current_))) {
        report({settled.kindOr(StrayKind::late), bytes, now, settled.number()});
        return false;
    }
    handOn(result, *answered, now);
    return true;
}

// Drops what may be no station's reply at all but the adapter's echo, or follows a marker that only
// the adapter has answered. True if it did.
bool Exchange::isDropped(bool isBehindEcho, Clock::time_point now)
{
    learnOfAdapter();
    const bool mayBeEcho = isBehindEcho || mayBeOwnEcho(current_.reception.bytes);
    if (isMarking_ || !(station().wasAdapters || mayBeEcho))
        return false;
    report({StrayKind::late, current_.reception.bytes, now, 0});
    if (state_ != State::listening) {
        flushBehind(now);
        finish(LineResult::timeout);
    }
    return true;
}

// Hands on the reply to this request, or to the very same request sent before.
void Exchange::handOn(LineResult result, const OpenTransmission& answered, Clock::time_point now)
{
    flushBehind(now);
    if (isWary(now) && !isOfDoubt(current_)) {
        // The request went out before the first surplus came: this reply may be a copy, too.
        report({StrayKind::late, current_.reception.bytes, now, answered.number});
        finish(LineResult::timeout);
        return;
    }
    const bool isOwn = answered.number == current_.number;
    if (current_.number == 0) {
        current_.number = answered.number;
        current_.sendBegin = answered.sentAt;
        current_.sendEnd = answered.sentAt + onTheWire(static_cast<int>(current_.sent.size()));
    }
    current_.asOf = isOwn ? now : answered.sentAt;
    if (isOwn && isToBeHeldBack(now))
        holdBack(result);
    else
        finish(result);
}

bool Exchange::isToBeHeldBack(Clock::time_point now)
{
    // Noise may have come before the frame.
    const int length = static_cast<int>(current_.reception.bytes.size());
    const auto delay = now - onTheWire(length) - current_.sendEnd;
    // On a pseudo-terminal bytes take no time.
    const Micros pause = std::max(Micros(0), std::chrono::duration_cast<Micros>(delay));
    return station().pace.isSuspect(pause) && !isWary(now);
}

void Exchange::holdBack(LineResult result)
{
    state_ = State::holdingBack;
    heldResult_ = result;
    heldUntil_ =
        current_.sendEnd + std::min(station().timeout.measured(), settings_.timeout.initial);
    collector_.goOn();
    line_.wakeAt(heldUntil_);
}

// If a surplus comes meanwhile, the reply that was held back was a copy of an older one.
void Exchange::heldBackGoesOn(Arrival arrival, Clock::time_point now)
{
    reportStrays(now);
    if (arrival != Arrival::incomplete) {
        const QByteArray frame = collector_.reply();
        collector_.goOn();
        flushLateBytes(frame, now);
    }
    flushBehind(now);
    if (isWary(now))
        finish(LineResult::timeout);
    else if (!collector_.isEmpty())
        line_.wakeAt(now + gap_.value());
    else if (now >= heldUntil_)
        finish(heldResult_);
    else
        line_.wakeAt(heldUntil_);
}

void Exchange::reportStrays(Clock::time_point now)
{
    for (Stray& stray : collector_.takeStrays()) {
        if (stray.kind == StrayKind::late) {
            behind_ = stray.bytes;
            continue;
        }
        stray.at = lastActivity_;
        if (stray.kind != StrayKind::echo) {
            const Settled settled = settle(stray.bytes, now);
            // Some controllers answer a write with what they made of the value. A copy of the reply
            // to the write before looks the same, so the very reply may still come: this one is
            // kept for the end of the time-out. Not if it may answer another program's write.
            if (state_ == State::awaitingReply && !isMarking_ && !isWary(now) &&
                settled.number() == current_.number && !mayBeOthers(stray.bytes, now)) {
                otherwise_ = settled.answered;
                answeredOtherwise_ = stray.bytes;
                continue;
            }
            stray.answers = settled.number();
            stray.kind = settled.answered ? StrayKind::late : stray.kind;
            astray_.add(stray);
            stray.kind = settled.kindOr(stray.kind);
        }
        line_.stray(stray);
    }
}

void Exchange::report(const Stray& stray)
{
    astray_.add(stray);
    line_.stray(stray);
}

// What came after a frame is judged once that frame has been.
void Exchange::flushBehind(Clock::time_point now)
{
    const QByteArray behind = std::move(behind_);
    behind_.clear();
    if (!behind.isEmpty())
        flushLateBytes(behind, now);
}

void Exchange::flushLateBytes(const QByteArray& bytes, Clock::time_point now)
{
    if (collector_.takeEcho(bytes)) {
        report({StrayKind::echo, bytes, now});
        return;
    }
    const Settled settled = settle(bytes, now);
    const StrayKind kind = hasGoodCrc(bytes) ? StrayKind::late : StrayKind::noise;
    report({settled.kindOr(kind), bytes, now, settled.number()});
}

// Said once for each station.
void Exchange::nameIfSlow(unsigned char station, Micros delay)
{
    Station& slow = known(station);
    const std::string text =
        slowText(stationText(station, settings_.stationNames), delay, settings_.timeout);
    if (slow.isNamed || text.empty())
        return;
    slow.isNamed = true;
    line_.notice(text);
}

} // namespace dov417
