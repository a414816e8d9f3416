// Does a reply come as soon as its station can have sent it?
//
// After a duplicated reply every reply is taken for that to the request after its own, and if all
// requests have one shape, no reply is left over that would tell. But then replies come too soon:
// the request was on the line for a part only of the time that the station took. Such a reply is
// held back until another could have come; so is one of many, for stations that take no time that
// could be known.
#ifndef DOV417_LINK_REPLY_PACE_H
#define DOV417_LINK_REPLY_PACE_H

#include <algorithm>

#include "line/clock.h"

namespace dov417 {

class ReplyPace {
public:
    // The reply to a request began so long after its end. True if it is to be held back.
    bool isSuspect(Micros delay)
    {
        const bool isSoon = isKnown_ && delay + slack < soonest_ - soonest_ / 4;
        soonestSince_ = answers_ == 0 ? delay : std::min(soonestSince_, delay);
        soonest_ = isKnown_ ? std::min(soonest_, delay) : delay;
        isKnown_ = true;
        if (++answers_ < maxUnchecked)
            return isSoon;
        answers_ = 0;
        soonest_ = soonestSince_;
        return true;
    }

private:
    static constexpr Micros slack{1000}; // what clocks and schedulers may add
    static constexpr int maxUnchecked = 256;

    bool isKnown_ = false;
    Micros soonest_{0};
    Micros soonestSince_{0}; // since one was last held back for their number
    int answers_ = 0;
};

} // namespace dov417

#endif
