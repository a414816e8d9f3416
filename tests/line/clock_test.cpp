#include "line/clock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/timerfd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace dov417 {

namespace {

using std::chrono::hours;
using std::chrono::seconds;

constexpr int notAllowed = 77; // here: it takes a kernel that lets clocks be moved

Clock::duration awake()
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// What is different where the computer has slept for an hour. 0: all is as it should be.
int afterAnHourOfSleep()
{
    const auto slept = Clock::now().time_since_epoch() - awake();
    if (slept < hours(1))
        return 1;
    const int timer = timerfd_create(Clock::id, 0);
    itimerspec when{};
    when.it_value.tv_sec = Clock::now().time_since_epoch() / seconds(1);
    timerfd_settime(timer, TFD_TIMER_ABSTIME, &when, nullptr);
    itimerspec left{};
    timerfd_gettime(timer, &left);
    return left.it_value.tv_sec > 1 ? 2 : 0; // it has come
}

// To a program with clocks of its own it looks so.
int withClocksOfItsOwn()
{
    if (unshare(CLONE_NEWTIME) != 0)
        return notAllowed;
    const int offsets = open("/proc/self/timens_offsets", O_WRONLY | O_CLOEXEC);
    const char text[] = "boottime 36000 0\n";
    if (offsets < 0 || write(offsets, text, sizeof text - 1) < 0)
        return notAllowed;
    close(offsets);
    const pid_t inside = fork(); // the first that has them
    if (inside == 0)
        _exit(afterAnHourOfSleep());
    int status = 0;
    waitpid(inside, &status, 0);
    return WEXITSTATUS(status);
}

TEST(TheClock, GoesOnWhileTheComputerSleeps)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(withClocksOfItsOwn());
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == notAllowed)
        GTEST_SKIP() << "no clocks of its own can be had here";
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(TheClock, NeverGoesBack)
{
    Clock::time_point last = Clock::now();
    for (int i = 0; i < 1000; ++i) {
        const Clock::time_point now = Clock::now();
        EXPECT_GE(now, last);
        last = now;
    }
}

} // namespace

} // namespace dov417
