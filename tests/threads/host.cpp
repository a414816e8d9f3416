#include "host.h"

#include <QString>
#include <chrono>

#include "caller.h"
#include "intf.h"

std::atomic<std::uint64_t> callCount;
std::atomic<std::uint64_t> noticeCount;

// clang-format off
const std::vector<HostKind> hostKinds = {
    //                                    threads  resets  holds its  holds   one    in     waits in
    //                                                     mutex  driver.mutex polls turn  callback
    {"a thread that polls, one that draws", 2,     false,  false,     false,  true,  true,  false},
    {"a line that threads share",           4,     false,  true,      true,   false, true,  false},
    {"a callback that waits for a reader",  3,     false,  true,      false,  false, true,  true},
    {"every thread polls when it likes",    4,     false,  true,      true,   false, false, false},
    {"resets at any time",                  4,     true,   false,     false,  false, false, false},
    {"resets, the host's mutex held",       3,     true,   true,      false,  false, false, false},
    {"resets, driver.mutex held",           3,     true,   false,     true,   false, false, true},
};
// clang-format on

namespace {

enum {
    maxToRunDry = 20000 // transactions
};

} // namespace

Host::Host(const HostKind& kind, unsigned int seed)
    : kind_(kind), seed_(seed), ledger_(kind.threads)
{
    for (Resources& each : resources_) {
        each.block.assign(60117, 0);
        each.buffer.assign(200, 7);
    }
    intf_setAddrValueChangeCallBack(onChange);
    initialise(0);
}

void Host::initialise(size_t resources)
{
    Resources& given = resources_[resources];
    int result = -1;
    // No request is ever given up: what is bad comes again.
    intf_initProperty(given.block.data(), 5, given.buffer.data(), &result, "7#0#0#1000000000#10",
                      &given.mutex);
}

void Host::run(std::uint64_t untilCalls)
{
    Caller(*this, 0).begin();
    std::vector<std::thread> threads;
    std::thread reader;
    if (kind_.waitsInCallback) {
        reader = std::thread([this] { readOnly(); });
    }
    for (int i = 0; i < kind_.threads; ++i) {
        threads.emplace_back([this, i, untilCalls] {
            Caller caller(*this, i);
            while (callCount < untilCalls) {
                caller.act();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    if (!kind_.resets) {
        runDry();
    }
    if (reader.joinable()) {
        {
            const std::lock_guard<std::mutex> lock(reading_);
            ended_ = true;
        }
        readWanted_.notify_one();
        reader.join();
    }
}

// Without any new work.
void Host::runDry()
{
    Caller last(*this, 0);
    for (int i = 0; i < maxToRunDry; ++i) {
        fault_ = !driver.writeList.isEmpty()       ? "a write was left undone"
                 : !driver.conditionList.isEmpty() ? "a condition read was left"
                 : resources_[0].block[downloadFlagOffset] != 0 ||
                         resources_[0].block[uploadFlagOffset] != 0
                     ? "a recipe was left undone"
                 : !driver.sendList.isEmpty() ? "a frame was left unanswered"
                                              : "";
        if (fault_.empty()) {
            break;
        }
        last.transact();
    }
    if (fault_.empty()) {
        fault_ = ledger_.fault();
    }
    if (fault_.empty() && kind_.inTurn) {
        fault_ = ledger_.faultInTurn(plant_, false);
        readAgain();
    }
}

void Host::readAgain()
{
    Caller last(*this, 0);
    QList<KEY_ADDRESS> keys = ledger_.keys();
    for (int unread = intf_addrMerge(keys); unread > 0;) {
        unread -= last.transact() && driver.sendKind == sendCyclicRead ? 1 : 0;
    }
    if (fault_.empty()) {
        fault_ = ledger_.faultInTurn(plant_, true);
    }
}

// ---- the thread that callbacks wait for --------------------------------------------------------

void Host::readOnly()
{
    std::unique_lock<std::mutex> lock(reading_);
    for (;;) {
        readWanted_.wait(lock, [this] { return ended_ || done_ < wanted_; });
        if (done_ == wanted_) {
            return;
        }
        const std::uint64_t upTo = wanted_;
        lock.unlock();
        unsigned char out[64];
        intf_getData(1, QString::fromLatin1("R_W"), static_cast<int>(upTo % 1200), 8, out);
        intf_getData(2, QString::fromLatin1("M_bit"), static_cast<int>(upTo % 600), 40, out);
        int address = 0;
        intf_checkAddrValidity(QString::fromLatin1("R_W"), QString::fromLatin1("17"), &address, 1,
                               1);
        callCount += 3;
        lock.lock();
        done_ = upTo;
        readDone_.notify_all();
    }
}

void Host::waitForReader()
{
    std::unique_lock<std::mutex> lock(reading_);
    const std::uint64_t mine = ++wanted_;
    readWanted_.notify_one();
    readDone_.wait(lock, [this, mine] { return done_ >= mine; });
}

// ---- the callbacks -----------------------------------------------------------------------------

void Host::onChange(int, int, QString& regName, int)
{
    regName.append(QLatin1Char('x')); // it is ours
    ++noticeCount;
    if (Caller::current() != nullptr) {
        Caller::current()->told();
    }
}

void Host::onChangeToo(int tag, int station, QString& regName, int address)
{
    onChange(tag, station, regName, address);
}
