// The library's one private lock: whatever thread a host calls from, one call at a time is at work.
//
// It guards `driver`, the cache's index and what stands here. Who waits for somebody else lets it
// go first, so no order in which a host takes its own locks leads to a circle.
#ifndef DOV417MODBUS_DRIVER_LOCK_H
#define DOV417MODBUS_DRIVER_LOCK_H

#include <QMutex>
#include <pthread.h>

// Held by each exported function for its duration. A call from within a call on the same thread, as
// a host's message handler may make, finds the lock in its own thread's hands and goes on.
class DriverCall {
public:
    DriverCall();
    ~DriverCall();

private:
    bool taken_;
    Q_DISABLE_COPY(DriverCall)
};

// Lets the lock go while it lives: around whatever may wait for another thread. What was looked up
// before is to be looked up again: other threads were at work meanwhile, and, within the callback,
// perhaps this one.
class OutsideDriver {
public:
    OutsideDriver();
    ~OutsideDriver();

private:
    const pthread_t self_;
    const bool held_; // not by an inner function that is called by itself, as tests do
    Q_DISABLE_COPY(OutsideDriver)
};

// Holds a mutex of which the host knows as well, its own (null: none) or driver.mutex, with the
// private lock inside it.
class SharedMutex {
public:
    explicit SharedMutex(QMutex* mutex);
    ~SharedMutex();
    // False when intf_initProperty() was called while this thread waited: its work is void.
    bool stillMeant() const;

private:
    QMutex* const mutex_;
    const unsigned int resets_;
    Q_DISABLE_COPY(SharedMutex)
};

// Work that a call continues after it has released the lock. Polls of other threads leave it alone
// until then; polls from within the callback, on the call's own thread, do not.
class Unfinished {
public:
    enum Work {
        endOfRequest, // answered or given up, its entry still heads its list: nothing is framed
        writing       // queued, its values not yet all in the cache: no write is framed
    };
    explicit Unfinished(Work work);
    ~Unfinished();
    static bool onOtherThread(Work work);

private:
    const Work work_;
    const pthread_t thread_;
    Unfinished* older_;
    Q_DISABLE_COPY(Unfinished)
};

#endif
