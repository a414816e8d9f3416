// What a stretch of the line was used for, in sum. Pure.
#ifndef DOV417_PANEL_WIRE_SHARES_H
#define DOV417_PANEL_WIRE_SHARES_H

#include <array>

#include "panel/frames/wire_times.h"

namespace dov417 {

enum class WireUse {
    requests,
    responseTime,
    replies,
    interFrame,
    idle,
    retries,  // all that frames took which were sent again
    timeOuts, // waited in vain
    markers,  // all that the frames took which tell late replies
    strays,
    noLine,
    missing
};
constexpr int wireUses = 11;

struct WireShares {
    Clock::duration whole{0}; // the sum of what is used
    std::array<Clock::duration, wireUses> used{};
    Clock::duration bytes{0}; // of requests, replies and strays of whatever purpose
    int cycles = 0;           // that are whole in there
    Clock::duration cycle{0}; // their mean

    Clock::duration of(WireUse use) const
    {
        return used.at(static_cast<std::size_t>(use));
    }
    // 0 to 1.
    double part(Clock::duration duration) const;
    // In a cycle of mean length.
    Micros perCycle(WireUse use) const;
};

WireUse useOf(const WireSpan& span);
// From the first of these moments to the second, which is not later than now.
WireShares sharesOf(const WireTimes& times, Clock::time_point begin, Clock::time_point end);

} // namespace dov417

#endif
