#include "link/listener.h"

#include <algorithm>
#include <utility>

#include "line/frame_bytes.h"
#include "line/frame_length.h"
#include "line/frame_text.h"

namespace dov417 {

namespace {

// A station that has been heard to answer does so within this, or twice what it has taken; masters
// wait longer before they ask again.
constexpr Micros usualAnswer(50000);
constexpr int readLength = 8; // of a request to read: noise so long may hide one

bool isException(const QByteArray& frame)
{
    return (byteAt(frame, 1) & exceptionFlag) != 0;
}

bool isOf(int length, const QByteArray& frame)
{
    return length == frame.size() || length == neverTold;
}

bool mayBeRequest(const QByteArray& frame)
{
    return !isException(frame) && isOf(lengthOfRequest(frame), frame);
}

bool mayBeReply(const QByteArray& frame)
{
    return byteAt(frame, 0) != 0 &&
           (isOf(lengthOfReply(frame), frame) || isOf(maxLengthOfReply(frame), frame));
}

} // namespace

Listener::Listener(const SerialFormat& wire, Clock::duration horizon,
                   std::function<void(const Heard&)> heard)
    : wire_(wire), heard_(std::move(heard)),
      books_(horizon +
             std::chrono::round<Micros>(wire.characters(std::int64_t(2) * maxFrameLength)))
{
}

void Listener::bytesCame(const QByteArray& bytes, Clock::time_point now)
{
    take(cutter_.add(bytes, now));
}

void Listener::silence()
{
    take(cutter_.endOfFrame());
}

void Listener::missed()
{
    heardBefore_ = requests_;
}

bool Listener::isWaiting() const
{
    return !cutter_.isEmpty();
}

void Listener::take(const std::vector<Piece>& pieces)
{
    for (const Piece& piece : pieces) {
        if (piece.isFrame) {
            takeFrame(piece);
            continue;
        }
        if (piece.bytes.size() >= readLength)
            missed();
        Heard noise;
        noise.bytes = piece.bytes;
        noise.at = piece.at;
        heard_(noise);
    }
}

void Listener::takeFrame(const Piece& frame)
{
    books_.expire(frame.at);
    const bool answersOne = mayBeReply(frame.bytes) && books_.find(frame.bytes);
    if (!mayBeRequest(frame.bytes) || (answersOne && isSoon(frame)))
        reply(frame);
    else
        request(frame, answersOne ? HeardAs::alike : HeardAs::request);
}

void Listener::request(const Piece& frame, HeardAs as)
{
    Heard heard;
    heard.as = as;
    heard.bytes = frame.bytes;
    heard.at = frame.at;
    heard.isUnanswered = !isAnswered_ && as == HeardAs::request;
    const bool isBroadcast = stationOf(frame.bytes) == broadcastStation;
    const int length = isBroadcast ? 0 : lengthOfReplyTo(frame.bytes);
    books_.add({++requests_, frame.bytes, length == neverTold ? untoldLength : length, frame.at});
    isAnswered_ = isBroadcast || as == HeardAs::alike;
    heard_(heard);
}

void Listener::reply(const Piece& frame)
{
    Heard heard;
    heard.bytes = frame.bytes;
    heard.at = frame.at;
    const bool isOfOne = books_.isOfOneRequest(frame.bytes);
    const std::optional<OpenTransmission> answered = books_.take(frame.bytes);
    const bool isClear = isOfOne && answered && answered->number > heardBefore_;
    heard.as = !answered ? HeardAs::unasked : isClear ? HeardAs::reply : HeardAs::unclear;
    if (heard.as == HeardAs::reply) {
        const auto station = static_cast<std::size_t>(stationOf(frame.bytes));
        heard.request = answered->sent;
        // Repeated meanwhile, it may be the last that is answered.
        heard.after = since(books_.lastSent(answered->sent).value_or(answered->sentAt), frame);
        slowest_.at(station) = std::max(slowest_.at(station), heard.after);
        hasReplied_.at(station) = true;
    }
    isAnswered_ = isAnswered_ || answered;
    heard_(heard);
}

Micros Listener::since(Clock::time_point asked, const Piece& reply) const
{
    const auto took = std::chrono::duration_cast<Micros>(reply.at - asked);
    const auto itself =
        std::chrono::round<Micros>(wire_.characters(static_cast<int>(reply.bytes.size())));
    return std::max(Micros(0), took - itself);
}

// Of a frame that may be a request as well.
bool Listener::isSoon(const Piece& frame) const
{
    if (!mayBeRequest(frame.bytes))
        return true;
    const auto station = static_cast<std::size_t>(stationOf(frame.bytes));
    const auto last = std::find_if(books_.open().rbegin(), books_.open().rend(),
                                   [&](const OpenTransmission& open) {
                                       return stationOf(open.sent) == stationOf(frame.bytes);
                                   });
    return last != books_.open().rend() && hasReplied_.at(station) &&
           since(last->sentAt, frame) <= std::max(usualAnswer, 2 * slowest_.at(station));
}

Direction directionOf(HeardAs as)
{
    switch (as) {
    case HeardAs::request:
    case HeardAs::alike:
        return Direction::sent;
    case HeardAs::reply:
        return Direction::received;
    case HeardAs::unclear:
    case HeardAs::unasked:
    case HeardAs::noise:
        return Direction::stray;
    }
    return Direction::note;
}

std::string heardReason(const Heard& heard)
{
    switch (heard.as) {
    case HeardAs::request:
    case HeardAs::reply:
        return std::string();
    case HeardAs::alike:
        return "once more, or the reply to it: the two look alike";
    case HeardAs::unclear:
        return "to one of several requests: one was not answered, or not heard";
    case HeardAs::unasked:
        return "to no request that was heard";
    case HeardAs::noise:
        return "no frame";
    }
    return std::string();
}

std::string heardText(const Heard& heard, const std::vector<Area>& areas)
{
    const std::string reason = heardReason(heard);
    const std::string behind = reason.empty() ? reason : ", " + reason;
    const auto size = heard.bytes.size();
    switch (directionOf(heard.as)) {
    case Direction::sent:
        return requestText(heard.bytes, areas) + behind;
    case Direction::received:
        return replyText(heard.bytes, heard.request, areas);
    case Direction::stray:
        return (heard.as == HeardAs::noise ? std::to_string(size) + (size == 1 ? " byte" : " bytes")
                                           : replyText(heard.bytes, QByteArray(), areas)) +
               behind;
    case Direction::note:
        break;
    }
    return std::string();
}

} // namespace dov417
