// What is said of stations that are silent.
#ifndef DOV417_LINK_SILENCE_WORDS_H
#define DOV417_LINK_SILENCE_WORDS_H

#include <string>

#include "link/station_probes.h"

namespace dov417 {

// "10:32:05", with its date if that is not today's.
std::string wallTime(Clock::time_point time);

// Why a cyclic read was answered without the line: "not asked: silent since 10:32:05".
std::string notAskedSince(Clock::time_point silentSince);

// Empty for no news. The station is named as people know it, the request as the driver does; why it
// was given up.
std::string textOf(StationProbes::News news, const std::string& station, const std::string& request,
                   Reason why, Clock::time_point silentSince, const ProbeSettings& settings);

} // namespace dov417

#endif
