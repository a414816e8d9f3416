// Ctrl-C and a polite kill, as events of the loop.
#ifndef DOV417_LIVE_SHUTDOWN_H
#define DOV417_LIVE_SHUTDOWN_H

#include <functional>
#include <memory>

class QSocketNotifier;

namespace dov417 {

// While it lives, SIGINT, SIGTERM, SIGHUP and SIGQUIT call asked() from the event loop instead of
// ending the program, each time; a second one ends it at once, should the first not have been heard
// yet. But a terminal that is closed may send SIGHUP twice, itself and through its shell: that is
// one. What the caller ignores, as nohup does with SIGHUP, stays ignored. One at a time.
class Shutdown {
public:
    explicit Shutdown(std::function<void()> asked);
    ~Shutdown();
    Shutdown(const Shutdown&) = delete;
    Shutdown& operator=(const Shutdown&) = delete;

    // The signal that asked last.
    int signalNumber() const
    {
        return signalNumber_;
    }

    // Called before a second signal ends the program at once: it may do what a signal handler may.
    // Null: nothing is.
    static void setLastWords(void (*lastWords)());

private:
    std::function<void()> asked_;
    std::unique_ptr<QSocketNotifier> notifier_;
    bool hasHungUp_ = false;
    int signalNumber_ = 0;
};

} // namespace dov417

#endif
