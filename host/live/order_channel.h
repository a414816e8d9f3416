// Lines of text between a program and its child while both run, both ways: each holds one of a pair
// of sockets.
#ifndef DOV417_LIVE_ORDER_CHANNEL_H
#define DOV417_LIVE_ORDER_CHANNEL_H

#include <QSocketNotifier>
#include <cstddef>
#include <functional>
#include <string>

namespace dov417 {

class OrderChannel {
public:
    // Of a longer line only so much is told.
    static constexpr std::size_t maxLine = 16384;

    // Closes the descriptor in the end. `came` is told each line, without its end, from the event
    // loop of this thread, and must not destroy the channel.
    OrderChannel(int descriptor, std::function<void(const std::string& line)> came);
    ~OrderChannel();
    OrderChannel(const OrderChannel&) = delete;
    OrderChannel& operator=(const OrderChannel&) = delete;

    // Never waits. False: the other side is gone, or reads nothing.
    bool say(const std::string& line);

private:
    void read();
    void take(const std::string& bytes);

    const int descriptor_;
    const std::function<void(const std::string&)> came_;
    QSocketNotifier notifier_;
    std::string begun_; // of the line that has no end yet
};

} // namespace dov417

#endif
