#include "scan/station_scan.h"

#include "line/frame_bytes.h"

#include <algorithm>
#include <utility>

namespace dov417 {

namespace {

constexpr int questionLength = 8;
constexpr Micros maxPatience(2000000); // with what has begun and does not end

std::chrono::nanoseconds timeOfQuestion(const ScanLine& line)
{
    return line ? line->characters(questionLength) : std::chrono::nanoseconds(0);
}

} // namespace

StationScan::StationScan(const ScanSettings& settings, const ScanQuestions& questions,
                         const ScanEvents& events)
    : settings_(settings), questions_(questions), events_(events),
      ear_(questions, settings.isModbusTcp)
{
    for (const ScanLine& line : settings.lines)
        turns_.push_back({line, settings.stations, settings.timeout});
}

void StationScan::start(Clock::time_point now)
{
    startedAt_ = now;
    beginTurn(now);
    wake(now);
}

bool StationScan::mayAsk() const
{
    return !isStopping_ && (!isInUse_ || settings_.asksAnyway);
}

void StationScan::beginTurn(Clock::time_point now)
{
    stations_.clear();
    queue_.clear();
    ask_ = Ask();
    noisyStations_ = 0;
    foreignFrames_ = 0;
    unaskedBytes_ = 0;
    speakers_.clear();
    lastByte_ = now;
    const Turn& turn = turns_.front();
    if (turn.line && !events_.setLine(*turn.line)) {
        endTurn(now);
        return;
    }
    if (!std::exchange(hasListened_, true) || !mayAsk()) {
        state_ = State::listening;
        until_ = now + settings_.listening;
        return;
    }
    endListening(now);
}

void StationScan::endListening(Clock::time_point now)
{
    if (unaskedBytes_ >= minFrameLength) {
        isInUse_ = true;
        ScanHeard heard{HeardKind::inUse, turns_.front().line};
        heard.bytes = unaskedBytes_;
        heard.stations = speakers_;
        events_.heard(heard);
    }
    if (!mayAsk()) {
        endTurn(now);
        return;
    }
    const Turn& turn = turns_.front();
    for (const int station : turn.stations)
        queue_.push_back({station, 0, turn.timeout});
    pause(now);
}

void StationScan::bytesCame(const QByteArray& bytes, Clock::time_point now)
{
    if (state_ == State::done)
        return;
    if (ear_.isEmpty())
        firstByte_ = now;
    lastByte_ = now;
    ear_.add(bytes);
    hear(false, now);
    wake(now);
}

void StationScan::timerDue(Clock::time_point now)
{
    if (state_ == State::done)
        return;
    const bool isSilent = now >= lastByte_ + settings_.replyGap;
    if (!ear_.isEmpty() &&
        (isSilent || now >= until_ + (waitsForTheRest() ? maxPatience : Micros(0))))
        hear(true, now);
    if (now >= until_ && (ear_.isEmpty() || !waitsForTheRest())) {
        if (state_ == State::listening)
            endListening(now);
        else if (state_ == State::pausing)
            next(now);
        else if (state_ == State::awaiting)
            windowIsOver(now);
        else if (state_ == State::closing)
            endTurn(now);
    }
    wake(now);
}

// What has begun before a question's time was up, or before the next question, is let end.
bool StationScan::waitsForTheRest() const
{
    return state_ == State::awaiting || state_ == State::pausing;
}

void StationScan::wake(Clock::time_point now)
{
    if (state_ == State::done)
        return;
    const Clock::time_point silentAt = lastByte_ + settings_.replyGap;
    if (!ear_.isEmpty() && waitsForTheRest() && now >= until_)
        events_.wakeAt(std::min(silentAt, until_ + maxPatience));
    else
        events_.wakeAt(ear_.isEmpty() ? until_ : std::min(until_, silentAt));
}

void StationScan::next(Clock::time_point now)
{
    if (!mayAsk() || queue_.empty())
        close(now);
    else
        ask(now);
}

void StationScan::ask(Clock::time_point now)
{
    ask_ = queue_.front();
    queue_.pop_front();
    state_ = State::awaiting;
    windowNoise_ = 0;
    isDisturbed_ = false;
    const QByteArray frame = questions_.at(ask_.question).frameTo(ask_.station);
    const Clock::time_point sent = now + timeOfQuestion(turns_.front().line);
    Question& question = stations_[ask_.station].questions.at(ask_.question);
    question.askedAt = sent;
    question.isOpen = true;
    ++question.asked;
    until_ = sent + ask_.timeout;
    ear_.asks(frame);
    events_.write(frame);
}

void StationScan::pause(Clock::time_point now)
{
    state_ = State::pausing;
    const ScanLine& line = turns_.front().line;
    until_ = line ? std::max(now, lastByte_ + line->interFrameDelay()) : now;
}

void StationScan::close(Clock::time_point now)
{
    state_ = State::closing;
    ask_ = Ask();
    until_ = now + (isStopping_ ? Micros(0) : settings_.lastWait);
}

void StationScan::endTurn(Clock::time_point now)
{
    for (auto& [number, station] : stations_)
        if (!station.isTold && station.answers > 0)
            tellOnce(number, station);
    earlierStations_ = std::exchange(stations_, {});
    earlier_ = turns_.front();
    if (turns_.size() > 1 && !isStopping_) {
        turns_.pop_front();
        beginTurn(now);
        return;
    }
    state_ = State::done;
    events_.done();
}

void StationScan::stop(Clock::time_point now)
{
    isStopping_ = true;
    if (state_ == State::done)
        return;
    if (state_ != State::awaiting)
        until_ = now;
    wake(now);
}

Micros StationScan::timeOf(const Turn& turn, std::size_t questions) const
{
    const Micros each = turn.timeout + toMicros(timeOfQuestion(turn.line));
    return static_cast<Micros::rep>(questions) * each + settings_.lastWait;
}

ScanProgress StationScan::progress(Clock::time_point now) const
{
    ScanProgress progress;
    progress.elapsed = toMicros(now - startedAt_);
    if (state_ == State::done)
        return progress;
    progress.line = turns_.front().line;
    progress.station = ask_.station;
    progress.left = std::max(Micros(0), toMicros(until_ - now));
    if (state_ == State::listening)
        progress.left += timeOf(turns_.front(), turns_.front().stations.size());
    else if (state_ != State::closing)
        progress.left += timeOf(turns_.front(), queue_.size());
    for (std::size_t i = 1; i < turns_.size(); ++i)
        progress.left +=
            mayAsk() ? timeOf(turns_.at(i), turns_.at(i).stations.size()) : settings_.listening;
    return progress;
}

} // namespace dov417
