// How long a station is waited for: learned from what it takes.
#ifndef DOV417_LINK_STATION_TIMEOUT_H
#define DOV417_LINK_STATION_TIMEOUT_H

#include <string>
#include <vector>

#include "line/clock.h"

namespace dov417 {

struct TimeoutSettings {
    Micros initial{500000};
    Micros max{15000000};
    bool isFixed = false; // the initial one never changes
    Micros min{0};        // for quick stations; 0: the initial one
};

// What is known of a station's time.
struct StationTime {
    int station = 0;
    Micros last{0};    // from the end of a request to the first byte of its reply
    Micros slowest{0}; // maximum of these
    Micros timeout{0}; // that it is given now
};

class StationTimeout {
public:
    // What a station is given now.
    Micros value(const TimeoutSettings& settings) const;
    // What it is given if it is silent, or no longer than it took when it last answered.
    Micros learned(const TimeoutSettings& settings) const;

    // It took so long to begin its answer, in time or late.
    void answered(Micros delay, const TimeoutSettings& settings);
    // It did not begin in time. A request that is repeated again and again is not waited for longer
    // and longer.
    void passed(const TimeoutSettings& settings);
    // How long a reply that is out is awaited when the line is left.
    Micros patience(const TimeoutSettings& settings) const;
    bool hasAnswered() const;
    StationTime time(int station, const TimeoutSettings& settings) const;
    // 1.5 times its maximum response time of late; 0 until it has answered.
    Micros measured() const
    {
        return measured_;
    }
    bool hasGrownInVain() const;

private:
    Micros measured_{0}; // with room for more; 0: it has not answered yet
    Micros last_{0};
    Micros slowest_{0};
    Micros grown_{0};  // since it last answered
    int silences_ = 0; // in a row
};

// Of the stations that have answered; Stations maps their numbers.
template <typename Stations>
std::vector<StationTime> timesOf(const Stations& stations, const TimeoutSettings& settings)
{
    std::vector<StationTime> times;
    for (const auto& [number, station] : stations) {
        if (station.timeout.hasAnswered())
            times.push_back(station.timeout.time(number, settings));
    }
    return times;
}

// What a person wonders about whose station takes longer than it is given at first: why it is slow,
// or why values do not come. Empty of one that does not.
std::string slowText(const std::string& station, Micros delay, const TimeoutSettings& settings);

} // namespace dov417

#endif
