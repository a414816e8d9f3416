// A host whose threads all do, at random, whatever the driver allows them.
#ifndef DOV417_TESTS_THREADS_HOST_H
#define DOV417_TESTS_THREADS_HOST_H

#include <QMutex>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "ledger.h"
#include "plant.h"

struct HostKind {
    const char* name;
    int threads;
    bool resets;           // intf_initProperty() at any time: writes are dropped by it
    bool holdsHostMutex;   // around calls for which that is allowed
    bool holdsDriverMutex; // the same
    bool onePolls;         // and does nothing else; the others do the rest
    bool inTurn;           // one transaction at a time; else every thread polls when it likes
    bool waitsInCallback;  // for a thread that only reads
};

extern const std::vector<HostKind> hostKinds;

// Calls of exported functions so far; the watchdog looks at it.
extern std::atomic<std::uint64_t> callCount;
extern std::atomic<std::uint64_t> noticeCount;

class Caller;

class Host {
public:
    Host(const HostKind& kind, unsigned int seed);

    // Until so many calls were made in all. Afterwards, on one thread, the queues run empty.
    void run(std::uint64_t untilCalls);
    // "" for none.
    const std::string& fault() const
    {
        return fault_;
    }
    const Ledger& ledger() const
    {
        return ledger_;
    }

private:
    friend class Caller; // one of its threads
    struct Resources {
        std::vector<unsigned char> block;
        std::vector<unsigned short> buffer;
        QMutex mutex;
    };

    void initialise(size_t resources);
    void runDry();
    void readAgain();
    void readOnly();
    void waitForReader();
    static void onChange(int tag, int station, QString& regName, int address);
    static void onChangeToo(int tag, int station, QString& regName, int address);

    const HostKind& kind_;
    unsigned int seed_;
    Plant plant_;
    Ledger ledger_;
    Resources resources_[2]; // what is replaced stays valid
    std::mutex line_;
    std::string fault_;

    std::mutex reading_;
    std::condition_variable readWanted_;
    std::condition_variable readDone_;
    std::uint64_t wanted_ = 0;
    std::uint64_t done_ = 0;
    bool ended_ = false;
};

#endif
