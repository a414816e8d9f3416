// A line log from a file, as the page of the line and that of the line's time show it.
#ifndef DOV417_PANEL_RECORDED_LOG_H
#define DOV417_PANEL_RECORDED_LOG_H

#include <optional>
#include <string>
#include <vector>

#include "line/line_log.h"
#include "line/serial_format.h"
#include "panel/frames/wire_times.h"

namespace dov417 {

struct RecordedLog {
    std::string file;
    std::vector<LogEntry> entries;    // at least one
    std::vector<std::size_t> breaks;  // before each of these entries frames are missing
    std::optional<SerialFormat> wire; // what its remarks name, if all that name one name the same
};

// Throws a Failure where it cannot be read or holds no line of a log.
RecordedLog readRecordedLog(const std::string& file);

// Judged by the frame alone: what else its request awaits, a log does not tell.
bool isBadReply(const QByteArray& frame);

// The number of the entry's frame, which is no frame's of a line that is open.
long long numberOfEntry(std::size_t entry);
const LogEntry& entryOfNumber(const RecordedLog& log, long long number);
// How many requests went out.
std::size_t requestsIn(const RecordedLog& log);

// The log as time on the wire, from an hour after the clock's zero on. What a log does not tell is
// reckoned: a frame is sent again where it is the same as the one before, which failed; and a cycle
// ends where a request that was read in it is read again.
WireTimes timesOf(const RecordedLog& log);

} // namespace dov417

#endif
