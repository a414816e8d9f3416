// Bytes that come without end and are no reply: how long they are waited for.
#include "link/exchange.h"

namespace dov417 {

namespace {

constexpr int babbleLength = 1024; // bytes in a row of which nothing is a reply

} // namespace

// Until when the first byte is awaited.
Clock::time_point Exchange::waitEnd() const
{
    return state_ == State::listening     ? listenEnd_
           : state_ == State::holdingBack ? heldUntil_
                                          : deadline_;
}

void Exchange::waitIsOver(Clock::time_point now)
{
    if (state_ == State::awaitingReply)
        deadlinePassed(now);
    else if (holdEnd_ != Clock::time_point() && now >= holdEnd_)
        finish(LineResult::heldBack);
    else
        next(now);
}

// Bytes that come and come without a pause, as from a second master, are not waited for longer
// than noise with a reply after it takes. What looks like the reply is left to end by its length.
bool Exchange::isBabble(Clock::time_point now) const
{
    return collector_.size() > babbleLength ||
           (!collector_.isEmpty() && !collector_.isReplyUnderWay() &&
            now >= waitEnd() + 3 * settings_.timeout.initial + maxReplyTime());
}

// Gives up the bytes that are here: nothing of them will become a reply.
void Exchange::takeBabble(Clock::time_point now)
{
    const Arrival arrival = collector_.endOfFrame();
    if (arrival != Arrival::incomplete) {
        takeArrival(arrival, now);
        return;
    }
    reportStrays(now);
    if (now >= waitEnd())
        waitIsOver(now);
    else
        line_.wakeAt(waitEnd());
}

} // namespace dov417
