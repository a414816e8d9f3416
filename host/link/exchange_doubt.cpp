// Could a reply be mistaken, and has a marker ended that?
#include "link/exchange.h"

#include <algorithm>

#include "line/frame_bytes.h"
#include "link/marker.h"

namespace dov417 {

namespace {

constexpr int maxMarksIgnored = 2; // one may have been lost
constexpr int firstEchoes = 2;     // to a station that is unknown, before a read is tried
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

// A station that says nothing to an echo may know no function 8, or have missed it.
// Once it has sent one back it knows it: what stays unanswered was lost, or taken for an adapter's
// echo, which a read can tell.
bool Exchange::Station::mayEcho(bool beforeRead) const
{
    if (answeredEchoBefore || (numbersEchoes && !beforeRead))
        return true;
    return (numbersEchoes || marksIgnored < maxMarksIgnored) && !hasAnsweredRead &&
           (marksUnanswered < firstEchoes || marksUnanswered % 2 != 0);
}

// What is read has no number: the first reply may be one to another program, but not the second,
// of another length, too.
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

// Makes a marker, if there is one.
bool Exchange::mark(Clock::time_point now)
{
    Station& asked = station();
    // Another station may be in its place.
    asked.answeredEchoBefore = asked.answeredEchoBefore && mayBeOthers(current_.sent, now);
    // Of exceptions none says which echo it is to, nor whether it is the last one once more.
    isAlone_ = asked.numbersEchoes ||
               !(books_.isEchoOut(stationOf(current_.sent)) || wasEcho(asked.lastAnswered));
    const auto make = [&](MarkerKind kind) {
        marker_ = makeMarker(current_, books_, asked.lastAnswered, kind, nextMark_);
        return marker_.replyLength > 0;
    };
    // What a two-wire adapter hears of its own sending looks like the answer to an echo, and to a
    // write, until it has been heard to echo a read, or not to. Before a read, that itself tells,
    // unless its reply can begin like its echo.
    const bool tellsNothing = current_.isRead() ? couldOpenLikeItsEcho() : !knowsAdapter();
    const bool isFirst = tellsNothing && make(MarkerKind::readAlso);
    isForAdapter_ = isFirst && settings_.mayMark;
    if (isFirst)
        return true;
    // It may say nothing to an echo, and the next probe is far off.
    if (current_.isProbe() && !asked.numbersEchoes && !asked.answeredEchoBefore)
        return make(MarkerKind::readOfProbe) || repeatOpenRead();
    const bool mayEcho = settings_.mayMark && (isAlone_ || !isWary(now));
    // The reply to a write of several words says none of them: one that comes twice confirms the
    // next write, too, and so does one to another program's.
    const MarkerKind other =
        isWary(now) || mayBeOthers(current_.sent, now) ? MarkerKind::readAlso : MarkerKind::read;
    if (make(mayEcho && asked.mayEcho(current_.isRead()) ? MarkerKind::echo : other))
        return true;
    // Reads of every length may be out already.
    return mayEcho && asked.numbersEchoes && make(MarkerKind::echo);
}

// What the station was silent to, once more: all that look like its reply answer the same. Where
// nothing of ours does, reads of every other length are out.
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

// Does the adapter hear its own sending, or not? Where nothing at all came, it does not now.
bool Exchange::knowsAdapter() const
{
    return collector_.knowsAdapter() || wasSilent_;
}

// Its reply is the write itself, which the adapter may hear. A line that nobody shares has none.
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

// What came in for a write, and is the write itself. The markers before it may have told nothing:
// their echoes were garbled, or there was none that an echo could not be taken for.
bool Exchange::mayBeOwnEcho(const QByteArray& frame) const
{
    return couldConfirmItself() && frame == current_.sent;
}

// Only the adapter may have heard the marker that ended a doubt, and what came besides the reply
// may have been the echo that was to tell, garbled.
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

// Does this answer tell that nothing is still to come that could be mistaken? Its own, one to a
// marker before it if no request went out since, or whatever else ends what was in doubt.
bool Exchange::endsDoubt(const OpenTransmission& answered, LineResult result, Clock::time_point now)
{
    // What comes twice may as well have answered another echo, or another read.
    const bool isCertain =
        !isWary(now) ||
        (isOfDoubt(marker_) && (isEcho(answered.sent) ? isAlone_ : result == LineResult::reply));
    const bool isMarkers =
        answered.number == marker_.number ||
        (isEcho(answered.sent) && answered.number > std::max(earlier_, station().lastAsked.number));
    return (isMarkers && isCertain) || !isInDoubt(now);
}

// Where the adapter turns out to echo, what was taken for a station's echo has ended no doubt.
void Exchange::learnOfAdapter()
{
    if (!trustsEchoes_ || !collector_.knowsAdapter())
        return;
    trustsEchoes_ = false;
    for (std::size_t i = 0; i < stations_.size(); ++i) {
        Station& each = stations_.at(i);
        if (!collector_.echoes() && each.numbersEchoes)
            books_.answersEchoes(static_cast<unsigned char>(i));
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

// What looks like the answer to an echo may be what the adapter hears of it. Then all that it
// closes is to be open again.
void Exchange::rememberClosedBy(const QByteArray& frame, Clock::time_point now)
{
    if (collector_.knowsAdapter() || !isEcho(frame))
        return;
    const auto answered = books_.find(frame);
    if (!answered || frame != answered->sent)
        return;
    trustsEchoes_ = true;
    auto& closed = stations_.at(stationOf(frame)).closedByEcho;
    // A station may answer echoes, and no read, for months.
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
    // One that is asked for the adapter's sake comes besides.
    if (!isForAdapter_ || !station().isUnknown)
        station().markWasAnswered(openOf(marker_));
    // What went before it was only looked up as long as others may have asked, too.
    if (!station().isUnknown && !isEcho(marker_.sent) && result == LineResult::reply)
        books_.take(marker_.reception.bytes);
}

void Exchange::markerFinished(LineResult result, Clock::time_point now)
{
    Station& marked = station();
    wasSilent_ = wasSilent_ && bytesCame_ == 0; // the plug came in
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
        // Silent as it is, it gets one marker for each request from here on.
        if (++marked.marksUnanswered > firstEchoes)
            markersLeft_ = 0;
    }
    line_.markerEnded(marker_);
    // The first surplus came behind its reply, which may have been one, too.
    if (!marked.markFailed && isWary(now) && !isOfDoubt(marker_))
        ++markersLeft_;
    const bool wasLast = current_.isProbe() || (markersLeft_ == 0 && isInDoubt(now));
    if (marked.markFailed && wasLast && current_.isRead()) {
        // Not sent, and it is the station that did not answer: for a probe one frame is enough.
        current_.timeout = marker_.timeout;
        isMarking_ = false;
        astray_ = markersAstray_;
        finish(LineResult::timeout);
        return;
    }
    next(now);
}

} // namespace dov417
