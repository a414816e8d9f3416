// The clock that never jumps and goes on while the computer sleeps, and the unit that times on the
// line are given in.
#ifndef DOV417_LINE_CLOCK_H
#define DOV417_LINE_CLOCK_H

#include <chrono>
#include <cstdint>
#include <ctime>

namespace dov417 {

// The steady clock of the library stands still while the computer sleeps: what was read before an
// hour of that would look as if it had just come.
struct Clock {
    using duration = std::chrono::nanoseconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<Clock>;
    static constexpr bool is_steady = true;
    static constexpr clockid_t id = CLOCK_BOOTTIME; // for timers that wake at a time of it

    static time_point now() noexcept
    {
        timespec time{};
        clock_gettime(id, &time);
        return time_point(std::chrono::seconds(time.tv_sec) +
                          std::chrono::nanoseconds(time.tv_nsec));
    }
};
using Micros = std::chrono::microseconds;

constexpr std::int64_t nanosecondsPerSecond = 1000000000;

inline Micros toMicros(std::chrono::nanoseconds time)
{
    return std::chrono::round<Micros>(time);
}

} // namespace dov417

#endif
