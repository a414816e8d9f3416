#include "link/reply_collector.h"

#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "line/frame_length.h"

namespace dov417 {

namespace {

constexpr int writeReplyHead = 6; // station, function, address, quantity or value: as requested
constexpr int functionEnd = 2;
constexpr int maxCount = 255; // data bytes that the count byte of a reply can name
constexpr int maxOwed = 4;    // echoes; more are not under way, but were garbled

// Of a write so many bytes come back: as requested, value or quantity included. The counters that
// other diagnostics ask for are nobody's request.
int repeatedHead(const QByteArray& request)
{
    const int head = echoedHead(request);
    return head == addressEnd && functionOf(request) != diagnostics ? writeReplyHead : head;
}

} // namespace

bool mayOpenLikeItsEcho(const QByteArray& request, int replyLength)
{
    const int count = replyLength - exceptionLength;
    return isReadFunction(functionOf(request)) && replyLength > request.size() &&
           byteAt(request, addressIndex) == (count & 0xFF);
}

ReplyCollector::ReplyCollector(bool mayHearItself) : mayHearItself_(mayHearItself) {}

void ReplyCollector::begin(const QByteArray& request, int replyLength)
{
    if (isSent_ && adapterEchoes_ && !echoStripped_ && !echoIsBehind_)
        owed_.append(request_);
    if (owed_.size() > maxOwed)
        owed_.removeFirst();
    isSent_ = false;
    request_ = request;
    replyLength_ = replyLength;
    almostReply_.clear();
    echoStripped_ = false;
    echoIsBehind_ = false;
    goOn();
}

void ReplyCollector::sent()
{
    isSent_ = true;
}

void ReplyCollector::goOn()
{
    pending_.clear();
    reply_.clear();
}

Arrival ReplyCollector::add(const QByteArray& bytes)
{
    pending_.append(bytes);
    return judge();
}

bool ReplyCollector::isEmpty() const
{
    return pending_.isEmpty();
}

int ReplyCollector::size() const
{
    return static_cast<int>(pending_.size());
}

bool ReplyCollector::isReplyUnderWay() const
{
    return !pending_.isEmpty() && pending_.size() < replyLength_ && opensLikeAnswer();
}

QByteArray ReplyCollector::reply() const
{
    return reply_;
}

bool ReplyCollector::takeEcho(const QByteArray& bytes)
{
    if (owed_.removeOne(bytes))
        return true;
    if (!adapterEchoes_ || echoStripped_ || bytes != request_)
        return false;
    echoStripped_ = true;
    return true;
}

// A read is never answered with its own request, so it tells for certain.
void ReplyCollector::wasAnswer(bool cameAlone)
{
    if (!isReadFunction(functionOf(request_)) || (!cameAlone && !echoStripped_ && !echoIsBehind_))
        return;
    adapterEchoes_ = echoStripped_ || echoIsBehind_;
    knowsAdapter_ = true;
}

bool ReplyCollector::knowsAdapter() const
{
    return knowsAdapter_;
}

void ReplyCollector::forgetAdapter()
{
    knowsAdapter_ = false;
}

bool ReplyCollector::echoes() const
{
    return adapterEchoes_;
}

QList<Stray> ReplyCollector::takeStrays()
{
    QList<Stray> taken;
    taken.swap(strays_);
    return taken;
}

Arrival ReplyCollector::judge()
{
    stripOwedEchoes();
    if (mayHearItself_ && !echoStripped_ && stripEcho())
        echoStripped_ = true;

    // A sound frame of the awaited kind counts wherever it starts: noise may precede it.
    for (int first = 0; pending_.size() - first >= exceptionLength; ++first) {
        if (pending_.at(first) != request_.at(0))
            continue;
        const int function = byteAt(pending_, first + 1);
        if (function == byteAt(request_, 1) && isAnswer(pending_.mid(first, replyLength_)))
            return finish(Arrival::reply, first, replyLength_);
        if (function == (byteAt(request_, 1) | exceptionFlag) &&
            hasGoodCrc(pending_.mid(first, exceptionLength)))
            return finish(Arrival::exception, first, exceptionLength);
    }
    const bool mayBeEcho =
        !echoStripped_ && pending_.size() < request_.size() && request_.startsWith(pending_);
    // Garbled on the way; a sound frame of this length answers something else.
    if (pending_.size() >= replyLength_ && opensLikeAnswer() && !mayBeEcho &&
        !hasGoodCrc(pending_.left(replyLength_)))
        return finish(Arrival::reply, 0, replyLength_);
    return Arrival::incomplete;
}

// A garbled frame may have ended a request before its echo was here, or over a network its
// time-out: the echo is no answer then, either, and to a write it looks like one.
void ReplyCollector::stripOwedEchoes()
{
    for (int i = 0; i < owed_.size();) {
        const int first = static_cast<int>(pending_.indexOf(owed_.at(i)));
        if (first < 0) {
            ++i;
            continue;
        }
        strays_.append({StrayKind::echo, owed_.at(i)});
        pending_.remove(first, static_cast<int>(owed_.at(i).size()));
        owed_.removeAt(i);
    }
}

// The request itself in what came in is an echo, unless it is data of the reply; noise may precede
// it, as of a driver that is switched on. The reply to a single write is the request too: there,
// one copy is an echo if more follows it, or if the last read came with an echo.
bool ReplyCollector::stripEcho()
{
    const int first = static_cast<int>(pending_.indexOf(request_));
    if (first < 0 || (first > 0 && opensLikeAnswer()))
        return false;
    const bool mayBeReply = mayOpenLikeItsEcho(request_, replyLength_);
    if (mayBeReply && knowsAdapter_ && !adapterEchoes_)
        return false;
    const bool replyLooksAlike =
        !isReadFunction(functionOf(request_)) && request_.size() == replyLength_;
    const int next = first + static_cast<int>(request_.size());
    if (replyLooksAlike && !adapterEchoes_) {
        const bool moreFollows = pending_.size() > next + 1 &&
                                 pending_.at(next) == request_.at(0) &&
                                 (byteAt(pending_, next + 1) & 0x7F) == byteAt(request_, 1);
        if (!moreFollows)
            return false;
    }
    if (first > 0)
        strays_.append({StrayKind::noise, pending_.left(first)});
    strays_.append({StrayKind::echo, request_});
    pending_.remove(0, next);
    if (!replyLooksAlike && !mayBeReply)
        adapterEchoes_ = knowsAdapter_ = true;
    return true;
}

bool ReplyCollector::isAnswer(const QByteArray& frame) const
{
    if (frame.size() != replyLength_ || frame.left(2) != request_.left(2) || !hasGoodCrc(frame))
        return false;
    if (adapterEchoes_ && !echoStripped_ && frame == request_)
        return false;
    if (!isReadFunction(functionOf(request_)))
        return frame.left(repeatedHead(request_)) == request_.left(repeatedHead(request_));
    const int count = replyLength_ - exceptionLength;
    return count > maxCount || byteAt(frame, 2) == count;
}

// Could what is here be the front of the awaited reply, as far as it goes?
bool ReplyCollector::opensLikeAnswer() const
{
    if (pending_.at(0) != request_.at(0))
        return false;
    if (pending_.size() > 1 && (byteAt(pending_, 1) & 0x7F) != byteAt(request_, 1))
        return false;
    const int count = replyLength_ - exceptionLength;
    const bool countTells = isReadFunction(functionOf(request_)) && pending_.size() > 2 &&
                            byteAt(pending_, 1) == byteAt(request_, 1) && count <= maxCount;
    return !countTells || byteAt(pending_, 2) == count;
}

Arrival ReplyCollector::endOfFrame()
{
    if (pending_.isEmpty())
        return Arrival::incomplete;
    if (replyLength_ == untoldLength)
        for (int first = 0; pending_.size() - first >= minFrameLength; ++first)
            if (pending_.mid(first, functionEnd) == request_.left(functionEnd) &&
                hasGoodCrc(pending_.mid(first)))
                return finish(Arrival::reply, first, static_cast<int>(pending_.size()) - first);
    const bool sound = hasGoodCrc(pending_);
    if (sound && pending_.size() == replyLength_ &&
        pending_.left(addressEnd) == request_.left(addressEnd))
        almostReply_ = pending_;
    if (opensLikeAnswer() && !sound)
        return finish(Arrival::reply, 0, static_cast<int>(pending_.size()));
    strays_.append({sound ? kindOfPending() : StrayKind::noise, pending_});
    pending_.clear();
    return Arrival::incomplete;
}

Arrival ReplyCollector::timeIsUp()
{
    reply_ = almostReply_;
    return almostReply_.isEmpty() ? Arrival::incomplete : Arrival::reply;
}

StrayKind ReplyCollector::kindOfPending() const
{
    if (pending_.at(0) != request_.at(0))
        return StrayKind::otherStation;
    if ((byteAt(pending_, 1) & 0x7F) != byteAt(request_, 1))
        return StrayKind::otherFunction;
    return StrayKind::otherRequest;
}

Arrival ReplyCollector::finish(Arrival arrival, int first, int length)
{
    if (first > 0)
        strays_.append({StrayKind::noise, pending_.left(first)});
    reply_ = pending_.mid(first, length);
    const QByteArray behind = pending_.mid(first + length);
    echoIsBehind_ = behind.startsWith(request_);
    if (!behind.isEmpty())
        strays_.append({StrayKind::late, behind});
    pending_.clear();
    return arrival;
}

} // namespace dov417
