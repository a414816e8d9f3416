#include "link/exchange.h"

#include <algorithm>
#include <utility>

#include "line/frame_bytes.h"
#include "link/marker.h"

namespace dov417 {

Exchange::Exchange(const ExchangeLine& line) : line_(line) {}

OpenTransmission Exchange::openOf(const Transmission& transmission)
{
    return {transmission.number, transmission.sent, transmission.replyLength,
            transmission.sendBegin};
}

void Exchange::start(const ExchangeSettings& settings, Clock::time_point now)
{
    settings_ = settings;
    gap_ = ReplyGap(settings.replyGap);
    sendsNoMore_ = false;
    state_ = State::idle;
    lastActivity_ = now;
    astray_ = Astray();
    collector_.forgetAdapter(); // another one may be plugged in
    earlier_ = transmissions_;
    books_.setHorizon(settings.horizon + maxReplyTime());
    books_.expire(now); // the line may have been closed for hours
    foreignEnd_ = now + settings.horizon;
    // Another run's echo that comes late is not to be taken for ours.
    nextMark_ = static_cast<unsigned short>(
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count());
    unheard_.isUnknown = settings.isShared;
    // Of these something is known before they are asked for the first time.
    for (int number = 0; number < stationNumbers; ++number) {
        if (books_.hasAnsweredEcho(static_cast<unsigned char>(number)))
            known(static_cast<unsigned char>(number));
    }
    for (auto& [number, each] : stations_) {
        each.answeredEchoBefore = settings.mayMark && books_.hasAnsweredEcho(number);
        // What a station takes is the same on a cable that was pulled for a while.
        each.listenUntil = now;
        each.isUnknown = settings.isShared;
        each.wasAdapters = false;
        each.marksUnanswered = 0;
        each.hasAnsweredRead = false;
        each.numbersEchoes = false;
        each.markFailed = false;
    }
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

bool Exchange::wasSound() const
{
    return astray_.lineWasSound;
}

const Books& Exchange::books() const
{
    return books_;
}

void Exchange::awaitLate(const Books& earlier)
{
    books_ = earlier.asPast();
}

std::vector<StationTime> Exchange::stationTimes() const
{
    return timesOf(stations_, settings_.timeout);
}

Micros Exchange::wireTime() const
{
    return wireTime_;
}

Micros Exchange::onTheWire(int bytes) const
{
    return settings_.bytesTakeTime ? std::chrono::round<Micros>(settings_.wire.characters(bytes))
                                   : Micros(0);
}

Exchange::Station& Exchange::known(unsigned char station)
{
    return stations_.try_emplace(station, unheard_).first->second;
}

const Exchange::Station& Exchange::known(unsigned char station) const
{
    const auto found = stations_.find(station);
    return found != stations_.end() ? found->second : unheard_;
}

Exchange::Station& Exchange::station()
{
    return known(stationOf(current_.sent));
}

void Exchange::transact(const Transmission& request, Done done, Clock::time_point now)
{
    current_ = request;
    current_.number = 0;
    current_.reception = Reception();
    done_ = std::move(done);
    markersAstray_.begin();
    wasSilent_ = false; // that of the request before may have been a pulled plug
    markersLeft_ = station().marksAtOnce(current_.isRead() ? !couldOpenLikeItsEcho()
                                                           : collector_.knowsAdapter());
    holdEnd_ = Clock::time_point();
    doubtsBefore_ = doubts_;
    next(now);
}

// What to do for the request now: listen first, send a marker first, or send it.
void Exchange::next(Clock::time_point now)
{
    books_.expire(now);
    learnOfAdapter();
    isMarking_ = false;
    if (sendsNoMore_) {
        drop();
        return;
    }
    if (current_.replyLength == 0) {
        beginDelay(now);
        return;
    }
    // What is written may be made of what was read just before.
    if (doubts_ != doubtsBefore_ && !current_.isRead()) {
        finish(LineResult::heldBack);
        return;
    }
    Station& asked = station();
    if (now < asked.listenUntil && !current_.isToSilent) {
        listen(asked.listenUntil);
        return;
    }
    const bool isDoubtful = isInDoubt(now);
    const bool needsMarker = isDoubtful || couldConfirmItself() || couldOpenLikeItsEcho();
    const bool mayMark = needsMarker && markersLeft_ > 0;
    isMarking_ = mayMark && mark(now);
    const bool isStuck = mayMark && isDoubtful && !isMarking_ && current_.isRead();
    if (!isMarking_ && (isStuck || books_.couldBeMistaken(current_.sent, current_.replyLength))) {
        // Only time tells when the doubt is over, and others are not to wait for that.
        if (holdEnd_ == Clock::time_point())
            holdEnd_ =
                now + (current_.isProbe() ? Micros(0) : asked.timeout.value(settings_.timeout));
        const Clock::time_point certain =
            isStuck ? holdEnd_ : books_.certainAt(current_.sent, current_.replyLength);
        listen(std::min(certain, holdEnd_));
        return;
    }
    beginDelay(now);
}

void Exchange::listen(Clock::time_point until)
{
    state_ = State::listening;
    listenEnd_ = until;
    collector_.begin(current_.sent, current_.replyLength);
    line_.wakeAt(until);
}

void Exchange::beginDelay(Clock::time_point now)
{
    // A line that is never silent is not waited for forever.
    if (state_ != State::interFrameDelay)
        babbleLimit_ = now + 3 * settings_.timeout.initial;
    state_ = State::interFrameDelay;
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
    markersLeft_ -= isMarking_ ? 1 : 0;
    Transmission& frame = isMarking_ ? marker_ : current_;
    collector_.begin(frame.sent, frame.replyLength);
    collector_.sent();
    otherwise_.reset();
    frame.number = ++transmissions_;
    frame.sendBegin = now;
    bytesCame_ = 0;
    astray_.begin();
    frame.sendEnd = now + onTheWire(static_cast<int>(frame.sent.size()));
    const StationTimeout& timeout = station().timeout;
    frame.timeout =
        current_.isToSilent ? timeout.learned(settings_.timeout) : timeout.value(settings_.timeout);
    frame.reception = Reception();
    lastActivity_ = frame.sendEnd;
    wireTime_ += onTheWire(static_cast<int>(frame.sent.size()));
    books_.add(openOf(frame));
    if (!isEcho(frame.sent))
        station().lastAsked = openOf(frame);
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
    line_.wakeAt(collector_.isEmpty() ? deadline_ : lastActivity_ + gap_.value());
}

void Exchange::timerDue(Clock::time_point now)
{
    switch (state_) {
    case State::stopped:
    case State::idle:
        break;
    case State::interFrameDelay:
        beginDelay(now);
        break;
    case State::awaitingTurnaround:
        finish(LineResult::broadcast);
        break;
    case State::listening:
        if (line_.bytesWait())
            line_.wakeAt(now + rereadDelay);
        else if (!collector_.isEmpty())
            takeArrival(collector_.endOfFrame(), now);
        else
            waitIsOver(now);
        break;
    case State::holdingBack:
        if (line_.bytesWait())
            line_.wakeAt(now + rereadDelay);
        else
            heldBackGoesOn(collector_.endOfFrame(), now);
        break;
    case State::awaitingReply:
        if (line_.bytesWait())
            line_.wakeAt(now + rereadDelay);
        else if (!collector_.isEmpty() && now >= lastActivity_ + gap_.value())
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
    // An adapter that hears its own sending would have been heard by now. Over a network its echo
    // may still be under way.
    wasSilent_ = bytesCame_ == 0 && settings_.bytesTakeTime;
    if (otherwise_) {
        current_.reception.bytes = answeredOtherwise_;
        handOn(LineResult::reply, *otherwise_, now);
        return;
    }
    // Some controllers drop a late reply when they are asked again, so the station is listened to
    // before it is. Not if it has been silent for some time, as others have to wait meanwhile, and
    // not after an echo, which it may never answer.
    Station& late = station();
    if (!current_.isToSilent) {
        late.timeout.passed(settings_.timeout);
        const bool mayCome = !isMarking_ || !isEcho(marker_.sent) || late.numbersEchoes;
        if (mayCome && !late.timeout.hasGrownInVain() && !settings_.timeout.isFixed)
            late.listenUntil =
                (isMarking_ ? marker_ : current_).sendEnd + late.timeout.value(settings_.timeout);
    }
    if (isMarking_)
        markerFinished(LineResult::timeout, now);
    else
        finish(LineResult::timeout);
}

void Exchange::finish(LineResult result)
{
    line_.sleep();
    state_ = State::idle;
    isMarking_ = false;
    current_.reception.result = result;
    current_.reception.astray = astray_;
    if (result == LineResult::timeout || result == LineResult::heldBack)
        current_.reception.bytes.clear();
    // The next transaction may be started from within.
    const Transmission ended = current_;
    const Done done = std::move(done_);
    done_ = nullptr;
    done(ended);
}

} // namespace dov417
