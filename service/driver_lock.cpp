#include "driver_lock.h"

#include <atomic>

#include "protocol.h"

namespace {

// Not Qt's: thread checkers see into this one.
pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
std::atomic<pthread_t> owner; // 0: nobody; only its own thread can find itself here

Unfinished* newest; // of the calls of all threads

bool isOf(pthread_t thread)
{
    return owner.load(std::memory_order_relaxed) == thread;
}

void take(pthread_t self)
{
    pthread_mutex_lock(&lock);
    owner.store(self, std::memory_order_relaxed);
}

void letGo()
{
    owner.store(pthread_t(), std::memory_order_relaxed);
    pthread_mutex_unlock(&lock);
}

} // namespace

DriverCall::DriverCall()
{
    const pthread_t self = pthread_self();
    taken_ = !isOf(self);
    if (taken_) {
        take(self);
    }
}

DriverCall::~DriverCall()
{
    if (taken_) {
        letGo();
    }
}

OutsideDriver::OutsideDriver() : self_(pthread_self()), held_(isOf(self_))
{
    if (held_) {
        letGo();
    }
}

OutsideDriver::~OutsideDriver()
{
    if (held_) {
        take(self_);
    }
}

SharedMutex::SharedMutex(QMutex* mutex) : mutex_(mutex), resets_(driver.resets)
{
    if (mutex_ != 0) {
        const OutsideDriver waiting;
        mutex_->lock();
    }
}

SharedMutex::~SharedMutex()
{
    if (mutex_ != 0) {
        mutex_->unlock();
    }
}

bool SharedMutex::stillMeant() const
{
    return driver.resets == resets_;
}

Unfinished::Unfinished(Work work) : work_(work), thread_(pthread_self()), older_(newest)
{
    newest = this;
}

// Not always the newest: calls of several threads end in any order.
Unfinished::~Unfinished()
{
    Unfinished** at = &newest;
    while (*at != this) {
        at = &(*at)->older_;
    }
    *at = older_;
}

bool Unfinished::onOtherThread(Work work)
{
    for (const Unfinished* each = newest; each != 0; each = each->older_) {
        if (each->work_ == work && each->thread_ != pthread_self()) {
            return true;
        }
    }
    return false;
}
