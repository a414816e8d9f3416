// One thread of a host.
#ifndef DOV417_TESTS_THREADS_CALLER_H
#define DOV417_TESTS_THREADS_CALLER_H

#include "host.h"

class Caller {
public:
    Caller(Host& host, int index);
    ~Caller();
    // The calling thread's own, or null.
    static Caller* current();

    // What a host does first.
    void begin();
    // Something that is allowed now, perhaps with a mutex held.
    void act();
    // A poll, and the reply to what it gave. True when that was accepted.
    bool transact();
    // Within the callback.
    void told();

private:
    struct Deed;
    static const Deed deeds[];

    int below(int limit);
    int call(int result); // counts a call
    bool mayPoll() const;
    void actHolding(QMutex& mutex, bool& holds);
    void actPlainly();

    void poll();
    void write();
    void writeShared();
    void read();
    void plan();
    void askOnce();
    void setRecipe();
    void wantRecipe();
    void editor();
    void identity();
    void callBack();
    void reset();

    Host& host_;
    int index_;
    std::mt19937 random_;
    int depth_ = 0; // of callbacks
    bool holdsHostMutex_ = false;
    bool holdsDriverMutex_ = false;
};

#endif
