// How long a station is waited for: learned from what it takes.
#ifndef DOV417_LINK_STATION_TIMEOUT_H
#define DOV417_LINK_STATION_TIMEOUT_H

#include "line/clock.h"

namespace dov417 {

struct TimeoutSettings {
    Micros initial{500000};
    Micros max{15000000};
    bool isFixed = false; // the initial one it stays
};

class StationTimeout {
public:
    // What a station is given now.
    Micros value(const TimeoutSettings& settings) const;

    // It took so long to begin its answer, in time or late.
    void answered(Micros delay, const TimeoutSettings& settings);
    // It did not begin in time. A station that stays silent is not waited for longer and longer.
    void passed(const TimeoutSettings& settings);
    // Half as long again as it took at most of late; 0 until it has answered.
    Micros measured() const
    {
        return measured_;
    }
    // Has it kept silent so often that it may be switched off?
    bool looksDead() const;

private:
    Micros measured_{0}; // with room for more
    Micros grown_{0};    // since it last answered
    int silences_ = 0;   // in a row
};

} // namespace dov417

#endif
