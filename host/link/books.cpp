#include "link/books.h"

#include <algorithm>
#include <iterator>

#include "line/frame_bytes.h"
#include "line/frame_length.h"

namespace dov417 {

namespace {

constexpr int maxOver = 64;     // transmissions that are remembered
constexpr int aroundValues = 5; // station, function, count, CRC

bool haveOneShape(const OpenTransmission& open, const QByteArray& request, int replyLength)
{
    // The reply to a write says what it is about.
    const int head = std::min(echoedHead(request), addressEnd);
    return open.replyLength == replyLength && open.sent.left(head) == request.left(head);
}

// Could this sound frame be the reply to it?
bool fits(const OpenTransmission& open, const QByteArray& frame)
{
    if (frame.at(0) != open.sent.at(0))
        return false;
    const int function = functionOf(open.sent);
    if (byteAt(frame, functionIndex) == (function | exceptionFlag))
        return frame.size() == exceptionLength;
    const bool isUntold = open.replyLength == untoldLength;
    if (byteAt(frame, functionIndex) != function || (!isUntold && frame.size() != open.replyLength))
        return false;
    if (isReadFunction(function))
        return isUntold || byteAt(frame, 2) == ((open.replyLength - aroundValues) & 0xFF);
    const int head = echoedHead(open.sent);
    return frame.left(head) == open.sent.left(head);
}

template <typename Predicate>
std::optional<OpenTransmission> firstOf(const std::deque<OpenTransmission>& open,
                                        const Predicate& isIt)
{
    const auto found = std::find_if(open.begin(), open.end(), isIt);
    return found == open.end() ? std::nullopt : std::optional<OpenTransmission>(*found);
}

} // namespace

Books::Books(Clock::duration horizon) : horizon_(horizon) {}

void Books::setHorizon(Clock::duration horizon)
{
    horizon_ = horizon;
}

void Books::expectCopies(Clock::time_point until)
{
    copiesUntil_ = until;
}

Clock::time_point Books::copiesUntil() const
{
    return copiesUntil_;
}

void Books::answersEchoes(unsigned char station)
{
    answersEchoes_.set(station);
}

bool Books::hasAnsweredEcho(unsigned char station) const
{
    return answersEchoes_.test(station);
}

Books Books::asPast() const
{
    long long next = 0;
    for (const OpenTransmission& open : open_)
        next = std::max(next, open.number);
    for (const Written& written : written_)
        next = std::max(next, written.lastNumber);
    ++next;
    Books past = *this;
    for (OpenTransmission& open : past.open_)
        open.number -= next;
    for (Written& written : past.written_) {
        written.lastNumber -= next;
        written.otherNumber -= next;
    }
    return past;
}

const std::deque<OpenTransmission>& Books::open() const
{
    return open_;
}

void Books::add(const OpenTransmission& transmission)
{
    const int function = functionOf(transmission.sent);
    if (!isReadFunction(function) && function != diagnostics) {
        Written& written = written_.at(stationOf(transmission.sent));
        if (written.last != transmission.sent)
            written.otherNumber = written.lastNumber;
        written.last = transmission.sent;
        written.lastNumber = transmission.number;
    }
    if (transmission.replyLength > 0)
        open_.push_back(transmission);
}

std::optional<OpenTransmission> Books::find(const QByteArray& frame) const
{
    return firstOf(open_, [&frame](const OpenTransmission& open) { return fits(open, frame); });
}

bool Books::isOfOneRequest(const QByteArray& frame) const
{
    const auto first = find(frame);
    return first && std::all_of(open_.begin(), open_.end(), [&](const OpenTransmission& open) {
               return open.sent == first->sent || !fits(open, frame);
           });
}

std::optional<OpenTransmission> Books::take(const QByteArray& frame)
{
    std::optional<OpenTransmission> answered = find(frame);
    if (!answered)
        return answered;
    const auto isOver = [&answered](const OpenTransmission& open) {
        return open.sent.at(0) == answered->sent.at(0) && open.number <= answered->number;
    };
    std::copy_if(open_.begin(), open_.end(), std::back_inserter(over_), isOver);
    open_.erase(std::remove_if(open_.begin(), open_.end(), isOver), open_.end());
    forgetOldest();
    return answered;
}

void Books::expire(Clock::time_point now)
{
    while (!open_.empty() && open_.front().sentAt + horizon_ <= now) {
        over_.push_back(open_.front());
        open_.pop_front();
    }
    forgetOldest();
}

void Books::reopen(const OpenTransmission& transmission)
{
    const auto isIt = [&transmission](const OpenTransmission& other) {
        return other.number == transmission.number;
    };
    over_.erase(std::remove_if(over_.begin(), over_.end(), isIt), over_.end());
    const auto later =
        std::find_if(open_.begin(), open_.end(), [&transmission](const OpenTransmission& other) {
            return other.number > transmission.number;
        });
    open_.insert(later, transmission);
}

// A line may be dead for months.
void Books::forgetOldest()
{
    if (over_.size() > maxOver)
        over_.erase(over_.begin(), over_.end() - maxOver);
}

bool Books::fitsWhatIsOver(const QByteArray& frame) const
{
    return std::any_of(over_.begin(), over_.end(),
                       [&frame](const OpenTransmission& over) { return fits(over, frame); });
}

bool Books::couldBeMistaken(const QByteArray& request, int replyLength) const
{
    return mistakable(request, replyLength).has_value();
}

std::optional<OpenTransmission> Books::mistakable(const QByteArray& request, int replyLength) const
{
    return firstOf(open_, [&](const OpenTransmission& open) {
        return haveOneShape(open, request, replyLength) && open.sent != request;
    });
}

std::optional<OpenTransmission> Books::oldestRead(unsigned char station) const
{
    return firstOf(open_, [station](const OpenTransmission& open) {
        return stationOf(open.sent) == station && isReadFunction(functionOf(open.sent));
    });
}

Clock::time_point Books::certainAt(const QByteArray& request, int replyLength) const
{
    Clock::time_point certain{};
    for (const OpenTransmission& open : open_)
        if (haveOneShape(open, request, replyLength) && open.sent != request)
            certain = std::max(certain, open.sentAt + horizon_);
    return certain;
}

std::optional<Clock::time_point> Books::lastSent(const QByteArray& request) const
{
    const auto last =
        std::find_if(open_.rbegin(), open_.rend(),
                     [&request](const OpenTransmission& open) { return open.sent == request; });
    return last != open_.rend() ? std::optional<Clock::time_point>(last->sentAt) : std::nullopt;
}

bool Books::isOut(const QByteArray& request, int replyLength) const
{
    return std::any_of(open_.begin(), open_.end(), [&](const OpenTransmission& open) {
        return haveOneShape(open, request, replyLength);
    });
}

bool Books::isEchoOut(unsigned char station) const
{
    return std::any_of(open_.begin(), open_.end(), [station](const OpenTransmission& open) {
        return stationOf(open.sent) == station && functionOf(open.sent) == diagnostics;
    });
}

bool Books::standsFor(const OpenTransmission& earlier, const OpenTransmission& later) const
{
    if (earlier.number == later.number)
        return true;
    const long long written = std::max(writtenOther(stationOf(later.sent), later.sent),
                                       writtenOther(broadcastStation, later.sent));
    return earlier.sent == later.sent && written < earlier.number;
}

long long Books::writtenOther(unsigned char station, const QByteArray& request) const
{
    const Written& written = written_.at(station);
    return written.last == request ? written.otherNumber : written.lastNumber;
}

} // namespace dov417
