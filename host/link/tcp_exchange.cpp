#include "link/tcp_exchange.h"

#include <algorithm>
#include <utility>

#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "link/tcp_frame.h"

namespace dov417 {

namespace {

constexpr int marks = 0x10000;

} // namespace

TcpExchange::TcpExchange(const ExchangeLine& line) : line_(line) {}

void TcpExchange::start(const ExchangeSettings& settings, Clock::time_point now)
{
    settings_ = settings;
    sendsNoMore_ = false;
    state_ = State::idle;
    hasHeard_ = isAwaited_ = false;
    astray_ = Astray();
    for (auto& [number, each] : stations_)
        each.listenUntil = now;
    // A gateway that is still busy with what another connection asked may mix them up.
    if (transmissions_ == 0)
        mark_ = static_cast<int>(
            std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() %
            marks);
}

void TcpExchange::stop()
{
    line_.sleep();
    state_ = State::stopped;
    done_ = nullptr;
    pending_.clear();
    late_.clear(); // no reply comes over another connection than its request went
}

bool TcpExchange::isRunning() const
{
    return state_ != State::stopped;
}

bool TcpExchange::wasSound() const
{
    return hasHeard_;
}

TcpExchange::Station& TcpExchange::station()
{
    return stations_[stationOf(current_.sent)];
}

void TcpExchange::transact(const Transmission& request, Done done, Clock::time_point now)
{
    current_ = request;
    current_.number = 0;
    current_.reception = Reception();
    done_ = std::move(done);
    next(now);
}

void TcpExchange::next(Clock::time_point now)
{
    if (sendsNoMore_) {
        line_.sleep();
        state_ = State::idle;
        done_ = nullptr;
    } else if (now < station().listenUntil && !current_.isToSilent && current_.replyLength > 0) {
        // A gateway takes one request after another: what is asked again there waits behind.
        state_ = State::listening;
        line_.wakeAt(station().listenUntil);
    } else {
        transmit(now);
    }
}

void TcpExchange::transmit(Clock::time_point now)
{
    collector_.begin(current_.sent, current_.replyLength);
    mark_ = (mark_ + 1) % marks;
    current_.number = ++transmissions_;
    current_.sendBegin = current_.sendEnd = now;
    const StationTimeout& timeout = station().timeout;
    current_.timeout =
        current_.isToSilent ? timeout.learned(settings_.timeout) : timeout.value(settings_.timeout);
    astray_.begin();
    while (!late_.empty() && late_.front().sentAt + settings_.horizon < now)
        late_.pop_front();
    line_.sent(current_);
    isAwaited_ = current_.replyLength > 0;
    if (isAwaited_) {
        state_ = State::awaitingReply;
        deadline_ = now + current_.timeout;
        line_.wakeAt(deadline_);
    } else {
        state_ = State::awaitingTurnaround;
        line_.wakeAt(now + settings_.turnaround);
    }
    line_.write(tcpFrame(mark_, current_.sent));
}

void TcpExchange::timerDue(Clock::time_point now)
{
    switch (state_) {
    case State::stopped:
    case State::idle:
        break;
    case State::listening:
        next(now);
        break;
    case State::awaitingTurnaround:
        finish(LineResult::broadcast);
        break;
    case State::awaitingReply:
        // A reply under way is not cut off.
        if (line_.bytesWait())
            line_.wakeAt(now + rereadDelay);
        else if (!pending_.isEmpty() && now < lastActivity_ + settings_.replyGap)
            line_.wakeAt(lastActivity_ + settings_.replyGap);
        else
            deadlinePassed(now);
        break;
    }
}

void TcpExchange::deadlinePassed(Clock::time_point now)
{
    late_.push_back({mark_, current_.number, stationOf(current_.sent), current_.sendBegin});
    Station& late = station();
    if (!current_.isToSilent) {
        late.timeout.passed(settings_.timeout);
        if (!late.timeout.hasGrownInVain() && !settings_.timeout.isFixed)
            late.listenUntil =
                std::max(now, current_.sendEnd + late.timeout.value(settings_.timeout));
    }
    finish(LineResult::timeout);
}

void TcpExchange::bytesCame(const QByteArray& bytes, Clock::time_point now)
{
    lastActivity_ = now;
    pending_ += bytes;
    while (state_ != State::stopped && pending_.size() >= tcpHeaderLength) {
        const TcpHeader header = tcpHeader(pending_);
        if (!header.isModbus) {
            report({StrayKind::noise, pending_.left(tcpHeaderLength + maxTcpBody), now});
            pending_.clear();
            line_.useless();
            return;
        }
        if (pending_.size() < tcpHeaderLength + header.length)
            return;
        const QByteArray frame = withCrc(pending_.mid(tcpHeaderLength, header.length));
        pending_.remove(0, tcpHeaderLength + header.length);
        frameCame(header.number, frame, now);
    }
}

void TcpExchange::frameCame(int mark, const QByteArray& frame, Clock::time_point now)
{
    if (mark != mark_ || !isAwaited_) {
        lateCame(mark, frame, now);
    } else if (stationOf(frame) != stationOf(current_.sent)) {
        report({StrayKind::otherStation, frame, now});
    } else {
        isAwaited_ = false;
        takeReply(frame, now);
    }
}

// Nothing but the time that the station took is to be learned from it.
void TcpExchange::lateCame(int mark, const QByteArray& frame, Clock::time_point now)
{
    Stray stray{StrayKind::late, frame, now};
    const auto asked = std::find_if(late_.begin(), late_.end(), [&](const Late& each) {
        return each.mark == mark && each.station == stationOf(frame);
    });
    if (asked != late_.end()) {
        stray.answers = asked->number;
        answered(asked->station, std::chrono::duration_cast<Micros>(now - asked->sentAt), now);
        late_.erase(asked);
    }
    report(stray);
    if (state_ == State::listening)
        next(now);
}

void TcpExchange::answered(unsigned char station, Micros delay, Clock::time_point now)
{
    hasHeard_ = astray_.lineWasSound = true;
    Station& heard = stations_[station];
    heard.timeout.answered(delay, settings_.timeout);
    heard.listenUntil = now;
    const std::string slow =
        slowText(stationText(station, settings_.stationNames), delay, settings_.timeout);
    if (!slow.empty() && !heard.isNamed)
        line_.notice(slow);
    heard.isNamed = heard.isNamed || !slow.empty();
}

// The number says that it is the reply; what is in it may be wrong all the same.
void TcpExchange::takeReply(const QByteArray& frame, Clock::time_point now)
{
    current_.reception.firstByte = current_.reception.lastByte = now;
    answered(stationOf(frame), std::chrono::duration_cast<Micros>(now - current_.sendEnd), now);
    Arrival arrival = collector_.add(frame);
    if (arrival == Arrival::incomplete)
        arrival = collector_.endOfFrame();
    if (arrival == Arrival::incomplete)
        arrival = collector_.timeIsUp(); // it may confirm another value than was written
    collector_.takeStrays();
    // The header has said how long it is.
    if (arrival == Arrival::incomplete || collector_.reply() != frame) {
        const bool isOther = functionOf(frame) != functionOf(current_.sent);
        report({isOther ? StrayKind::otherFunction : StrayKind::otherRequest, frame, now});
        finish(LineResult::timeout);
        return;
    }
    current_.reception.bytes = frame;
    current_.asOf = now;
    finish(arrival == Arrival::reply ? LineResult::reply : LineResult::exception);
}

void TcpExchange::report(const Stray& stray)
{
    astray_.add(stray);
    line_.stray(stray);
}

void TcpExchange::finish(LineResult result)
{
    line_.sleep();
    state_ = State::idle;
    isAwaited_ = false;
    current_.reception.result = result;
    current_.reception.astray = astray_;
    // The next transaction may be started from within.
    const Transmission ended = current_;
    const Done done = std::move(done_);
    done_ = nullptr;
    done(ended);
}

const Books& TcpExchange::books() const
{
    return books_;
}

void TcpExchange::awaitLate(const Books& /*earlier*/) {}

void TcpExchange::sendNoMore()
{
    sendsNoMore_ = true;
    if (state_ == State::listening)
        next(Clock::time_point());
}

Clock::time_point TcpExchange::quietAt() const
{
    if (state_ == State::awaitingTurnaround)
        return current_.sendEnd + settings_.turnaround;
    if (state_ != State::awaitingReply)
        return {};
    const StationTimeout& timeout = stations_.at(stationOf(current_.sent)).timeout;
    return current_.sendEnd + timeout.patience(settings_.timeout);
}

std::vector<StationTime> TcpExchange::stationTimes() const
{
    return timesOf(stations_, settings_.timeout);
}

Micros TcpExchange::wireTime() const
{
    return Micros(0);
}

} // namespace dov417
