// Writes and single reads that have no outcome yet, each with what is to be done when it has.
//
// The driver's own queues would lose some of them. Equal writes replace each other, writes are
// dropped when the queue is full, and with two writes of one word its cache takes the second value
// for what the first has written: so each station is handed one write at a time. Writes to a dead
// station then fail one by one, and those to others need not wait for all of them. A failed single
// read empties the driver's whole list of them: they are handed in one by one. A request that
// cannot be framed would block its queue for ever: the session refuses it before.
#ifndef DOV417_SESSION_PENDING_REQUESTS_H
#define DOV417_SESSION_PENDING_REQUESTS_H

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "driver/library.h"
#include "line/failure.h"
#include "link/transmission.h"
#include "session/pieces.h"
#include "session/tellings.h"

namespace dov417 {

// What became of something that was asked for. Called once, never from within the call that asked.
using Done = std::function<void(const Result&)>;

class PendingRequests {
public:
    // writeCounted: a write of this address was taken on (+1) or has its outcome (-1).
    // isDead: is the station silent?
    PendingRequests(const Library& library, Tellings& tellings,
                    std::function<void(const Address&, int step)> writeCounted,
                    std::function<bool(int station)> isDead);

    void write(const Write& piece, Done done);
    void readOnce(const Address& words, Done done);

    // Hands the driver what it may have now; of all writes to dead stations one in this cycle, if
    // there are cycles: the driver would let ten of them pass before it reads again. True if that
    // was anything.
    bool feed(std::optional<long long> cycle);
    // Is this frame the read before a write of bits, after which the write itself is still to come?
    bool isReadBeforeWrite(const Transmission& transmission) const;
    // What this frame writes; null: it is none of these.
    const Address* writtenBy(const Transmission& transmission) const;
    // The request behind this frame has ended; it may be none of these.
    void settle(const Transmission& transmission);
    // Words of one value in what this frame reads or writes: no part of it ends within one.
    int wordsOfAValue(int kind) const;
    // Ends all of them. taken: what a controller has taken of the write of this kind, or nothing.
    void endAll(const std::string& reason, const std::function<std::string(int kind)>& taken);

    std::size_t writes() const;
    // Writes and single reads.
    bool isAnyUnderWay() const;
    // The addresses of all writes.
    std::vector<Address> writtenAddresses() const;

private:
    struct Ticket {
        int number;
        Address address;
        std::vector<unsigned char> data;
        Done done;
    };

    bool feedWrites(std::optional<long long> cycle);
    bool feedRead();
    void end(const Ticket& ticket, const Result& result);
    void endWrite(const Ticket& ticket, const Result& result);

    const Library& library_;
    Tellings& tellings_;
    std::function<void(const Address&, int)> writeCounted_;
    std::function<bool(int)> isDead_;
    int nextNumber_;
    std::deque<Ticket> waitingWrites_;
    std::map<int, Ticket> handedInWrites_;
    std::optional<long long> cycleOfDeadWrite_; // that was handed in last
    std::deque<Ticket> reads_;
    bool readHandedIn_ = false; // the first of them
};

} // namespace dov417

#endif
