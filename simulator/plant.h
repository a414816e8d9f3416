// Makes the controller's values live, so that somebody who watches sees something.
//
//   I 0        one bit running from 0 to 15, a step every 100 ms
//   I 1        counts up every 100 ms
//   I 2..7     switches that are thrown by chance
//   Q 0..7     = I 0..7, with `followInputs`
//   T n        runs in 0.1 s up to (n + 1) seconds, then starts again at 0
//   C n        counts one up every (n + 1) * 100 ms, over all 16 bits
//   R 0..31    ramps: word n rises by n + 1 every 100 ms, from 0 to 9999 and around
//   R 32..63   sines around 5000 of amplitude 4000; word n has a period of (n - 31) * 10 s
//   R 64..95   random walks between 0 and 10000, at most 50 a step
//
// All but the sines go on from what the word holds, so that a timer that was set to 0 starts again.
//
// Everything else stays as the line or a person left it: all of M, I and Q from word 8, and R from
// word 96 are memory and nothing else. hold() adds to that.
//
// Pure: time is handed in, so that tests need no clock. Somebody calls advance() from a timer.
#ifndef DOV417_SIMULATOR_PLANT_H
#define DOV417_SIMULATOR_PLANT_H

#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "simulator/memory.h"

namespace dov417::simulator {

class Plant {
public:
    // Every station of the memory lives, each by its own chance. The memory is borrowed.
    explicit Plant(Memory& memory, bool followInputs = true, std::uint32_t seed = 1);

    // Leaves these words alone from now on; station 0 means all of them.
    void hold(int station, Area area, int firstWord, int lastWord);

    // Frozen, time passes without effect.
    void freeze(bool frozen);
    bool isFrozen() const;

    // Lets so much time pass. Values move in steps of 100 ms; the remainder is kept.
    void advance(int milliseconds);

private:
    struct Life { // of one station
        StationMemory* memory;
        int station;
        std::mt19937 chance;
        std::array<std::vector<bool>, 6> held; // by area and word

        unsigned below(unsigned limit); // 0 to limit - 1, by chance
        void put(Area area, int word, int value);
    };
    void step(Life& life) const;

    bool followInputs_;
    bool frozen_ = false;
    int remainderMs_ = 0;
    std::int64_t steps_ = 0;
    std::vector<Life> lives_;
};

} // namespace dov417::simulator

#endif
