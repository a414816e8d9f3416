// Could a reply be mistaken, and has a marker ended that?
#include "link/exchange.h"

namespace dov417 {

namespace {

constexpr char diagnostics = 8;
constexpr int maxMarksIgnored = 2; // one may have been lost
constexpr int firstMarks = 3;      // of a station that is unknown: two echoes, one read

} // namespace

int Exchange::Station::marksAtOnce() const
{
    return isUnknown && marksUnanswered == 0 ? firstMarks : 1;
}

// A station that says nothing to an echo may know no function 8, or have missed it.
bool Exchange::Station::mayEcho() const
{
    return marksIgnored < maxMarksIgnored &&
           (marksUnanswered < firstMarks - 1 || marksUnanswered % 2 != 0);
}

bool Exchange::isWary(Clock::time_point now) const
{
    return now < cleanAt_;
}

// Could something that is still to come be mistaken for the reply?
bool Exchange::isInDoubt(Clock::time_point now)
{
    return isWary(now) || (station().isUnknown && now < foreignEnd_) ||
           books_.couldBeMistaken(current_.sent, current_.replyLength);
}

// Does this answer tell that nothing is still to come that could be mistaken? Its own, one to a
// marker before it if no request went out since, or whatever else ends what was in doubt.
bool Exchange::endsDoubt(const OpenTransmission& answered, LineResult result, Clock::time_point now)
{
    const bool isEcho = answered.sent.at(1) == diagnostics;
    // The copy of an exception may stand for the exception to a read.
    const bool isCertain = isEcho || result == LineResult::reply || !isWary(now);
    return (answered.number == marker_.number && isCertain) ||
           (isEcho && answered.number > station().lastRequest.number) || !isInDoubt(now);
}

void Exchange::markerFinished(LineResult result, Clock::time_point now)
{
    Station& marked = station();
    marked.markFailed = result == LineResult::timeout;
    if (marked.markFailed) {
        marked.timeout.passed(settings_.timeout);
        ++marked.marksUnanswered;
    } else {
        marked.isUnknown = false;
        marked.marksUnanswered = 0;
    }
    marker_.reception.result = result;
    line_.markerEnded(marker_);
    if (marked.markFailed && markersLeft_ == 0 && isInDoubt(now) && current_.isRead()) {
        // Not sent, and it is the station that did not answer.
        current_.timeout = marker_.timeout;
        isMarking_ = false;
        finish(LineResult::timeout);
        return;
    }
    next(now);
}

} // namespace dov417
