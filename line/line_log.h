// The line log: what passed on the line, one frame a line, for people, and for programs that
// explain it.
//
//   2026-01-31T12:34:56.789012+01:00 TX 01 03 05 0A 00 01 A4 C4 | station 1: read R_W:10
//   2026-01-31T12:34:56.801344+01:00 RX 01 03 02 00 07 F9 86 | station 1: R_W:10 = 7
//   2026-01-31T12:34:57.301344+01:00 -- | no answer within 500 ms: no byte came
//
// Time with microseconds and the offset from UTC, direction, bytes, meaning. A line that starts
// with # is a remark, as the settings at the top of the file.
#ifndef DOV417_LINE_LINE_LOG_H
#define DOV417_LINE_LINE_LOG_H

#include <QByteArray>
#include <chrono>
#include <fstream>
#include <optional>
#include <string>

#include "line/clock.h"

namespace dov417 {

enum class Direction {
    sent,     // TX
    received, // RX: bytes handed on as the reply
    stray,    // RX?: bytes that were nobody's reply and were thrown away
    note      // --: something happened, no bytes
};

using LogTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::microseconds>;

// What the clock on the wall showed then.
LogTime logTime(Clock::time_point time);
// "2026-01-31T12:34:56.789012+01:00"
std::string logTimeText(LogTime time);

struct LogEntry {
    LogTime time;
    Direction direction = Direction::note;
    QByteArray bytes;
    std::string meaning;
};

// One line, without its end; line ends in the meaning become blanks. The offset is that of the
// local time zone.
std::string logLine(const LogEntry& entry);

// Nothing where the text is no such line. Any offset is understood; without "|" the meaning is
// empty.
std::optional<LogEntry> parseLogLine(const std::string& line);

// Of notes: what they say of the frames around them, in the words of whoever writes a log.
//
// "7 frames are missing here"
std::string gapText(long long frames);
bool tellsGap(const LogEntry& entry);
// "no answer within 500 ms: no byte came"
bool tellsNoAnswer(const LogEntry& entry);
// "port /dev/ttyUSB0 is open": it was opened, or lost.
bool tellsPort(const LogEntry& entry);

// Appends to a file, each line at once, so that nothing is missing after a crash.
class LineLog {
public:
    LineLog() = default;
    ~LineLog();
    LineLog(const LineLog&) = delete;
    LineLog& operator=(const LineLog&) = delete;

    // Throws a Failure if the file cannot be written, and while another log writes into it: a reply
    // of one line would follow a request of the other, and be explained as its answer.
    void open(const std::string& file);
    bool isOpen() const;
    // True once a line could not be written: the disk is full, the stick was pulled.
    bool hasFailed() const;

    void remark(const std::string& text);
    void add(const LogEntry& entry);

private:
    void claim(const std::string& file);

    std::ofstream out_;
    int claim_ = -1; // a descriptor that holds the lock
};

} // namespace dov417

#endif
