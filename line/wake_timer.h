// Wakes the event loop at a time given in nanoseconds: a character at 38400 baud takes 0.29 ms, and
// QTimer knows whole milliseconds only. The kernel keeps the time, nothing spins.
#ifndef DOV417_LINE_WAKE_TIMER_H
#define DOV417_LINE_WAKE_TIMER_H

#include <cstdint>
#include <functional>

class QSocketNotifier;

namespace dov417 {

// Nanoseconds of the clock that never jumps.
std::int64_t monotonicNow();

class WakeTimer {
public:
    // To be made in the thread whose event loop is to be woken.
    explicit WakeTimer(std::function<void()> wake);
    ~WakeTimer();
    WakeTimer(const WakeTimer&) = delete;
    WakeTimer& operator=(const WakeTimer&) = delete;

    bool isValid() const;                  // false when the system gave no timer
    void wakeAt(std::int64_t nanoseconds); // once, in place of an earlier time; past: soon
    void cancel();

private:
    void set(std::int64_t nanoseconds);

    int descriptor_;
    QSocketNotifier* notifier_; // deleted later: its signal may be what deletes us
};

} // namespace dov417

#endif
