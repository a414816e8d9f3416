// dov417_threads CALLS [SEED]: hosts with two to four threads that call all exported functions at
// random, from within the callback too, and with the mutexes held where that is allowed. Ends with
// 0 when no write was lost or executed twice; else with a sentence and 1, also when nothing goes on
// any more. What threads do to each other's memory is for ThreadSanitizer to see.
#include <QtGlobal>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "host.h"

namespace {

enum {
    callsInRound = 20000, // in which one host lives: the cache starts anew with the next
    patience = 120        // seconds without a call
};

void saysNothing(QtMsgType, const QMessageLogContext&, const QString&) {}

[[noreturn]] void end(const char* host, const std::string& sentence)
{
    std::fprintf(stderr, "%s: %s\n", host, sentence.c_str());
    std::fflush(nullptr);
    std::_Exit(1); // threads may hang
}

// Ends the program when for some minutes no call has come to its end.
class Watchdog {
public:
    Watchdog() : thread_([this] { watch(); }) {}

    ~Watchdog()
    {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            ended_ = true;
        }
        wake_.notify_one();
        thread_.join();
    }

private:
    void watch()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        std::uint64_t seen = callCount;
        int idle = 0;
        while (!wake_.wait_for(lock, std::chrono::seconds(1), [this] { return ended_; })) {
            idle = callCount == seen ? idle + 1 : 0;
            seen = callCount;
            if (idle == patience) {
                end("watchdog", "no call has ended for two minutes: a deadlock");
            }
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    bool ended_ = false;
    std::thread thread_;
};

} // namespace

int main(int argc, char** argv)
{
    char* rest = nullptr;
    const std::uint64_t calls = argc > 1 ? std::strtoull(argv[1], &rest, 10) : 0;
    if (argc < 2 || argc > 3 || *rest != 0 || calls == 0) {
        std::fprintf(stderr, "usage: dov417_threads CALLS [SEED]\n");
        return 2;
    }
    unsigned int seed =
        argc > 2 ? static_cast<unsigned int>(std::strtoul(argv[2], nullptr, 10)) : 1;
    qInstallMessageHandler(saysNothing);
    const Watchdog watchdog;
    for (const HostKind& kind : hostKinds) {
        WriteCounts writes;
        const std::uint64_t before = callCount;
        const std::uint64_t until = before + calls / hostKinds.size();
        int rounds = 0;
        for (; callCount < until; ++rounds) {
            const auto host = std::make_unique<Host>(kind, seed += 10);
            host->run(std::min<std::uint64_t>(until, callCount + callsInRound));
            if (!host->fault().empty()) {
                end(kind.name, host->fault());
            }
            host->ledger().count(writes);
        }
        std::printf("%s: %d threads, %d rounds, %llu calls; writes: %llu asked for, %llu executed",
                    kind.name, kind.threads + (kind.waitsInCallback ? 1 : 0), rounds,
                    static_cast<unsigned long long>(callCount - before),
                    static_cast<unsigned long long>(writes.asked),
                    static_cast<unsigned long long>(writes.executed));
        if (kind.inTurn && !kind.resets) {
            std::printf(", %llu replaced by newer ones",
                        static_cast<unsigned long long>(writes.replaced));
        }
        std::printf("\n");
    }
    std::printf("%llu calls, %llu changes announced: nothing lost, nothing stuck\n",
                static_cast<unsigned long long>(callCount.load()),
                static_cast<unsigned long long>(noticeCount.load()));
    return 0;
}
