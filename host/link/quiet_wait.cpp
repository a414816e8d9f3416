#include "link/quiet_wait.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace dov417 {

namespace {

// Nobody wants to wait longer for a program that has been ended.
constexpr std::chrono::seconds maxWait(2);

} // namespace

QuietWait::QuietWait(std::function<Clock::time_point()> quietAt) : quietAt_(std::move(quietAt))
{
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this]() { look(); });
}

void QuietWait::begin(std::function<void()> quiet)
{
    quiet_ = std::move(quiet);
    by_ = Clock::now() + maxWait;
    isUnderWay_ = true;
    timer_.start(0);
}

void QuietWait::stop()
{
    quiet_ = nullptr;
    isUnderWay_ = false;
}

bool QuietWait::isUnderWay() const
{
    return isUnderWay_;
}

void QuietWait::lookAgain()
{
    if (isUnderWay_)
        timer_.start(0);
}

void QuietWait::look()
{
    const Clock::time_point now = Clock::now();
    const Clock::time_point quietAt = std::min(quietAt_(), by_);
    if (quietAt > now) {
        timer_.start(std::chrono::ceil<std::chrono::milliseconds>(quietAt - now));
        return;
    }
    if (const std::function<void()> quiet = std::exchange(quiet_, nullptr))
        quiet();
}

} // namespace dov417
