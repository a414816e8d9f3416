// The line's counters for programs.
#ifndef DOV417_TOOL_STATISTICS_JSON_H
#define DOV417_TOOL_STATISTICS_JSON_H

#include <string>

#include "link/link_statistics.h"

namespace dov417 {

// One object in one line: {"statistics": {...}}. Times are in milliseconds.
std::string statisticsJson(const LinkStatistics& statistics, Clock::time_point now);

} // namespace dov417

#endif
