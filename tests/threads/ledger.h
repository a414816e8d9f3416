// Every write that a thread asked for, and what the plant executed of it.
#ifndef DOV417_TESTS_THREADS_LEDGER_H
#define DOV417_TESTS_THREADS_LEDGER_H

#include <QList>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <vector>

#include "plant.h"

struct PlaceKind {
    const char* regName;
    int first;
    int count;
    int base; // number of address 0 in the plant; of a bit's word for "R_bit"
    bool bit;
    bool coils;
};

// One unit that only one thread writes. No two places overlap.
struct Place {
    const PlaceKind* kind;
    int station;
    int address;
    bool repeated; // else it is written once in a round
    int asked;     // by its owner
    int executed;  // by the plant
    int newest;    // of the values executed
};

struct WriteCounts {
    std::uint64_t asked = 0;
    std::uint64_t executed = 0;
    std::uint64_t replaced = 0; // by a newer value while queued
};

class Ledger {
public:
    explicit Ledger(int threads);

    // A place of this thread that may be written now, or null. `repeatedToo`: not from within the
    // callback, where it may be the place of the write that is being announced.
    Place* choose(int thread, bool repeatedToo, bool bitsToo, std::mt19937& random);
    // Its next value, which counts as asked for from here on.
    std::vector<unsigned char> ask(Place& place);
    // The plant executed a frame, which need not be of a place.
    void executed(const FRAME_PRO& frame);

    // All that is written, for a plan.
    QList<KEY_ADDRESS> keys() const;
    // After the queue ran empty: what is not accounted for, "" for nothing. Every write was
    // executed or replaced by a newer one.
    std::string fault() const;
    // The same where one transaction was made at a time: none was executed twice or after a newer
    // one, and plant and cache hold what was written last. Words do at once, bits when they are
    // read again: a plan made meanwhile forgets which bits of a word still await their answer.
    std::string faultInTurn(const Plant& plant, bool readAgain) const;
    void count(WriteCounts& counts) const;

private:
    std::string named(const Place& place, const char* fault) const;
    int indexOf(const VARIABLE& request) const;

    std::vector<Place> places_;
    struct Owned {
        std::vector<int> once;
        std::vector<int> repeated;
        size_t nextOnce = 0;
    };
    std::vector<Owned> owned_; // by each thread
    std::atomic<int> waiting_; // places asked for once and not executed
    mutable std::mutex mutex_;
    std::string outOfTurn_;
};

#endif
