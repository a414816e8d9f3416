// What happened on the line, counted per request and in all.
#ifndef DOV417_HOST_LINK_STATISTICS_H
#define DOV417_HOST_LINK_STATISTICS_H

#include <array>
#include <map>
#include <string>
#include <vector>

#include "serial_line.h"

struct RequestCounters {
    long long sent = 0;
    long long good = 0;
    long long badCrc = 0;
    long long shortReplies = 0;
    long long timeouts = 0;
    long long retries = 0; // of sent: repetitions after a bad or missing reply
    long long abandoned = 0;
    std::map<int, long long> exceptions; // by code
};

// Durations, counted in tenths of a millisecond: enough for a median over days.
class Durations {
public:
    void add(Micros duration);
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
    Clock::time_point started = Clock::now();
    Micros wireTime{0}; // what the bytes sent and received took

    RequestCounters& of(const std::string& request);
    RequestCounters total() const;
};

// One or two lines for the foot of a table.
std::vector<std::string> briefStatistics(const LinkStatistics& statistics, Clock::time_point now);

// The whole account, for --stats.
std::string fullStatistics(const LinkStatistics& statistics, Clock::time_point now);

#endif
