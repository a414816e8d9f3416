// A line is left: waits until it is quiet, but not for ever.
#ifndef DOV417_LINK_QUIET_WAIT_H
#define DOV417_LINK_QUIET_WAIT_H

#include <QTimer>
#include <functional>

#include "line/clock.h"

namespace dov417 {

class QuietWait {
public:
    // quietAt: when nothing is expected any more, as it looks now.
    explicit QuietWait(std::function<Clock::time_point()> quietAt);

    // Calls quiet once, from the event loop, no later than in two seconds.
    void begin(std::function<void()> quiet);
    void stop();
    bool isUnderWay() const; // also once it is quiet, until stop()
    // Something has come: perhaps what was awaited.
    void lookAgain();

private:
    void look();

    std::function<Clock::time_point()> quietAt_;
    std::function<void()> quiet_;
    QTimer timer_;
    Clock::time_point by_{};
    bool isUnderWay_ = false;
};

} // namespace dov417

#endif
