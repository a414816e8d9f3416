#include "panel/frames/wire_times.h"

#include <QCoreApplication>
#include <algorithm>

namespace dov417 {

namespace {

bool isOfBytes(SpanKind kind)
{
    return kind == SpanKind::request || kind == SpanKind::reply || kind == SpanKind::stray;
}

bool hasReply(const Reception& reception)
{
    return (reception.result == LineResult::reply || reception.result == LineResult::exception) &&
           reception.lastByte != Clock::time_point();
}

} // namespace

SpanPurpose purposeOf(const Transmission& transmission)
{
    return transmission.isMarker  ? SpanPurpose::marker
           : transmission.repeats ? SpanPurpose::retry
                                  : SpanPurpose::regular;
}

void WireTimes::clear()
{
    *this = WireTimes();
}

void WireTimes::setWire(const std::optional<SerialFormat>& wire)
{
    wire_ = wire;
}

Clock::duration WireTimes::characters(const QByteArray& bytes) const
{
    return wire_ && !isFaster_ ? wire_->characters(bytes.size()) : Clock::duration(0);
}

bool WireTimes::isOpen() const
{
    return !frames_.empty() && !frames_.back().hasEnded;
}

// ---- what passed ----------------------------------------------------------------------------

void WireTimes::add(const std::vector<Passed>& passed, long long notTold)
{
    if (notTold > 0) {
        breakOff();
        isMissing_ = true;
    }
    for (const Passed& each : passed)
        switch (each.what) {
        case Passed::What::began:
            began(each);
            break;
        case Passed::What::ended:
            ended(each);
            break;
        case Passed::What::stray:
            strayCame(each.stray);
            break;
        case Passed::What::note:
            break;
        }
    forgetOldest();
}

void WireTimes::lineGone()
{
    breakOff();
    isGone_ = true;
}

void WireTimes::began(const Passed& passed)
{
    const Transmission& told = passed.transmission;
    breakOff();
    fillUntil(told.sendBegin);
    if (cycle_ != passed.cycle) {
        cycle_ = passed.cycle;
        cycles_.push_back(told.sendBegin);
    }
    WireFrame frame;
    frame.told = told;
    frame.begin = frame.end = told.sendBegin;
    frames_.push_back(frame);
    stations_.insert(told.request.station);
}

void WireTimes::ended(const Passed& passed)
{
    const Transmission& told = passed.transmission;
    if (told.isLocal)
        return;
    const bool isUnderWay = isOpen() && frames_.back().told.number == told.number;
    const bool wasSent = told.number > 0 && told.sendBegin != Clock::time_point();
    const bool isNew = wasSent && (frames_.empty() || frames_.back().told.number < told.number);
    if (isNew)
        began(passed); // its begin was not told
    if (isUnderWay || isNew) {
        frames_.back().told = told;
        layOut(frames_.back(), passed.at);
        return;
    }
    // It was not sent: what came late answers it, or was waited for.
    if (hasReply(told.reception)) {
        fillUntil(std::max(end_, told.reception.lastByte - characters(told.reception.bytes)));
        put(SpanKind::reply, told.reception.lastByte);
        return;
    }
    if (end_ != Clock::time_point())
        put(SpanKind::timeOut, passed.at);
}

void WireTimes::strayCame(const Stray& stray)
{
    if (isOpen()) {
        strays_.push_back(stray);
        return;
    }
    fillUntil(std::max(end_, stray.at - characters(stray.bytes)));
    put(SpanKind::stray, stray.at);
}

// ---- spans ----------------------------------------------------------------------------------

// The end of a time-out is told when the program comes to it, maybe after the next frame.
void WireTimes::layOut(WireFrame& frame, Clock::time_point toldAt)
{
    const Transmission& told = frame.told;
    const Reception& reception = told.reception;
    const bool isAnswered = hasReply(reception);
    if (isAnswered && wire_)
        isFaster_ = reception.lastByte - told.sendBegin <
                    wire_->characters(told.sent.size() + reception.bytes.size()) * 9 / 10;
    put(SpanKind::request, wire_ && !isFaster_ ? told.sendEnd : told.sendBegin, &frame);
    const SpanKind waiting = isAnswered || told.reception.result == LineResult::broadcast
                                 ? SpanKind::responseTime
                                 : SpanKind::timeOut;
    for (const Stray& stray : strays_) {
        put(waiting, stray.at - characters(stray.bytes), &frame);
        put(SpanKind::stray, stray.at, &frame);
    }
    if (isAnswered) {
        const Clock::duration first = characters(QByteArray(1, ' '));
        put(SpanKind::responseTime,
            std::min(reception.firstByte - first, reception.lastByte - characters(reception.bytes)),
            &frame);
        put(SpanKind::reply, reception.lastByte, &frame);
    } else {
        const bool isTimeOut = reception.result == LineResult::timeout && strays_.empty();
        put(waiting, isTimeOut ? std::min(toldAt, told.sendEnd + told.timeout) : toldAt, &frame);
    }
    strays_.clear();
    frame.hasEnded = true;
    frame.end = end_;
}

// What became of the frame under way is not told.
void WireTimes::breakOff()
{
    if (isOpen()) {
        WireFrame& frame = frames_.back();
        if (wire_)
            put(SpanKind::request, frame.told.sendEnd, &frame);
        frame.hasEnded = true;
        frame.end = end_;
        frame.told.reason =
            QCoreApplication::translate("WireTimes", "what became of it was not recorded")
                .toStdString();
        isMissing_ = true;
    }
    strays_.clear();
}

void WireTimes::put(SpanKind kind, Clock::time_point until, WireFrame* frame)
{
    if (until <= end_)
        return;
    WireSpan span;
    span.begin = end_;
    span.end = until;
    span.kind = kind;
    if (frame) {
        span.purpose = purposeOf(frame->told);
        span.frame = frame->told.number;
        span.station = frame->told.request.station;
        frame->took.at(static_cast<std::size_t>(kind)) +=
            std::chrono::round<Micros>(span.end - span.begin);
    }
    spans_.push_back(span);
    end_ = until;
}

void WireTimes::fillUntil(Clock::time_point begin)
{
    if (end_ == Clock::time_point())
        end_ = begin;
    while (!spans_.empty() && spans_.back().begin >= begin)
        spans_.pop_back();
    if (begin < end_) {
        if (!spans_.empty())
            spans_.back().end = begin;
        end_ = begin;
    }
    for (const WireSpan& span : between(begin))
        spans_.push_back(span);
    end_ = begin;
    isGone_ = isMissing_ = false;
}

// What there was from the end on, as long as nobody spoke.
std::vector<WireSpan> WireTimes::between(Clock::time_point begin) const
{
    std::vector<WireSpan> spans;
    const auto put = [&spans](Clock::time_point from, Clock::time_point to, SpanKind kind) {
        if (from >= to)
            return;
        WireSpan span;
        span.begin = from;
        span.end = to;
        span.kind = kind;
        spans.push_back(span);
    };
    if (isGone_ || isMissing_) {
        put(end_, begin, isGone_ ? SpanKind::noLine : SpanKind::missing);
        return spans;
    }
    Clock::time_point from = end_;
    if (wire_ && !spans_.empty() && isOfBytes(spans_.back().kind))
        from = std::min(begin, end_ + wire_->interFrameDelay());
    put(end_, from, SpanKind::interFrame);
    put(from, begin, SpanKind::idle);
    return spans;
}

std::vector<WireSpan> WireTimes::underWay(Clock::time_point now) const
{
    if (now <= end_ || end_ == Clock::time_point())
        return {};
    if (!isOpen())
        return between(now);
    const Transmission& told = frames_.back().told;
    WireTimes rest;
    rest.end_ = end_;
    rest.frames_.push_back(frames_.back());
    WireFrame& frame = rest.frames_.back();
    rest.put(SpanKind::request, std::min(now, wire_ ? told.sendEnd : told.sendBegin), &frame);
    rest.put(SpanKind::responseTime, now, &frame);
    return {rest.spans_.begin(), rest.spans_.end()};
}

// ---- memory ---------------------------------------------------------------------------------

// Many at a time, so that it is done rarely.
void WireTimes::forgetOldest()
{
    while (spans_.size() > maxSpans) // of noise there may be any number without a frame
        spans_.pop_front();
    if (frames_.size() <= maxFrames)
        return;
    const auto surplus = static_cast<std::ptrdiff_t>(frames_.size() - maxFrames + maxFrames / 10);
    frames_.erase(frames_.begin(), frames_.begin() + surplus);
    const Clock::time_point first = frames_.front().begin;
    while (!spans_.empty() && spans_.front().end <= first)
        spans_.pop_front();
    while (!cycles_.empty() && cycles_.front() < first)
        cycles_.pop_front();
}

const WireFrame* WireTimes::find(long long number) const
{
    const auto found = std::lower_bound(
        frames_.begin(), frames_.end(), number,
        [](const WireFrame& frame, long long other) { return frame.told.number < other; });
    return found != frames_.end() && found->told.number == number ? &*found : nullptr;
}

std::optional<std::size_t> WireTimes::placeAt(Clock::time_point time) const
{
    const auto after = std::upper_bound(
        frames_.begin(), frames_.end(), time,
        [](Clock::time_point other, const WireFrame& frame) { return other < frame.begin; });
    if (after == frames_.begin())
        return std::nullopt;
    return static_cast<std::size_t>(after - frames_.begin()) - 1;
}

std::size_t WireTimes::spanAt(Clock::time_point time) const
{
    return static_cast<std::size_t>(
        std::upper_bound(
            spans_.begin(), spans_.end(), time,
            [](Clock::time_point other, const WireSpan& span) { return other < span.end; }) -
        spans_.begin());
}

} // namespace dov417
