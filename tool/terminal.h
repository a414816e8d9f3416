// The terminal as a screen with keys, and as it was found afterwards.
#ifndef DOV417_TOOL_TERMINAL_H
#define DOV417_TOOL_TERMINAL_H

#include <functional>
#include <memory>
#include <string>

class QSocketNotifier;

namespace dov417 {

// While it lives, the terminal shows its second screen, and keys come byte by byte and unseen, but
// for those that make signals. It is put back when this ends, before Ctrl-Z stops the program and
// before what kills it does (an abort, a second Ctrl-C). One at a time.
class Terminal {
public:
    struct Events {
        std::function<void(const std::string& bytes)> came;
        std::function<void()> repaint; // other size, or back from elsewhere
        std::function<void()> lost;    // no keys will come any more
    };

    // takesKeys: else the standard input is left alone. Throws a Failure where it cannot be had.
    Terminal(bool takesKeys, Events events);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // There is somebody at both ends.
    static bool hasKeys();

    static void put(const std::string& text);
    // Keys that were not told yet.
    static bool bytesWait();

private:
    void read();
    void heard();
    void stop();

    Events events_;
    std::unique_ptr<QSocketNotifier> input_;
    std::unique_ptr<QSocketNotifier> signals_;
};

} // namespace dov417

#endif
