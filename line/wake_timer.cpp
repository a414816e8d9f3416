#include "line/wake_timer.h"

#include <QSocketNotifier>
#include <algorithm>
#include <sys/timerfd.h>
#include <unistd.h>
#include <utility>

#include "line/clock.h"

namespace dov417 {

std::int64_t monotonicNow()
{
    return Clock::now().time_since_epoch().count();
}

WakeTimer::WakeTimer(std::function<void()> wake)
    : descriptor_(timerfd_create(Clock::id, TFD_NONBLOCK | TFD_CLOEXEC)),
      notifier_(new QSocketNotifier(descriptor_, QSocketNotifier::Read))
{
    notifier_->setEnabled(isValid());
    QObject::connect(notifier_, &QSocketNotifier::activated, notifier_,
                     [descriptor = descriptor_, action = std::move(wake)]() {
                         std::uint64_t expirations = 0;
                         // Nothing to read: the time was moved after the notifier had been marked.
                         if (read(descriptor, &expirations, sizeof expirations) > 0)
                             action();
                     });
}

WakeTimer::~WakeTimer()
{
    notifier_->setEnabled(false);
    notifier_->deleteLater();
    if (isValid())
        close(descriptor_);
}

bool WakeTimer::isValid() const
{
    return descriptor_ >= 0;
}

void WakeTimer::wakeAt(std::int64_t nanoseconds)
{
    set(std::max<std::int64_t>(nanoseconds, 1)); // 0 would switch it off
}

void WakeTimer::cancel()
{
    set(0);
}

void WakeTimer::set(std::int64_t nanoseconds)
{
    itimerspec when{};
    when.it_value.tv_sec = static_cast<time_t>(nanoseconds / nanosecondsPerSecond);
    when.it_value.tv_nsec = static_cast<long>(nanoseconds % nanosecondsPerSecond);
    timerfd_settime(descriptor_, TFD_TIMER_ABSTIME, &when, nullptr);
}

} // namespace dov417
