// A frame came: whose answer is it, and what does it tell of the station?
#include "link/exchange.h"

#include <algorithm>
#include <string>

#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "link/marker.h"

namespace dov417 {

namespace {

constexpr std::chrono::minutes cleanFor(10); // so long without a surplus ends the doubt
constexpr int maxReplyLength = 261;          // 128 registers

} // namespace

long long Exchange::Settled::number() const
{
    return answered ? answered->number : 0;
}

StrayKind Exchange::Settled::kindOr(StrayKind kind) const
{
    return isSurplus ? StrayKind::surplus : kind;
}

Exchange::Settled Exchange::settle(const QByteArray& frame, Clock::time_point now)
{
    Settled settled;
    if (!hasGoodCrc(frame))
        return settled;
    learnOfAdapter();
    astray_.lineWasSound = true;
    rememberClosedBy(frame, now);
    settled.answered =
        isEcho(frame) || !mayBeOthers(frame, now) ? books_.take(frame) : books_.find(frame);
    if (settled.answered) {
        noteAnswer(*settled.answered, now);
        const bool isAsSent = isEcho(frame) && frame == settled.answered->sent;
        known(stationOf(frame)).numbersEchoes |= isAsSent;
        // What comes back as it was sent may be what the adapter has heard.
        if (isEcho(settled.answered->sent) && (!isAsSent || collector_.knowsAdapter()))
            books_.answersEchoes(stationOf(frame));
    } else if (isSurplus(frame, now)) {
        settled.isSurplus = true;
        surplusCame(stationOf(frame), now);
    }
    return settled;
}

// May this frame be the reply to another program's request?
bool Exchange::mayBeOthers(const QByteArray& frame, Clock::time_point now) const
{
    return known(stationOf(frame)).isUnknown && now < foreignEnd_ + maxReplyTime();
}

// A station begins to answer within the horizon. This is what the request and the rest of the reply
// take besides. Over a network either may be held up on the way.
Micros Exchange::maxReplyTime() const
{
    return onTheWire(2 * maxReplyLength) + settings_.replyGap +
           (settings_.bytesTakeTime ? Micros(0) : settings_.timeout.initial);
}

void Exchange::noteAnswer(const OpenTransmission& answered, Clock::time_point now)
{
    Station& heard = known(stationOf(answered.sent));
    const Transmission& onLine = isMarking_ ? marker_ : current_;
    const bool inTime =
        onLine.sent == answered.sent && onLine.reception.firstByte != Clock::time_point();
    // Of any other frame the begin is not known: its last byte stands for it.
    const Clock::time_point began = inTime ? onLine.reception.firstByte : lastActivity_;
    // If it was sent several times, it is measured from the last: a station that was switched off
    // for an hour does not take an hour to answer.
    const Clock::time_point ended = books_.lastSent(answered.sent).value_or(answered.sentAt) +
                                    onTheWire(static_cast<int>(answered.sent.size()));
    const Micros delay = std::max(Micros(0), std::chrono::duration_cast<Micros>(began - ended));
    heard.timeout.answered(delay, settings_.timeout);
    nameIfSlow(stationOf(answered.sent), delay);
    heard.listenUntil = now;
    heard.lastAnswered = answered;
    if (isEcho(answered.sent)) {
        heard.marksIgnored = 0;
        // A late answer to a marker that was given up counts, too, if that was sent on this line.
        heard.isUnknown = heard.isUnknown && answered.number <= earlier_;
    } else if (heard.markFailed) {
        ++heard.marksIgnored; // it answers other requests, but not markers
    }
    heard.markFailed = false;
}

// A surplus: a sound frame that answers nothing and looks like the reply to something that has been
// answered. Not as long as another program may have asked the station, nor for a write as long as
// it is not known whether the adapter echoes: its echo looks like a second reply.
bool Exchange::isSurplus(const QByteArray& frame, Clock::time_point now)
{
    const bool mayBeForeign = mayBeOthers(frame, now);
    const bool mayBeEcho =
        byteAt(frame, functionIndex) > readInputRegisters && !collector_.knowsAdapter();
    return !mayBeForeign && !mayBeEcho && books_.fitsWhatIsOver(frame);
}

void Exchange::surplusCame(int station, Clock::time_point now)
{
    const bool isFirst = !isWary(now);
    books_.expectCopies(now + cleanFor);
    if (!isFirst)
        return;
    doubtedAt_ = now;
    ++doubts_;
    line_.doubt();
    if (!surplusWasSaid_)
        line_.notice(stationText(station, settings_.stationNames) +
                     " sends more replies than it was asked for: what may be wrong is not known "
                     "until it has been read again, with a check before each request");
    surplusWasSaid_ = true;
}

} // namespace dov417
