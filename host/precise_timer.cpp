#include "precise_timer.h"

#include <QSocketNotifier>
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <sys/timerfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

PreciseTimer::PreciseTimer(std::function<void()> due)
    : due_(std::move(due)), descriptor_(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC))
{
    if (descriptor_ < 0)
        throw std::system_error(errno, std::generic_category(), "timerfd_create");
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this]() { expired(); });
}

PreciseTimer::~PreciseTimer()
{
    notifier_.reset();
    close(descriptor_);
}

void PreciseTimer::startAt(Clock::time_point when)
{
    // steady_clock is CLOCK_MONOTONIC here; 0 would disarm.
    set(std::max<long long>(
        1, std::chrono::duration_cast<std::chrono::nanoseconds>(when.time_since_epoch()).count()));
}

void PreciseTimer::stop()
{
    set(0);
}

void PreciseTimer::set(long long nanoseconds)
{
    itimerspec setting = itimerspec();
    setting.it_value.tv_sec = static_cast<time_t>(nanoseconds / 1000000000);
    setting.it_value.tv_nsec = static_cast<long>(nanoseconds % 1000000000);
    timerfd_settime(descriptor_, TFD_TIMER_ABSTIME, &setting, nullptr);
}

void PreciseTimer::expired()
{
    std::uint64_t times = 0;
    // Nothing to read: the timer was set anew after it had become due.
    if (read(descriptor_, &times, sizeof times) == static_cast<ssize_t>(sizeof times))
        due_();
}
