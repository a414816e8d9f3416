// The settings of a line as people give them, by whatever program.
#ifndef DOV417_LIVE_LINE_SETUP_H
#define DOV417_LIVE_LINE_SETUP_H

#include <map>
#include <optional>
#include <string>

#include "link/serial_line.h"
#include "session/session.h"

namespace dov417 {

// Worth bridging at 38400 baud for a controller that takes 5 ms to answer; and even, so that a
// piece of a long write never ends inside a 32-bit value.
constexpr int defaultMergeGap = 20;
constexpr int defaultTimeoutMs = 500;
constexpr int defaultMaxTimeoutMs = 15000;
constexpr int defaultReplyGapMs = 100;
// TCP repeats what the network lost after 200 ms at the earliest.
constexpr int defaultNetworkReplyGapMs = 500;
constexpr double defaultHorizonSeconds = 30;
constexpr int defaultRetries = 3;
constexpr int defaultMaxProbeMs = 30000;
// What controllers need to digest a broadcast.
constexpr int defaultTurnaroundMs = 100;
constexpr int maxMs = 600000; // of any of these times

struct LineSetup {
    bool simulated = false; // an own controller on a pseudo-terminal instead of a port
    std::string port;
    std::string line; // "38400,8,EVEN,1"; empty: the library's own
    // Each in place of the line's, unless it is empty.
    std::string baud;
    std::string dataBits;
    std::string parity;
    std::string stopBits;
    std::optional<int> timeoutMs; // fixes the time-out; else a slow station is waited for longer
    int retries = defaultRetries;
    int maxProbeMs = defaultMaxProbeMs; // maximum pause before a silent station is asked again
    std::optional<int> gap;             // words; else the default
    int turnaroundMs = defaultTurnaroundMs;
    Rs485 direction = {}; // who drives it on a two-wire line
    bool mayMark = true;  // function 8 may be used to tell late replies
    std::string log;      // file that records the line; empty: none
    // Where the time-out is not fixed: what a quick station is given at least, a slow one at most.
    std::optional<int> timeoutMinMs; // else the default time-out
    int timeoutMaxMs = defaultMaxTimeoutMs;
    double horizonSeconds = defaultHorizonSeconds; // a station begins to answer within it, or never
    // Silence that ends a reply, until one has gone on after it; else the default of the line.
    std::optional<int> replyGapMs;
    // Registers in one request, or 16 coils for each; else as each station shows it.
    std::optional<int> maxRegisters;
    std::map<int, int> stationMaxRegisters; // the same of stations that have their own
    StationNames stationNames = {};         // of those that are known to be there

    int mergeGap() const
    {
        return gap.value_or(defaultMergeGap);
    }
    // Where nothing is merged: a single read is as long as the gap.
    int singleReadGap() const
    {
        return gap.value_or(maxWordsOfARead);
    }
};

// The line in full. Throws a UsageFailure if it is written wrongly.
SerialFormat serialFormat(const Library& library, const LineSetup& setup);

SessionSettings sessionSettings(const LineSetup& setup);

} // namespace dov417

#endif
