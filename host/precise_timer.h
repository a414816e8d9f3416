// A one-shot timer with the resolution that Modbus silences need.
//
// QTimer counts in whole milliseconds; the silence between two frames is 1.75 ms, and a rounding up
// in every poll costs more than the line may lose. A timerfd is exact to some ten microseconds and
// sleeps in the kernel until it is due.
#ifndef DOV417_HOST_PRECISE_TIMER_H
#define DOV417_HOST_PRECISE_TIMER_H

#include <chrono>
#include <functional>
#include <memory>

class QSocketNotifier;

using Clock = std::chrono::steady_clock;
using Micros = std::chrono::microseconds;

class PreciseTimer {
public:
    explicit PreciseTimer(std::function<void()> due);
    ~PreciseTimer();
    PreciseTimer(const PreciseTimer&) = delete;
    PreciseTimer& operator=(const PreciseTimer&) = delete;

    // Replaces an earlier due time. A time that has passed is due in the next turn of the loop.
    void startAt(Clock::time_point when);
    void stop();

private:
    void set(long long nanoseconds);
    void expired();

    std::function<void()> due_;
    int descriptor_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

#endif
