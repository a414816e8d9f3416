// Time that jumps to where something happens next, for a program that has all ends of its lines in
// itself: minutes of a slow station pass in a second. It takes the place of what the system has for
// that, so that the session, its timers and Qt's are what they are in every program.
//
// A byte takes a moment to cross a pseudo-terminal, which no clock tells: until that has passed no
// time is jumped over. Where it takes longer on a busy machine, a reply is later than it was to be.
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <limits>
#include <map>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace {

constexpr std::int64_t second = 1000000000;
constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t crossing = 100000; // of a pseudo-terminal

std::int64_t passed = 1000 * second;

// Of timers, by their descriptors. It outlives all that is closed at the end.
std::map<int, std::int64_t>& wakings()
{
    static auto* const all = new std::map<int, std::int64_t>;
    return *all;
}

std::int64_t nanoseconds(const timespec& time)
{
    return time.tv_sec * second + time.tv_nsec;
}

timespec timeOf(std::int64_t time)
{
    return {static_cast<time_t>(time / second), static_cast<long>(time % second)};
}

int reallyPoll(pollfd* all, nfds_t count, std::int64_t wait, const sigset_t* mask)
{
    using Poll = int (*)(pollfd*, nfds_t, const timespec*, const sigset_t*);
    static const auto really = reinterpret_cast<Poll>(dlsym(RTLD_NEXT, "ppoll"));
    const timespec time = timeOf(wait);
    return really(all, count, wait == never ? nullptr : &time, mask);
}

std::int64_t nextWaking()
{
    std::int64_t next = never;
    for (const auto& [timer, at] : wakings())
        next = at < next ? at : next;
    return next;
}

void wakeThoseDue()
{
    for (auto each = wakings().begin(); each != wakings().end();) {
        if (each->second > passed) {
            ++each;
            continue;
        }
        eventfd_write(each->first, 1);
        each = wakings().erase(each);
    }
}

int pollUntil(pollfd* all, nfds_t count, std::int64_t end, const sigset_t* mask)
{
    for (;;) {
        int ready = reallyPoll(all, count, end <= passed ? 0 : crossing, mask);
        if (ready != 0 || end <= passed)
            return ready;
        const std::int64_t waking = nextWaking();
        const std::int64_t next = waking < end ? waking : end;
        if (next == never)
            return reallyPoll(all, count, never, mask);
        passed = next > passed ? next : passed;
        wakeThoseDue();
    }
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    if (clock != CLOCK_MONOTONIC && clock != CLOCK_BOOTTIME)
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    *time = timeOf(passed);
    return 0;
}

int ppoll(pollfd* all, nfds_t count, const timespec* wait, const sigset_t* mask)
{
    return pollUntil(all, count, wait == nullptr ? never : passed + nanoseconds(*wait), mask);
}

int poll(pollfd* all, nfds_t count, int milliseconds)
{
    return pollUntil(all, count, milliseconds < 0 ? never : passed + milliseconds * (second / 1000),
                     nullptr);
}

int timerfd_create(int /*clock*/, int /*flags*/) noexcept
{
    return eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
}

int timerfd_settime(int timer, int /*flags*/, const itimerspec* when,
                    itimerspec* /*before*/) noexcept
{
    eventfd_t expired = 0;
    eventfd_read(timer, &expired);
    wakings().erase(timer);
    if (nanoseconds(when->it_value) > 0)
        wakings()[timer] = nanoseconds(when->it_value);
    wakeThoseDue();
    return 0;
}

// Its number may be another's at once.
int close(int descriptor)
{
    wakings().erase(descriptor);
    return static_cast<int>(syscall(SYS_close, descriptor));
}
}
