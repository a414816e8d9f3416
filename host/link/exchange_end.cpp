// How a line is left: nothing more is sent, and what is out may still be answered.
#include "link/exchange.h"

#include <algorithm>

#include "line/frame_bytes.h"

namespace dov417 {

void Exchange::sendNoMore()
{
    sendsNoMore_ = true;
    if (state_ == State::listening || state_ == State::interFrameDelay)
        drop();
}

void Exchange::drop()
{
    line_.sleep();
    state_ = State::idle;
    isMarking_ = false;
    done_ = nullptr;
}

Clock::time_point Exchange::quietAt() const
{
    if (state_ == State::awaitingTurnaround)
        return current_.sendEnd + settings_.turnaround;
    if (state_ == State::holdingBack)
        return heldUntil_;
    if (state_ == State::awaitingReply && !collector_.isEmpty())
        return lastActivity_ + gap_.value();
    Clock::time_point quiet{};
    for (const OpenTransmission& open : books_.open())
        quiet = std::max(
            quiet, open.sentAt + onTheWire(static_cast<int>(open.sent.size()) + open.replyLength) +
                       known(stationOf(open.sent)).timeout.patience(settings_.timeout));
    return quiet;
}

} // namespace dov417
