// The clock that never jumps, and the unit that times on the line are given in.
#ifndef DOV417_LINE_CLOCK_H
#define DOV417_LINE_CLOCK_H

#include <chrono>
#include <cstdint>

namespace dov417 {

using Clock = std::chrono::steady_clock;
using Micros = std::chrono::microseconds;

constexpr std::int64_t nanosecondsPerSecond = 1000000000;

inline Micros toMicros(std::chrono::nanoseconds time)
{
    return std::chrono::round<Micros>(time);
}

} // namespace dov417

#endif
