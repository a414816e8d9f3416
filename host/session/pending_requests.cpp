#include "session/pending_requests.h"

#include <algorithm>
#include <utility>

#include "session/driver_keys.h"

namespace dov417 {

namespace {

constexpr std::size_t maxHandedIn = 200; // far below the 513 at which the driver drops writes
constexpr int queued = 1;                // result of intf_setData() and intf_addConditionRead()
const char* const notTaken = "the driver does not take it";

// It has to be read first, and nobody answers a broadcast: the driver would wait for ever.
bool canBeFramed(const Address& address)
{
    return address.station != 0 || address.width != Width::bit || areaOf(address.regName) != "R";
}

bool shareWords(const Address& a, const Address& b)
{
    const Address wordsOfA = wordsOf(a);
    const Address wordsOfB = wordsOf(b);
    return a.station == b.station && wordsOfA.regName == wordsOfB.regName &&
           wordsOfA.first < wordsOfB.first + wordsOfB.length &&
           wordsOfB.first < wordsOfA.first + wordsOfA.length;
}

} // namespace

PendingRequests::PendingRequests(const Library& library, Tellings& tellings,
                                 std::function<void(const Address&, int)> writeCounted)
    : library_(library), tellings_(tellings), writeCounted_(std::move(writeCounted)),
      nextNumber_(firstTicket)
{
}

void PendingRequests::write(const Write& piece, Done done)
{
    const Ticket ticket{nextNumber_++, piece.address, piece.data, std::move(done)};
    if (!canBeFramed(piece.address)) {
        end(ticket, Result::refused("a bit of a register cannot be written as a broadcast"));
        return;
    }
    waitingWrites_.push_back(ticket);
    writeCounted_(piece.address, 1);
}

void PendingRequests::readOnce(const Address& words, Done done)
{
    reads_.push_back({nextNumber_++, words, {}, std::move(done)});
}

bool PendingRequests::feed()
{
    const bool fedWrites = feedWrites();
    const bool fedRead = feedRead();
    return fedWrites || fedRead;
}

bool PendingRequests::feedWrites()
{
    bool fed = false;
    while (!waitingWrites_.empty() && handedInWrites_.size() < maxHandedIn) {
        Ticket next = waitingWrites_.front();
        const bool wordsUnderWay =
            std::any_of(handedInWrites_.begin(), handedInWrites_.end(), [&next](const auto& entry) {
                return shareWords(entry.second.address, next.address);
            });
        if (wordsUnderWay)
            break;
        waitingWrites_.pop_front();
        if (library_.intf_setData(next.address.station,
                                  QString::fromStdString(next.address.regName), next.address.first,
                                  next.address.length, next.data.data(), next.number) == queued) {
            handedInWrites_.emplace(next.number, next);
            fed = true;
        } else {
            endWrite(next, Result::refused(notTaken));
        }
    }
    return fed;
}

bool PendingRequests::feedRead()
{
    while (!reads_.empty() && !readHandedIn_) {
        KEY_ADDRESS key = keyOf(reads_.front().address);
        readHandedIn_ = library_.intf_addConditionRead(key, reads_.front().number) == queued;
        if (readHandedIn_)
            return true;
        end(reads_.front(), Result::refused(notTaken));
        reads_.pop_front();
    }
    return false;
}

bool PendingRequests::isReadBeforeWrite(const Transmission& transmission) const
{
    return transmission.isRead() && handedInWrites_.count(transmission.request.kind) != 0;
}

void PendingRequests::settle(const Transmission& transmission)
{
    const int number = transmission.request.kind;
    const Result result{transmission.verdict == replyAccepted, transmission.reason};
    const auto write = handedInWrites_.find(number);
    if (write != handedInWrites_.end()) {
        endWrite(write->second, result);
        handedInWrites_.erase(write);
        return;
    }
    if (reads_.empty() || !readHandedIn_ || reads_.front().number != number)
        return;
    end(reads_.front(), result);
    reads_.pop_front();
    readHandedIn_ = false;
}

void PendingRequests::endAll(const std::string& reason)
{
    const Result result = Result::refused(reason);
    for (const auto& [number, ticket] : handedInWrites_)
        endWrite(ticket, result);
    handedInWrites_.clear();
    for (const Ticket& ticket : waitingWrites_)
        endWrite(ticket, result);
    waitingWrites_.clear();
    for (const Ticket& ticket : reads_)
        end(ticket, result);
    reads_.clear();
    readHandedIn_ = false;
}

void PendingRequests::endWrite(const Ticket& ticket, const Result& result)
{
    writeCounted_(ticket.address, -1);
    end(ticket, result);
}

void PendingRequests::end(const Ticket& ticket, const Result& result)
{
    tellings_.addDone(ticket.done, result);
}

std::size_t PendingRequests::writes() const
{
    return waitingWrites_.size() + handedInWrites_.size();
}

std::vector<Address> PendingRequests::writtenAddresses() const
{
    std::vector<Address> addresses;
    for (const auto& [number, ticket] : handedInWrites_)
        addresses.push_back(ticket.address);
    for (const Ticket& ticket : waitingWrites_)
        addresses.push_back(ticket.address);
    return addresses;
}

} // namespace dov417
