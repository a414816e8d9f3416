// What passes on a line as the lines of its log: the one wording of files and of windows.
#ifndef DOV417_LIVE_LOG_ENTRIES_H
#define DOV417_LIVE_LOG_ENTRIES_H

#include <optional>
#include <string>
#include <vector>

#include "line/areas.h"
#include "line/line_log.h"
#include "link/transmission.h"

namespace dov417 {

LogEntry beganEntry(const Transmission& transmission, const std::vector<Area>& areas);
// Nothing for a broadcast, whose end nobody hears.
std::optional<LogEntry> endedEntry(const Transmission& transmission,
                                   const std::vector<Area>& areas);
LogEntry strayEntry(const Stray& stray);
// Of now.
LogEntry noteEntry(const std::string& text);

} // namespace dov417

#endif
