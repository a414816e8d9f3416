// Could a reply be mistaken, and has a marker ended that?
#include "link/exchange.h"

#include <algorithm>

#include "line/frame_bytes.h"
#include "link/marker.h"

namespace dov417 {

namespace {

constexpr int maxMarksIgnored = 2; // one may have been lost
constexpr int firstEchoes = 2;     // unanswered ones, before a read is tried as a marker
constexpr int maxMarks = 4;        // two echoes and two reads

bool wasEcho(const OpenTransmission& answered)
{
    return !answered.sent.isEmpty() && isEcho(answered.sent);
}

} // namespace

int Exchange::Station::marksAtOnce(bool knowsAdapter) const
{
    return !isUnknown ? 1 : knowsAdapter ? maxMarks : maxMarks + 1;
}

// A station that says nothing to an echo may know no function 8, or have missed it. One that has
// sent an echo back knows the function: a later echo without an answer was lost, or its answer was
// taken for what an adapter hears of itself. A read finds that out.
bool Exchange::Station::mayEcho(bool beforeRead) const
{
    if (answeredEchoBefore || (numbersEchoes && !beforeRead))
        return true;
    return (numbersEchoes || marksIgnored < maxMarksIgnored) && !hasAnsweredRead &&
           (marksUnanswered < firstEchoes || marksUnanswered % 2 != 0);
}

// A read's reply has no number: the first one may be a reply to another program. The second read is
// of another length, so its reply cannot be one as well.
void Exchange::Station::markWasAnswered(const OpenTransmission& marker)
{
    isUnknown = isUnknown && !isEcho(marker.sent) && !hasAnsweredRead;
    hasAnsweredRead = isUnknown;
    marksUnanswered = isUnknown ? marksUnanswered : 0;
}

bool Exchange::isWary(Clock::time_point now) const
{
    return now < books_.copiesUntil();
}

// Makes a marker for the current request. False if none can be told from what is out.
bool Exchange::mark(Clock::time_point now)
{
    Station& asked = station();
    // Another station may be in its place.
    asked.answeredEchoBefore = asked.answeredEchoBefore && mayBeOthers(current_.sent, now);
    // An exception does not say which echo it answers, nor whether it is a copy of the last answer.
    isAlone_ = asked.numbersEchoes ||
               !(books_.isEchoOut(stationOf(current_.sent)) || wasEcho(asked.lastAnswered));
    const auto make = [&](MarkerKind kind) {
        marker_ = makeMarker(current_, books_, asked.lastAnswered, kind, nextMark_);
        return marker_.replyLength > 0;
    };
    // What a two-wire adapter hears of its own sending looks like the answer to an echo, and to a
    // write. Only a read tells whether the adapter hears itself, so one goes before the first
    // write, and before a read whose reply can begin like its echo.
    const bool tellsNothing = current_.isRead() ? couldOpenLikeItsEcho() : !knowsAdapter();
    const bool isFirst = tellsNothing && make(MarkerKind::readAlso);
    isForAdapter_ = isFirst && settings_.mayMark;
    if (isFirst)
        return true;
    // A silent station may know no function 8, and the next probe is far off: a read is surer.
    if (current_.isProbe() && !asked.numbersEchoes && !asked.answeredEchoBefore)
        return make(MarkerKind::readOfProbe) || repeatOpenRead();
    const bool mayEcho = settings_.mayMark && (isAlone_ || !isWary(now));
    // The reply to a multiple write does not repeat the values: a copy, or the reply to another
    // program, would confirm the next write. So the marker is a read of some kind even then.
    const MarkerKind other =
        isWary(now) || mayBeOthers(current_.sent, now) ? MarkerKind::readAlso : MarkerKind::read;
    if (make(mayEcho && asked.mayEcho(current_.isRead()) ? MarkerKind::echo : other))
        return true;
    // Reads of every length may be out already: then only a numbered echo is left.
    return mayEcho && asked.numbersEchoes && make(MarkerKind::echo);
}

// Sends the open read again that a reply could be mistaken for: whichever of the two is answered,
// the reply is good for both. Without such a read, reads of every length are out: the oldest.
bool Exchange::repeatOpenRead()
{
    auto alike = books_.mistakable(current_.sent, current_.replyLength);
    if (!alike)
        alike = books_.oldestRead(stationOf(current_.sent));
    if (!alike)
        return false;
    marker_ = Transmission();
    marker_.sent = alike->sent;
    marker_.replyLength = alike->replyLength;
    marker_.isMarker = true;
    marker_.request.station = stationOf(alike->sent);
    return true;
}

// Could something that is still to come be mistaken for the reply?
bool Exchange::isInDoubt(Clock::time_point now)
{
    return isWary(now) || station().wasAdapters || mayBeOthers(current_.sent, now) ||
           books_.couldBeMistaken(current_.sent, current_.replyLength);
}

// Is it known whether the adapter hears its own sending? If nothing at all came to the last frame,
// it does not.
bool Exchange::knowsAdapter() const
{
    return collector_.knowsAdapter() || wasSilent_;
}

// Could the adapter's echo of this write confirm it? The reply to such a write is the write itself.
// A line that nobody shares has no such adapter.
bool Exchange::couldConfirmItself() const
{
    return settings_.isShared && !knowsAdapter() && !current_.isRead() &&
           current_.replyLength == current_.sent.size();
}

// What the adapter may hear of a read, and the front of its reply, may be the same.
bool Exchange::couldOpenLikeItsEcho() const
{
    return !knowsAdapter() && mayOpenLikeItsEcho(current_.sent, current_.replyLength);
}

// Is this frame perhaps the adapter's echo of the current write? The markers before it may not have
// cleared that: their echoes were garbled, or no read could be made that is told from an echo.
bool Exchange::mayBeOwnEcho(const QByteArray& frame) const
{
    return couldConfirmItself() && frame == current_.sent;
}

// The marker that ended a doubt may have been "answered" by the adapter alone. As many bytes as the
// request has came besides the reply: perhaps the adapter's echo, garbled.
bool Exchange::mayHaveBeenEchoed()
{
    return current_.isRead() && !collector_.knowsAdapter() && !station().closedByEcho.empty() &&
           bytesCame_ - current_.reception.bytes.size() >= current_.sent.size();
}

// Was it sent since the first surplus was met? What is out from before cannot be told apart.
bool Exchange::isOfDoubt(const Transmission& frame) const
{
    return frame.number > 0 && frame.sendBegin > doubtedAt_;
}

// Does this answer show that no reply is out that could be mistaken? The answer to the marker does,
// that to an earlier marker if no request went out since, and any answer after which nothing is in
// doubt.
bool Exchange::endsDoubt(const OpenTransmission& answered, LineResult result, Clock::time_point now)
{
    // While replies come twice, it may be a copy of the answer to another echo or read.
    const bool isCertain =
        !isWary(now) ||
        (isOfDoubt(marker_) && (isEcho(answered.sent) ? isAlone_ : result == LineResult::reply));
    const bool isMarkers =
        answered.number == marker_.number ||
        (isEcho(answered.sent) && answered.number > std::max(earlier_, station().lastAsked.number));
    return (isMarkers && isCertain) || !isInDoubt(now);
}

// If the adapter turns out to hear itself, the echoes that ended doubts may have been its own: what
// they closed is opened again.
void Exchange::learnOfAdapter()
{
    if (!trustsEchoes_ || !collector_.knowsAdapter())
        return;
    trustsEchoes_ = false;
    for (auto& [number, each] : stations_) {
        if (!collector_.echoes() && each.numbersEchoes)
            books_.answersEchoes(number);
        if (collector_.echoes() && !each.closedByEcho.empty()) {
            for (const OpenTransmission& closed : each.closedByEcho)
                books_.reopen(closed);
            each.isUnknown = true;
            each.numbersEchoes = each.hasAnsweredRead = false;
            each.marksUnanswered = 0;
            each.wasAdapters = true;
        }
        each.closedByEcho.clear();
    }
}

// Notes what an echo closes while it may be the adapter's: learnOfAdapter() opens it again.
void Exchange::rememberClosedBy(const QByteArray& frame, Clock::time_point now)
{
    if (collector_.knowsAdapter() || !isEcho(frame))
        return;
    const auto answered = books_.find(frame);
    if (!answered || frame != answered->sent)
        return;
    trustsEchoes_ = true;
    auto& closed = known(stationOf(frame)).closedByEcho;
    // The list must not grow for months where a station answers echoes and no read.
    const auto isPast = [&](const OpenTransmission& each) {
        return each.sentAt + settings_.horizon + maxReplyTime() <= now;
    };
    closed.erase(std::remove_if(closed.begin(), closed.end(), isPast), closed.end());
    for (const OpenTransmission& open : books_.open())
        if (stationOf(open.sent) == stationOf(frame) && open.number <= answered->number)
            closed.push_back(open);
}

void Exchange::markerAnswered(LineResult result)
{
    station().wasAdapters = false;
    // A marker that was sent to learn of the adapter counts only for a station that is known.
    if (!isForAdapter_ || !station().isUnknown)
        station().markWasAnswered(openOf(marker_));
    // While others may have asked the station the answer was only looked up: now it closes.
    if (!station().isUnknown && !isEcho(marker_.sent) && result == LineResult::reply)
        books_.take(marker_.reception.bytes);
}

void Exchange::markerFinished(LineResult result, Clock::time_point now)
{
    Station& marked = station();
    wasSilent_ = wasSilent_ && bytesCame_ == 0; // bytes after the time-out may be an echo
    marker_.reception.result = result;
    marker_.reception.astray = astray_;
    marked.markFailed = !isSound(marker_.reception);
    if (marked.markFailed) {
        marker_.why = reasonOf(marker_.reception, marker_.replyLength);
        if (result != LineResult::timeout)
            astray_.addGarbled(marker_.reception.bytes, marker_.replyLength);
        if (!astray_.saysLessThan(markersAstray_))
            markersAstray_ = astray_;
        markersAstray_.lineWasSound = astray_.lineWasSound;
        // From here on a silent station gets one marker for each request.
        if (++marked.marksUnanswered > firstEchoes)
            markersLeft_ = 0;
    }
    line_.markerEnded(marker_);
    // This marker went out before the first surplus came: its reply may have been a copy, too, so
    // one more is allowed.
    if (!marked.markFailed && isWary(now) && !isOfDoubt(marker_))
        ++markersLeft_;
    const bool wasLast = current_.isProbe() || (markersLeft_ == 0 && isInDoubt(now));
    if (marked.markFailed && wasLast && current_.isRead()) {
        // The request is not sent: the station has not answered its marker, and for a probe one
        // frame is enough.
        current_.timeout = marker_.timeout;
        isMarking_ = false;
        astray_ = markersAstray_;
        finish(LineResult::timeout);
        return;
    }
    next(now);
}

} // namespace dov417
