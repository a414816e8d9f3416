#include "link/request_carrier.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "line/crc16.h"
#include "line/frame_bytes.h"

namespace dov417 {

namespace {

// What controllers take: the protocol's own maximum, and those of small ones.
constexpr int triedMaxima[] = {125, 60, 32, 16};
constexpr int headLength = 6; // station, function, address, quantity
// A controller that is starting, or stopped, refuses everything for a while.
constexpr std::chrono::minutes hopelessFor(1);

bool isGood(const Transmission& frame)
{
    const Reception& reception = frame.reception;
    return reception.result == LineResult::broadcast ||
           (reception.result == LineResult::reply && reception.bytes.size() == frame.replyLength &&
            hasGoodCrc(reception.bytes));
}

// Controllers answer either to a request that is too long.
bool isRefused(const Reception& reception)
{
    return reception.result == LineResult::exception &&
           (exceptionCode(reception) == illegalAddress || exceptionCode(reception) == illegalValue);
}

// In the words of the protocol: "128 registers", "2048 coils".
int unitsOf(const Transmission& request, int words)
{
    return isOfCoils(request.sent) ? words * bitsPerWord : words;
}

} // namespace

RequestCarrier::RequestCarrier(const CarrierLine& line, int maxRegisters, int roomOfLine,
                               const std::map<int, int>& ofStations)
    : line_(line)
{
    for (Station& each : stations_) {
        each.maximum = roomOfLine;
        each.told = std::min(maxRegisters, roomOfLine);
    }
    for (const auto& [number, maximum] : ofStations)
        stations_.at(static_cast<std::size_t>(number)).told = std::min(maximum, roomOfLine);
}

RequestCarrier::Station& RequestCarrier::station()
{
    return stations_.at(static_cast<unsigned char>(request_.sent.at(0)));
}

int& RequestCarrier::longestAnswered()
{
    return station().answered.at(static_cast<std::size_t>(functionOf(request_.sent)));
}

void RequestCarrier::carry(const Transmission& request, Exchange::Done done)
{
    // One that was on the line when the port was lost is handed out again without a word.
    const bool isAnotherAttempt =
        request.sent == request_.sent && (request.repeats || done_ != nullptr);
    if (!isAnotherAttempt)
        wordsTaken_ = 0;
    request_ = request;
    done_ = std::move(done);
    frames_ = 0;
    isTrial_ = false;
    // Bits do not count as their words do. They go out one by one, and short.
    const int words = wordsIn(request.sent);
    words_ = words == request.request.length ? words : 0;
    begin(station().told == learnedMaximum ? station().maximum : station().told);
}

std::vector<int> RequestCarrier::lengthsFor(int maximum) const
{
    const int maxPartWords = isWrite(request_.sent) ? std::min(maximum, maxWordsOfAWrite) : maximum;
    if (maximum == noMaximum || words_ <= maxPartWords)
        return {};
    return partLengths(words_, maxPartWords, [this](int word) {
        return line_.mayCut(request_.request, request_.request.address + word);
    });
}

void RequestCarrier::doubt()
{
    isInDoubt_ = done_ != nullptr && !answered_.empty();
    wordsTaken_ = 0;
}

void RequestCarrier::begin(int maximum)
{
    isInDoubt_ = false;
    maximum_ = maximum;
    lengths_ = lengthsFor(maximum);
    answered_.clear();
    sendNext();
}

int RequestCarrier::wordsSent() const
{
    const auto answered = static_cast<std::ptrdiff_t>(answered_.size());
    return std::accumulate(lengths_.begin(), lengths_.begin() + answered, 0);
}

void RequestCarrier::sendNext()
{
    Transmission frame = request_;
    if (!lengths_.empty()) {
        const int first = wordsSent();
        const int words = lengths_.at(answered_.size());
        frame.isPart = true;
        frame.request.address += first;
        frame.request.length = words;
        frame.sent = partOf(request_.sent, first, words);
        if (request_.replyLength > 0)
            frame.replyLength = partReplyLength(request_.sent, words);
    }
    line_.transact(frame, [this](const Transmission& record) { ended(record); });
}

// One that took another quantity than its part has, too, leaves words as they were.
bool RequestCarrier::isTaken(const Transmission& frame) const
{
    return isGood(frame) && (lengths_.empty() || answeredOtherwise(frame).empty());
}

void RequestCarrier::ended(const Transmission& frame)
{
    if (isTaken(frame))
        answered(frame);
    const int next = nextMaximum(frame);
    if (lengths_.empty() && next == 0) {
        Transmission whole = frame;
        const auto tried = hopeless_.find(head());
        if (tried != hopeless_.end())
            whole.where = tried->second.where;
        const std::string taken = takenText();
        if (!taken.empty())
            whole.where += (whole.where.empty() ? "" : "; ") + taken;
        finish(whole);
        return;
    }
    ++frames_;
    Transmission part = frame;
    part.isPart = true;
    line_.partEnded(part);
    if (next > 0) {
        isTrial_ = true;
        begin(next);
    } else if (!isTaken(frame) || !line_.isWanted()) {
        finish(failed(frame));
    } else if (isInDoubt_) {
        begin(maximum_);
    } else if (answered_.size() < lengths_.size()) {
        sendNext();
    } else {
        learn();
        finish(joined());
    }
}

void RequestCarrier::answered(const Transmission& frame)
{
    if (words_ == 0)
        return;
    longestAnswered() = std::max(longestAnswered(), frame.request.length);
    if (lengths_.empty())
        return;
    answered_.push_back(frame);
    if (isWrite(request_.sent) && !isInDoubt_)
        wordsTaken_ = std::max(wordsTaken_, wordsSent());
}

QByteArray RequestCarrier::head() const
{
    return request_.sent.left(headLength);
}

// Was it refused for its length? Then what to try next; else 0.
int RequestCarrier::nextMaximum(const Transmission& refused)
{
    if (station().told != learnedMaximum || words_ == 0 || !isRefused(refused.reception))
        return 0;
    const auto tried = hopeless_.find(head());
    if (tried != hopeless_.end()) {
        if (refused.sendEnd < tried->second.until)
            return 0;
        hopeless_.erase(tried);
    }
    // As long a one was answered before: it is the address.
    if (refused.request.length > longestAnswered())
        for (const int maximum : triedMaxima)
            if (maximum < refused.request.length && !lengthsFor(maximum).empty())
                return maximum;
    hopeless_[head()] = {refused.sendEnd + hopelessFor,
                         lengths_.empty()
                             ? std::string()
                             : "in parts: " + reasonText(refused.reception, refused.replyLength) +
                                   " " + partText(refused)};
    return 0;
}

void RequestCarrier::learn()
{
    if (!isTrial_)
        return;
    station().maximum = maximum_;
    line_.notice(stationText(request_.request.station, line_.stationNames) + " refuses " +
                 std::to_string(unitsOf(request_, words_)) +
                 (isOfCoils(request_.sent) ? " coils" : " registers") +
                 " in one request: they go out in parts of at most " +
                 std::to_string(unitsOf(request_, maximum_)) + " from now on");
}

void RequestCarrier::finish(const Transmission& record)
{
    // The next request may be carried from within.
    const Exchange::Done done = std::move(done_);
    done_ = nullptr;
    done(record);
}

Transmission RequestCarrier::joined() const
{
    Transmission whole = request_;
    const Transmission& last = answered_.back();
    whole.number = last.number;
    whole.sendBegin = answered_.front().sendBegin;
    whole.sendEnd = last.sendEnd;
    whole.timeout = last.timeout;
    whole.reception = last.reception;
    whole.reception.firstByte = answered_.front().reception.firstByte;
    whole.asOf = last.asOf;
    whole.frames = frames_;
    std::vector<QByteArray> replies;
    for (const Transmission& part : answered_) {
        whole.asOf = std::min(whole.asOf, part.asOf);
        whole.parts.push_back({part.request, part.asOf});
        replies.push_back(part.reception.bytes);
    }
    if (whole.replyLength > 0)
        whole.reception.bytes = joinedReply(request_.sent, replies);
    return whole;
}

Transmission RequestCarrier::failed(const Transmission& part) const
{
    Transmission whole = part;
    whole.isPart = false;
    whole.request = request_.request;
    whole.sent = request_.sent;
    whole.frames = frames_;
    whole.where = partText(part);
    const std::string otherwise = answeredOtherwise(part);
    if (isGood(part) && !otherwise.empty()) {
        whole.reception.result = LineResult::timeout;
        whole.reception.bytes.clear();
        whole.reception.astray.frame = Reason::otherRequest;
        whole.where += ": " + otherwise;
    }
    const std::string taken = takenText();
    if (!taken.empty())
        whole.where += "; " + taken;
    return whole;
}

std::string RequestCarrier::partText(const Transmission& part) const
{
    return "in " + wordsText(part.request, 0, part.request.length) + ", part " +
           std::to_string(answered_.size() + 1) + " of " + std::to_string(lengths_.size());
}

std::string RequestCarrier::takenText(int kind) const
{
    return kind == request_.request.kind ? takenText() : std::string();
}

std::string RequestCarrier::takenText() const
{
    return wordsTaken_ == 0 ? std::string()
                            : wordsText(request_.request, 0, wordsTaken_) + " was taken";
}

} // namespace dov417
