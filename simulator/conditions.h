// What may be changed of a controller while it serves. Always replaced as a whole.
#ifndef DOV417_SIMULATOR_CONDITIONS_H
#define DOV417_SIMULATOR_CONDITIONS_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace dov417::simulator {

constexpr int maxResponseTimeMs = 600000;

struct Conditions {
    std::vector<std::string> faults; // rules, see faults.h
    int responseTimeMs = 0;          // what the controller takes before it answers
    bool isOn = true;                // off: it takes nothing in and says nothing; values stay
    bool isPlugged = true;           // else its port is gone; it comes back under the same name
};

inline bool operator==(const Conditions& left, const Conditions& right)
{
    return left.faults == right.faults && left.responseTimeMs == right.responseTimeMs &&
           left.isOn == right.isOn && left.isPlugged == right.isPlugged;
}

// What replies have suffered since the start.
struct FaultCounts {
    std::uint64_t replies = 0;
    std::uint64_t faulty = 0;                   // of these
    std::map<std::string, std::uint64_t> kinds; // those that there were
};

} // namespace dov417::simulator

#endif
