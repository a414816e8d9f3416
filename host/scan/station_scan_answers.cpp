#include "scan/station_scan.h"

#include <algorithm>
#include <utility>

namespace dov417 {

namespace {

constexpr int maxDisturbedTries = 3; // of a question whose window was disturbed
constexpr int maxNoisyStations = 3;  // at one setting, until it is not their fault
constexpr int maxForeignFrames = 2;  // may be late replies to a program that has just ended

} // namespace

void StationScan::hear(bool isSilent, Clock::time_point now)
{
    while (const std::optional<ScanPiece> piece = ear_.take(isSilent)) {
        events_.received(*piece);
        judge(*piece, now);
    }
}

void StationScan::judge(const ScanPiece& piece, Clock::time_point now)
{
    if (state_ == State::listening) {
        unaskedBytes_ += static_cast<int>(piece.bytes.size());
        if (piece.kind != ScanPiece::noise)
            speakers_.insert(piece.station);
        return;
    }
    if (piece.kind == ScanPiece::answer)
        answered(piece, now);
    else if (piece.kind == ScanPiece::absent)
        absent(piece, now);
    else if (piece.kind == ScanPiece::foreign)
        foreignCame(piece.station, static_cast<int>(piece.bytes.size()));
    else
        windowNoise_ += static_cast<int>(piece.bytes.size());
}

void StationScan::answered(const ScanPiece& piece, Clock::time_point now)
{
    const auto found = stations_.find(piece.station);
    const bool isExpected =
        found != stations_.end() && found->second.questions.at(piece.question).isOpen;
    if (!isExpected) {
        unasked(piece, now);
        return;
    }
    Station& station = found->second;
    Question& question = station.questions.at(piece.question);
    question.isOpen = false;
    ++question.answers;
    station.took = std::max({station.took, Micros(0), toMicros(firstByte_ - question.askedAt)});
    queue_.erase(std::remove_if(queue_.begin(), queue_.end(),
                                [&piece](const Ask& ask) {
                                    return ask.station == piece.station &&
                                           ask.question == piece.question;
                                }),
                 queue_.end());
    if (++station.answers == 1) {
        station.firstAnswer = firstByte_;
        queue_.push_front(
            {piece.station, 1 - piece.question, turns_.front().timeout + 2 * station.took});
    } else if (!station.isTold) {
        tell(piece.station, station, true);
    }
    const bool isAwaited = ask_.station == piece.station && ask_.question == piece.question;
    if (state_ == State::closing || (state_ == State::awaiting && isAwaited))
        pause(now);
    else
        isDisturbed_ = true;
}

// The gateway has asked it in vain, so there is nothing to wait for.
void StationScan::absent(const ScanPiece& piece, Clock::time_point now)
{
    const auto found = stations_.find(piece.station);
    if (found == stations_.end())
        return;
    found->second.questions.at(piece.question).isOpen = false;
    if (state_ == State::awaiting && ask_.station == piece.station &&
        ask_.question == piece.question)
        until_ = now;
}

// A sound answer to a question that is not open.
void StationScan::unasked(const ScanPiece& piece, Clock::time_point now)
{
    isDisturbed_ = true;
    const auto here = stations_.find(piece.station);
    if (here != stations_.end() && here->second.questions.at(piece.question).answers > 0) {
        Question& question = here->second.questions.at(piece.question);
        if (++question.answers > question.asked &&
            !std::exchange(here->second.hasAnsweredTwice, true))
            events_.heard({HeardKind::answeredTwice, turns_.front().line, piece.station});
        return;
    }
    if (!askAgainAtEarlierLine(piece.station, now))
        foreignCame(piece.station, static_cast<int>(piece.bytes.size()));
}

// False where it was not asked in vain at the settings before.
bool StationScan::askAgainAtEarlierLine(int station, Clock::time_point came)
{
    const auto before = earlierStations_.find(station);
    if (before == earlierStations_.end())
        return false;
    for (Question& question : before->second.questions) {
        if (!std::exchange(question.isOpen, false))
            continue;
        const Micros took = toMicros(came - question.askedAt);
        turns_.push_back({earlier_.line, {station}, settings_.timeout + 2 * took});
        events_.heard({HeardKind::otherLine, earlier_.line, station});
        return true;
    }
    return false;
}

void StationScan::foreignCame(int station, int bytes)
{
    isDisturbed_ = true;
    speakers_.insert(station);
    if (isInUse_ || ++foreignFrames_ <= maxForeignFrames)
        return;
    isInUse_ = true;
    ScanHeard heard{HeardKind::inUse, turns_.front().line};
    heard.bytes = bytes;
    heard.stations = speakers_;
    events_.heard(heard);
}

// The time for an answer is up.
void StationScan::windowIsOver(Clock::time_point now)
{
    Station& station = stations_[ask_.station];
    station.noise += windowNoise_;
    const bool mayBeLost = isDisturbed_ || windowNoise_ > 0;
    Ask again = ask_;
    ++again.tries;
    if (station.answers > 0) {
        // It may know one of the two questions only: a second answer to that will do.
        again.question = 1 - ask_.question;
        if (again.tries <= maxDisturbedTries)
            queue_.push_front(again);
        else if (!station.isTold)
            tellOnce(ask_.station, station);
    } else if (mayBeLost && again.tries <= maxDisturbedTries &&
               noisyStations_ <= maxNoisyStations) {
        queue_.push_back(again);
    } else if (windowNoise_ > 0) {
        tellGarbled(ask_.station, station.noise);
    }
    if (mayBeLost)
        pause(now);
    else
        next(now);
}

void StationScan::tellGarbled(int station, int noise)
{
    if (++noisyStations_ <= maxNoisyStations) {
        ScanHeard heard{HeardKind::garbled, turns_.front().line, station};
        heard.bytes = noise;
        events_.heard(heard);
    } else if (noisyStations_ == maxNoisyStations + 1) {
        events_.heard({HeardKind::noFrame, turns_.front().line});
    }
}

// Its only answer may have been a late one, to what it was asked at the settings before.
void StationScan::tellOnce(int station, Station& of)
{
    if (!isStopping_ && askAgainAtEarlierLine(station, of.firstAnswer))
        of.isTold = true;
    else
        tell(station, of, false);
}

void StationScan::tell(int station, Station& of, bool isConfirmed)
{
    of.isTold = true;
    Found found{turns_.front().line, station, of.took};
    found.isSlow = of.took > settings_.timeout;
    found.isConfirmed = isConfirmed;
    events_.found(found);
}

} // namespace dov417
