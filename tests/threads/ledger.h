// Every write that a thread asked for, and what the plant executed of it.
#ifndef DOV417_TESTS_THREADS_LEDGER_H
#define DOV417_TESTS_THREADS_LEDGER_H

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

    // A place of this thread that may be written now, or null.
    Place* choose(int thread, bool bitsToo, std::mt19937& random);
    // Its next value, which counts as asked for from here on.
    std::vector<unsigned char> ask(Place& place);
    // The plant executed a frame, which need not be of a place.
    void executed(const FRAME_PRO& frame);

    // After the queue ran empty: what is not accounted for, "" for nothing. `inTurn`: one
    // transaction was made at a time, so that no write was executed twice, or after a newer one,
    // and cache and plant agree.
    std::string fault(const Plant& plant, bool inTurn) const;
    void count(WriteCounts& counts) const;

private:
    std::string faultOf(const Place& place, const Plant& plant, bool inTurn) const;
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
