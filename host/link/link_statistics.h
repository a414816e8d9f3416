// What happened on the line, counted per request and in all.
#ifndef DOV417_LINK_LINK_STATISTICS_H
#define DOV417_LINK_LINK_STATISTICS_H

#include <array>
#include <map>
#include <string>
#include <vector>

#include "line/clock.h"
#include "link/reply_collector.h"
#include "link/station_names.h"
#include "link/station_timeout.h"
#include "link/transmission.h"

namespace dov417 {

struct RequestCounters {
    int station = 0;
    long long sent = 0;
    long long notSent = 0; // held back, or nothing but a marker went out before it
    long long good = 0;
    std::array<long long, reasonCount> bad{}; // indexed by Reason
    long long retries = 0;                    // of sent: repetitions after a bad or missing reply
    long long parts = 0;                      // frames of those that went out in more than one
    long long abandoned = 0;
    long long forgotten = 0;             // the driver was started anew while they were on the line
    std::map<int, long long> exceptions; // by code
    std::string givenUp;                 // why, when it was last
    long long notAsked = 0;              // given up without having been sent
    std::string whyNotAsked;             // when it was last

    long long& badFor(Reason reason);
    long long badFor(Reason reason) const;
    // Adds the counts of `other`, not its texts and not its station.
    void add(const RequestCounters& other);
};

// Durations, counted in tenths of a millisecond: enough for a median over days.
class Durations {
public:
    static constexpr Micros binWidth{100};

    void add(Micros duration);
    // How often each came, by the number of the bin: bin n holds durations rounded to n widths.
    const std::map<long long, long long>& bins() const
    {
        return counts_;
    }
    long long count() const;
    Micros minimum() const;
    Micros median() const;
    Micros maximum() const;

private:
    std::map<long long, long long> counts_;
    long long count_ = 0;
    Micros minimum_{0};
    Micros maximum_{0};
};

struct LinkStatistics {
    // In the order of their first transmission; "1#R_W10(5)" with "read" or "write" in front.
    std::vector<std::string> order;
    std::map<std::string, RequestCounters> requests;
    std::array<long long, strayKinds> strays{}; // indexed by StrayKind
    Durations cycles;
    long long portLosses = 0;
    long long markers = 0; // requests of our own that ended a doubt
    bool portIsOpen = true;
    bool linkIsGood = true; // until a request is given up, and again with the next good reply
    Clock::time_point started = Clock::now();
    Micros wireTime{0};                // what the bytes sent and received took
    std::vector<StationTime> stations; // that have answered
    StationNames stationNames;         // of all

    void add(const Transmission& transmission);
    void add(const Stray& stray);

    RequestCounters& of(const std::string& request);
    RequestCounters total() const;
};

// All requests together, in a few lines; the last one is the state of the link.
std::vector<std::string> briefStatistics(const LinkStatistics& statistics, Clock::time_point now);

// A line for each station: what it takes, and what it is given.
std::vector<std::string> stationStatistics(const LinkStatistics& statistics);

// A line for each request.
std::vector<std::string> requestStatistics(const LinkStatistics& statistics);

// The whole account, for --stats.
std::string fullStatistics(const LinkStatistics& statistics, Clock::time_point now);

} // namespace dov417

#endif
