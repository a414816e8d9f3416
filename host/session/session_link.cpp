// What the link tells of each transmission, and what the session makes of it; what listeners throw.
#include "session/session.h"

#include <QMetaMethod>
#include <algorithm>
#include <cstdio>
#include <utility>

#include "session/driver_keys.h"

namespace dov417 {

const char* const repliesAreDoubtful =
    "a station sent more replies than it was asked for: what was read may be wrong";

void Session::began(const Transmission& transmission)
{
    static const QMetaMethod signal = QMetaMethod::fromSignal(&Session::transmissionBegan);
    if (isSignalConnected(signal))
        tellings_.add([this, transmission]() { emit transmissionBegan(transmission); });
}

void Session::tellEnded(const Transmission& transmission)
{
    static const QMetaMethod signal = QMetaMethod::fromSignal(&Session::transmissionEnded);
    if (isSignalConnected(signal))
        tellings_.add([this, transmission]() { emit transmissionEnded(transmission); });
}

// What is read once or written begins where a value does.
bool Session::mayCut(const Request& request, int word) const
{
    if (recipe_.isMoving())
        return recipe_.mayCut(request, word);
    if (request.kind == sendCyclicRead)
        return !wholeValues_.goOn(request.station, request.regName, word);
    return (word - request.address) % requests_.wordsOfAValue(request.kind) == 0;
}

void Session::ended(const Transmission& transmission)
{
    if (!transmission.isLocal && transmission.frames == 0)
        tellEnded(transmission); // else its parts were told, or nothing was sent
    const bool readBeforeWrite = requests_.isReadBeforeWrite(transmission);
    const bool accepted = transmission.verdict == replyAccepted;
    if (transmission.isRead() && !readBeforeWrite) {
        if (accepted && transmission.frames == 0)
            views_.confirm(transmission.request, transmission.asOf);
        else if (accepted)
            for (const Part& part : transmission.parts)
                views_.confirm(part.words, part.asOf);
        else if (transmission.isAbandoned())
            views_.giveUp(transmission.request);
    }

    if (transmission.isAbandoned() && !transmission.isLocal) // that its station is silent is known
        tellings_.add([this, request = transmission.description, reason = transmission.reason,
                       why = transmission.why]() { emit abandoned(request, reason, why); });
    if (transmission.verdict != replyBad && !(accepted && readBeforeWrite)) {
        // A frame that the driver has forgotten ends nothing.
        if (transmission.verdict != replyNothingOutstanding)
            settle(transmission);
        isOfPlanBefore_ = false;
        // Nothing is on the line now: only here is it certain whose the next frame is.
        recipe_.beginRound();
        requests_.feed(cycleUnderWay());
    }
    tellChanges();
}

void Session::settle(const Transmission& transmission)
{
    if (recipe_.isMoving())
        recipe_.settle(transmission);
    else if (transmission.request.kind == sendCyclicRead)
        countCycle();
    else {
        const Address* const written = requests_.writtenBy(transmission);
        if (written != nullptr && !answeredOtherwise(transmission).empty())
            views_.wasWrittenOtherwise(*written);
        requests_.settle(transmission);
    }
}

std::optional<long long> Session::cycleUnderWay() const
{
    return plannedRequests_ > 0 ? std::optional<long long>(cycles_) : std::nullopt;
}

void Session::countCycle()
{
    if (isOfPlanBefore_ || ++requestsThisCycle_ < plannedRequests_)
        return;
    const Clock::time_point now = Clock::now();
    runner_.cycleEnded(std::chrono::duration_cast<Micros>(now - cycleStart_));
    ++cycles_;
    pace(now);
    requestsThisCycle_ = 0;
    if (cycles_ == lastCycle_)
        finish(afterLastCycle_);
    tellings_.add([this, cycles = cycles_]() { emit cycleEnded(cycles); });
}

// The first cycle is no measure: before it each station is asked for what may still be out.
void Session::pace(Clock::time_point now)
{
    const Clock::time_point due = cycleStart_ + cycleInterval_;
    const Micros taken = std::chrono::duration_cast<Micros>(now - cycleStart_);
    cycleStart_ = std::max(due, now);
    runner_.holdUntil(cycleStart_, [this]() {
        return requests_.isAnyUnderWay() || recipe_.isUnderWay() || driverHasAFrame();
    });
    if (cycleInterval_.count() == 0 || due > now || cycles_ == 1 || isTooLong_)
        return;
    isTooLong_ = true;
    char text[96];
    std::snprintf(text, sizeof text, "the line cannot keep %lld ms: a cycle took %.1f ms",
                  static_cast<long long>(cycleInterval_.count()),
                  static_cast<double>(taken.count()) / 1000.0);
    tellings_.add([this, said = std::string(text)]() { emit noticed(said); });
}

// Nothing of it is known until it has been read again.
void Session::doubt()
{
    ++doubts_;
    recipe_.doubt(repliesAreDoubtful);
    views_.doubt();
    tellChanges();
}

void Session::portWas(bool open, const std::string& message)
{
    cycleStart_ = Clock::now();
    if (!open)
        views_.makeOld();
    tellChanges();
    tellings_.add([this, open, message]() { emit portChanged(open, message); });
}

// Not of one that throws when it is told just this: that would go on for ever.
void Session::listenerThrew(const std::string& what)
{
    if (std::exchange(isTellingWhatWasThrown_, false))
        return;
    tellings_.add([this, what]() {
        isTellingWhatWasThrown_ = true;
        emit noticed("a listener threw an exception: " + what);
        isTellingWhatWasThrown_ = false;
    });
}

} // namespace dov417
