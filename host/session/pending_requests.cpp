#include "session/pending_requests.h"

#include <algorithm>
#include <set>
#include <utility>

#include "session/driver_keys.h"

namespace dov417 {

namespace {

constexpr int queued = 1; // result of intf_setData() and intf_addConditionRead()
const char* const notTaken = "the driver does not take it";

} // namespace

PendingRequests::PendingRequests(const Library& library, Tellings& tellings,
                                 std::function<void(const Address&, int)> writeCounted,
                                 std::function<bool(int)> isDead)
    : library_(library), tellings_(tellings), writeCounted_(std::move(writeCounted)),
      isDead_(std::move(isDead)), nextNumber_(firstTicket)
{
}

void PendingRequests::write(const Write& piece, Done done)
{
    const Ticket ticket{nextNumber_++, piece.address, piece.data, std::move(done)};
    waitingWrites_.push_back(ticket);
    writeCounted_(piece.address, 1);
}

void PendingRequests::readOnce(const Address& words, Done done)
{
    reads_.push_back({nextNumber_++, words, {}, std::move(done)});
}

bool PendingRequests::feed(std::optional<long long> cycle)
{
    const bool fedWrites = feedWrites(cycle);
    const bool fedRead = feedRead();
    return fedWrites || fedRead;
}

// In their order; only those that wait for a dead station are overtaken.
bool PendingRequests::feedWrites(std::optional<long long> cycle)
{
    std::set<int> underWay;
    for (const auto& [number, ticket] : handedInWrites_)
        underWay.insert(ticket.address.station);
    bool mayBeDead = (!cycle || cycle != cycleOfDeadWrite_) &&
                     std::none_of(underWay.begin(), underWay.end(), isDead_);
    bool fed = false;
    for (auto waiting = waitingWrites_.begin(); waiting != waitingWrites_.end();) {
        const int station = waiting->address.station;
        const bool isDead = isDead_(station);
        if (isDead && !mayBeDead) {
            ++waiting;
            continue;
        }
        if (underWay.count(station) > 0)
            break;
        Ticket next = *waiting;
        waiting = waitingWrites_.erase(waiting);
        if (library_.intf_setData(next.address.station,
                                  QString::fromStdString(next.address.regName), next.address.first,
                                  next.address.length, next.data.data(), next.number) == queued) {
            handedInWrites_.emplace(next.number, next);
            underWay.insert(station);
            fed = true;
            if (isDead) {
                mayBeDead = false;
                cycleOfDeadWrite_ = cycle;
            }
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

const Address* PendingRequests::writtenBy(const Transmission& transmission) const
{
    const auto write = handedInWrites_.find(transmission.request.kind);
    return write == handedInWrites_.end() ? nullptr : &write->second.address;
}

int PendingRequests::wordsOfAValue(int kind) const
{
    const auto write = handedInWrites_.find(kind);
    const bool isRead = !reads_.empty() && reads_.front().number == kind;
    const int units = write != handedInWrites_.end() ? unitsOf(write->second.address)
                      : isRead                       ? unitsOf(reads_.front().address)
                                                     : 1;
    // Both words of a 32-bit value are read under their word type's name.
    return std::max(unitsOf(Width::doubleWord), units);
}

void PendingRequests::settle(const Transmission& transmission)
{
    const int number = transmission.request.kind;
    const Result result{transmission.verdict == replyAccepted, transmission.reason,
                        whyOf(transmission)};
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

void PendingRequests::endAll(const std::string& reason,
                             const std::function<std::string(int)>& taken)
{
    const Result result = Result::refused(reason);
    for (const auto& [number, ticket] : handedInWrites_) {
        std::string why = taken(number);
        if (!why.empty())
            why.insert(0, reason + "; ");
        endWrite(ticket, why.empty() ? result : Result::refused(why));
    }
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

bool PendingRequests::isAnyUnderWay() const
{
    return writes() > 0 || !reads_.empty();
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
