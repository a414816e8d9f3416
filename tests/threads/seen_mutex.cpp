// ThreadSanitizer does not see into Qt's mutex. Here it is told of each taking and releasing, by
// the test's hosts and by the library: of the flags in the host's block, which only the host's
// mutex guards, and of an order in which locks are taken that could lead to a deadlock.
#ifdef DOV417_SEEN_MUTEX
#include <QMutex>
#include <sanitizer/tsan_interface.h>

extern "C" {
// QMutex::lock() and QMutex::unlock(), as the linker hands them over.
void __real__ZN6QMutex4lockEv(QMutex* mutex);
void __real__ZN6QMutex6unlockEv(QMutex* mutex);

void __wrap__ZN6QMutex4lockEv(QMutex* mutex)
{
    __tsan_mutex_pre_lock(mutex, 0);
    __real__ZN6QMutex4lockEv(mutex);
    __tsan_mutex_post_lock(mutex, 0, 0);
}

void __wrap__ZN6QMutex6unlockEv(QMutex* mutex)
{
    __tsan_mutex_pre_unlock(mutex, 0);
    __real__ZN6QMutex6unlockEv(mutex);
    __tsan_mutex_post_unlock(mutex, 0);
}
}
#endif
