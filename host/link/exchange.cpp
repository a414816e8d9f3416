#include "link/exchange.h"

#include <algorithm>
#include <utility>

#include "line/crc16.h"

namespace dov417 {

namespace {

constexpr Micros rereadDelay(200); // bytes wait in the kernel: let the port's event come first
constexpr int babbleLength = 1024; // bytes that came for one request and are no reply to it
constexpr char diagnostics = 8;    // function; sub-function 0 sends back what it was sent
constexpr int markerLength = 8;
constexpr int maxMarksIgnored = 2; // one may have been lost
constexpr int quantityIndex = 4;
constexpr int coilsPerWord = 16;
constexpr char readCoils = 1;
constexpr char lastReadFunction = 4;

unsigned char stationOf(const QByteArray& frame)
{
    return static_cast<unsigned char>(frame.at(0));
}

QByteArray echoRequest(char station, unsigned short mark)
{
    QByteArray frame;
    frame.append(station).append(diagnostics).append('\0').append('\0');
    frame.append(static_cast<char>(mark >> 8)).append(static_cast<char>(mark & 0xFF));
    return withCrc(frame);
}

// The same read, some words shorter or longer.
Transmission resized(const Transmission& read, int words)
{
    Transmission other;
    other.request = read.request;
    const int units = words * (read.sent.at(1) == readCoils ? coilsPerWord : 1);
    const int quantity = static_cast<unsigned char>(read.sent.at(quantityIndex)) * 256 +
                         static_cast<unsigned char>(read.sent.at(quantityIndex + 1)) + units;
    QByteArray frame = read.sent.left(quantityIndex);
    frame.append(static_cast<char>(quantity >> 8)).append(static_cast<char>(quantity & 0xFF));
    other.sent = withCrc(frame);
    other.replyLength = read.replyLength + 2 * words;
    return other;
}

OpenTransmission openOf(const Transmission& transmission)
{
    return {transmission.number, transmission.sent, transmission.replyLength,
            transmission.sendBegin};
}

} // namespace

Exchange::Exchange(const ExchangeLine& line) : line_(line) {}

void Exchange::start(const ExchangeSettings& settings, Clock::time_point now)
{
    settings_ = settings;
    state_ = State::idle;
    lastActivity_ = now;
    books_.setHorizon(settings.horizon);
    for (Station& each : stations_) {
        // What a station takes is the same on a cable that was pulled for a while.
        each.listenUntil = now;
        each.isUnknown = settings.isShared;
        each.markFailed = false;
    }
}

bool Exchange::Station::ignoresMarks() const
{
    return marksIgnored >= maxMarksIgnored;
}

void Exchange::stop()
{
    line_.sleep();
    state_ = State::stopped;
    done_ = nullptr;
}

bool Exchange::isRunning() const
{
    return state_ != State::stopped;
}

const Books& Exchange::books() const
{
    return books_;
}

void Exchange::awaitLate(const Books& earlier)
{
    books_ = earlier.asPast();
}

Micros Exchange::wireTime() const
{
    return wireTime_;
}

Micros Exchange::onTheWire(int bytes) const
{
    return std::chrono::round<Micros>(settings_.wire.characters(bytes));
}

Exchange::Station& Exchange::station()
{
    return stations_.at(stationOf(current_.sent));
}

void Exchange::transact(const Transmission& request, Done done, Clock::time_point now)
{
    current_ = request;
    current_.number = 0;
    current_.reception = Reception();
    done_ = std::move(done);
    wasMarked_ = false;
    holdEnd_ = Clock::time_point();
    next(now);
}

// What is to be done for the request now: listen first, mark first, or send it.
void Exchange::next(Clock::time_point now)
{
    books_.expire(now);
    isMarking_ = false;
    if (current_.replyLength == 0) {
        beginSilence(now);
        return;
    }
    Station& asked = station();
    if (now < asked.listenUntil) {
        listen(asked.listenUntil);
        return;
    }
    const bool mistakable = books_.couldBeMistaken(current_.sent, current_.replyLength);
    if ((asked.isUnknown || mistakable) && !wasMarked_) {
        makeMarker();
        isMarking_ = marker_.replyLength > 0;
    }
    if (mistakable && !isMarking_) {
        // Only time tells when the doubt is over, and others are not to wait for that.
        if (holdEnd_ == Clock::time_point())
            holdEnd_ = now + asked.timeout.value(settings_.timeout);
        listen(std::min(books_.certainAt(current_.sent, current_.replyLength), holdEnd_));
        return;
    }
    beginSilence(now);
}

// A request to the station whose reply cannot be mistaken for another; without a reply if there is
// none.
void Exchange::makeMarker()
{
    const Station& asked = station();
    marker_ = Transmission();
    if (settings_.mayMark && !asked.ignoresMarks()) {
        marker_.sent = echoRequest(current_.sent.at(0), nextMark_++);
        marker_.replyLength = markerLength;
    } else if (current_.sent.at(1) <= lastReadFunction) {
        // A length that no open transmission has. What is one word longer may not be there.
        const int words = current_.request.length;
        for (int less = 1; less < words && marker_.replyLength == 0; ++less)
            if (const Transmission other = resized(current_, -less);
                !books_.isOut(other.sent, other.replyLength))
                marker_ = other;
        if (marker_.replyLength == 0)
            if (const Transmission other = resized(current_, 1);
                !books_.isOut(other.sent, other.replyLength))
                marker_ = other;
    }
    marker_.isMarker = true;
    marker_.request.station = stationOf(current_.sent);
}

void Exchange::listen(Clock::time_point until)
{
    state_ = State::listening;
    listenEnd_ = until;
    collector_.begin(current_.sent, current_.replyLength);
    line_.wakeAt(until);
}

void Exchange::beginSilence(Clock::time_point now)
{
    // A line that is never silent is not waited for forever.
    if (state_ != State::silence)
        babbleLimit_ = now + 3 * settings_.timeout.initial;
    state_ = State::silence;
    const Clock::time_point start =
        std::min(lastActivity_ + settings_.wire.interFrameDelay(), babbleLimit_);
    if (start <= now)
        transmit(now);
    else
        line_.wakeAt(start);
}

void Exchange::transmit(Clock::time_point now)
{
    if (now < babbleLimit_ && line_.bytesWait()) {
        line_.wakeAt(now + rereadDelay);
        return;
    }
    wasMarked_ = wasMarked_ || isMarking_;
    Transmission& frame = isMarking_ ? marker_ : current_;
    collector_.begin(frame.sent, frame.replyLength);
    frame.number = ++transmissions_;
    frame.sendBegin = now;
    bytesCame_ = 0;
    frame.sendEnd = now + onTheWire(static_cast<int>(frame.sent.size()));
    frame.timeout = station().timeout.value(settings_.timeout);
    frame.reception = Reception();
    lastActivity_ = frame.sendEnd;
    wireTime_ += onTheWire(static_cast<int>(frame.sent.size()));
    books_.add(openOf(frame));
    line_.sent(frame);
    if (frame.replyLength > 0) {
        state_ = State::awaitingReply;
        deadline_ = frame.sendEnd + frame.timeout;
        armReplyTimer();
    } else {
        state_ = State::awaitingTurnaround;
        line_.wakeAt(frame.sendEnd + settings_.turnaround);
    }
    line_.write(frame.sent);
}

// The time-out is for the first byte: a reply under way is not cut off.
void Exchange::armReplyTimer()
{
    line_.wakeAt(collector_.isEmpty() ? deadline_ : lastActivity_ + settings_.replyGap);
}

void Exchange::bytesCame(const QByteArray& bytes, Clock::time_point now)
{
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
            line_.wakeAt(collector_.isEmpty() ? listenEnd_ : now + settings_.replyGap);
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
        if (state_ == State::listening)
            next(now);
        else if (isMarking_)
            markerFinished(LineResult::timeout, now);
        else
            finish(result);
        return;
    }
    if (!takeReply(result, now)) {
        // The reply to something else: this one's is awaited still.
        collector_.begin(frame.sent, frame.replyLength);
        frame.reception = Reception();
        if (state_ == State::awaitingReply)
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
    if (isMarking_ && answered && answered->number == marker_.number) {
        markerFinished(result, now);
        return true;
    }
    OpenTransmission mine = openOf(current_);
    if (mine.number == 0)
        mine.number = transmissions_ + 1;
    if (isMarking_ || !answered || !books_.standsFor(*answered, mine)) {
        line_.stray({StrayKind::late, bytes, now, answered ? answered->number : 0});
        return false;
    }
    if (current_.number == 0) {
        current_.number = answered->number;
        current_.sendBegin = answered->sentAt;
        current_.sendEnd = answered->sentAt + onTheWire(static_cast<int>(current_.sent.size()));
    }
    current_.asOf = answered->number == mine.number ? now : answered->sentAt;
    finish(result);
    return true;
}

void Exchange::timerDue(Clock::time_point now)
{
    switch (state_) {
    case State::stopped:
    case State::idle:
        break;
    case State::silence:
        beginSilence(now);
        break;
    case State::awaitingTurnaround:
        finish(LineResult::broadcast);
        break;
    case State::listening:
        if (line_.bytesWait())
            line_.wakeAt(now + rereadDelay);
        else if (!collector_.isEmpty())
            takeArrival(collector_.endOfFrame(), now);
        else if (holdEnd_ != Clock::time_point() && now >= holdEnd_)
            finish(LineResult::timeout);
        else
            next(now);
        break;
    case State::awaitingReply:
        if (line_.bytesWait())
            line_.wakeAt(now + rereadDelay);
        else if (!collector_.isEmpty() && now >= lastActivity_ + settings_.replyGap)
            takeArrival(collector_.endOfFrame(), now);
        else if (collector_.isEmpty() && now >= deadline_)
            deadlinePassed(now);
        else
            armReplyTimer();
        break;
    }
}

void Exchange::deadlinePassed(Clock::time_point now)
{
    if (isMarking_) {
        markerFinished(LineResult::timeout, now);
        return;
    }
    if (collector_.timeIsUp() == Arrival::reply) {
        current_.reception.bytes = collector_.reply();
        if (takeReply(LineResult::reply, now))
            return;
    }
    // There are controllers that drop their reply when they are asked again.
    Station& late = station();
    late.timeout.passed(settings_.timeout);
    if (!late.timeout.looksDead() && !settings_.timeout.isFixed)
        late.listenUntil = current_.sendEnd + late.timeout.value(settings_.timeout);
    finish(LineResult::timeout);
}

void Exchange::markerFinished(LineResult result, Clock::time_point now)
{
    Station& marked = station();
    marked.markFailed = result == LineResult::timeout;
    marked.isUnknown = false;
    marker_.reception.result = result;
    line_.markerEnded(marker_);
    if (marked.markFailed && books_.couldBeMistaken(current_.sent, current_.replyLength)) {
        // Not sent, and it is the station that did not answer.
        current_.timeout = marker_.timeout;
        isMarking_ = false;
        finish(LineResult::timeout);
        return;
    }
    next(now);
}

void Exchange::finish(LineResult result)
{
    line_.sleep();
    state_ = State::idle;
    isMarking_ = false;
    current_.reception.result = result;
    if (result == LineResult::timeout)
        current_.reception.bytes.clear();
    // The next transaction may be started from within.
    const Transmission ended = current_;
    const Done done = std::move(done_);
    done_ = nullptr;
    done(ended);
}

void Exchange::reportStrays(Clock::time_point now)
{
    for (Stray& stray : collector_.takeStrays()) {
        stray.at = now;
        if (stray.kind != StrayKind::echo)
            if (const auto answered = settle(stray.bytes, now))
                stray.answers = answered->number;
        line_.stray(stray);
    }
}

void Exchange::flushLateBytes(const QByteArray& bytes, Clock::time_point now)
{
    const auto answered = settle(bytes, now);
    line_.stray({StrayKind::late, bytes, now, answered ? answered->number : 0});
}

// A frame came: whose answer is it, and what does it tell of the station?
std::optional<OpenTransmission> Exchange::settle(const QByteArray& frame, Clock::time_point now)
{
    if (!hasGoodCrc(frame))
        return std::nullopt;
    auto answered = books_.take(frame);
    if (!answered)
        return std::nullopt;
    Station& heard = stations_.at(stationOf(frame));
    const Transmission& onLine = isMarking_ ? marker_ : current_;
    const bool inTime =
        onLine.number == answered->number && onLine.reception.firstByte != Clock::time_point();
    const Clock::time_point began = inTime ? onLine.reception.firstByte : now;
    const Clock::time_point ended =
        answered->sentAt + onTheWire(static_cast<int>(answered->sent.size()));
    heard.timeout.answered(std::max(Micros(0), std::chrono::duration_cast<Micros>(began - ended)),
                           settings_.timeout);
    heard.listenUntil = now;
    if (answered->sent.at(1) == diagnostics)
        heard.marksIgnored = 0;
    else if (heard.markFailed)
        ++heard.marksIgnored; // it lives, and said nothing to the marker before
    heard.markFailed = false;
    return answered;
}

} // namespace dov417
