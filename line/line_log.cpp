#include "line/line_log.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "line/counted.h"
#include "line/failure.h"
#include "line/frame_text.h"

namespace dov417 {

namespace {

using std::chrono::microseconds;

const std::array<const char*, 4> directionNames = {"TX", "RX", "RX?", "--"};
const char* const meaningMark = "|";
const char* const gapWords = " missing here";
const int secondsPerMinute = 60;
const int secondsPerHour = 3600;
const long microsPerSecond = 1000000;

std::optional<LogTime> parseTime(const std::string& text)
{
    std::tm parts{};
    int micros = 0;
    char sign = 0;
    int hours = 0;
    int minutes = 0;
    int used = 0;
    const int found = // the widths keep every number in range: NOLINTNEXTLINE(cert-err34-c)
        std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d.%6d%c%2d:%2d%n", &parts.tm_year,
                    &parts.tm_mon, &parts.tm_mday, &parts.tm_hour, &parts.tm_min, &parts.tm_sec,
                    &micros, &sign, &hours, &minutes, &used);
    if (found != 10 || static_cast<std::size_t>(used) != text.size() ||
        (sign != '+' && sign != '-') || micros < 0)
        return std::nullopt;
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    const int offset = hours * secondsPerHour + minutes * secondsPerMinute;
    const long long seconds = timegm(&parts) - (sign == '-' ? -offset : offset);
    return LogTime(microseconds(seconds * microsPerSecond + micros));
}

// Takes the text up to the next blank off the front.
std::string takeWord(std::string& text)
{
    const std::size_t blank = text.find(' ');
    std::string word = text.substr(0, blank);
    text = blank == std::string::npos ? std::string() : text.substr(blank + 1);
    return word;
}

std::string onOneLine(std::string text)
{
    for (char& c : text)
        if (c == '\n' || c == '\r')
            c = ' ';
    return text;
}

} // namespace

LogTime logTime(Clock::time_point time)
{
    const auto since = Clock::now() - time;
    return std::chrono::time_point_cast<Micros>(
        std::chrono::system_clock::now() -
        std::chrono::duration_cast<std::chrono::system_clock::duration>(since));
}

std::string logTimeText(LogTime time)
{
    const auto micros = time.time_since_epoch().count();
    const long long below = (micros % microsPerSecond + microsPerSecond) % microsPerSecond;
    const std::time_t seconds = static_cast<std::time_t>((micros - below) / microsPerSecond);
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    const long minutes = local.tm_gmtoff / secondsPerMinute;
    const long size = minutes < 0 ? -minutes : minutes;
    std::snprintf(text + length, sizeof text - length, ".%06lld%c%02ld:%02ld", below,
                  minutes < 0 ? '-' : '+', size / 60 % 100, size % 60);
    return text;
}

std::string logLine(const LogEntry& entry)
{
    std::string line =
        logTimeText(entry.time) + " " + directionNames[static_cast<std::size_t>(entry.direction)];
    if (!entry.bytes.isEmpty())
        line += " " + hexText(entry.bytes);
    return line + " " + meaningMark + " " + onOneLine(entry.meaning);
}

std::optional<LogEntry> parseLogLine(const std::string& line)
{
    std::string rest = line;
    if (!rest.empty() && rest.back() == '\r')
        rest.pop_back();
    LogEntry entry;
    const std::size_t mark = rest.find(meaningMark);
    if (mark != std::string::npos) {
        const std::size_t from = rest.find_first_not_of(' ', mark + 1);
        if (from != std::string::npos)
            entry.meaning = rest.substr(from);
        rest.resize(mark);
    }
    const auto time = parseTime(takeWord(rest));
    if (!time)
        return std::nullopt;
    entry.time = *time;
    const std::string direction = takeWord(rest);
    std::size_t index = 0;
    while (index < directionNames.size() && direction != directionNames[index])
        ++index;
    if (index == directionNames.size())
        return std::nullopt;
    entry.direction = static_cast<Direction>(index);
    const auto bytes = parseHexText(rest);
    if (!bytes || bytes->isEmpty() != (entry.direction == Direction::note))
        return std::nullopt;
    entry.bytes = *bytes;
    return entry;
}

std::string gapText(long long frames)
{
    return counted(frames, "frame") + (frames == 1 ? " is" : " are") + gapWords;
}

bool tellsGap(const LogEntry& entry)
{
    return entry.direction == Direction::note && entry.meaning.find(gapWords) != std::string::npos;
}

bool tellsNoAnswer(const LogEntry& entry)
{
    return entry.direction == Direction::note && entry.meaning.rfind("no answer", 0) == 0;
}

bool tellsPort(const LogEntry& entry)
{
    return entry.direction == Direction::note && entry.meaning.rfind("port ", 0) == 0;
}

LineLog::~LineLog()
{
    if (claim_ >= 0)
        close(claim_);
}

void LineLog::open(const std::string& file)
{
    out_.open(file, std::ios::app);
    if (!out_)
        throw Failure("cannot write the log " + file + ": " + std::strerror(errno));
    claim(file);
}

// Of a file alone: /dev/null is for all, and a pipe's reader parts nothing. Where a file system
// knows no locks the log is written all the same.
void LineLog::claim(const std::string& file)
{
    struct stat kind = {};
    if (stat(file.c_str(), &kind) != 0 || !S_ISREG(kind.st_mode))
        return;
    claim_ = ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
    if (claim_ < 0 || flock(claim_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
        return;
    out_.close();
    throw Failure("cannot write the log " + file + ": another recording is writing into it");
}

bool LineLog::isOpen() const
{
    return out_.is_open();
}

bool LineLog::hasFailed() const
{
    return out_.is_open() && !out_;
}

void LineLog::remark(const std::string& text)
{
    if (isOpen())
        out_ << "# " << onOneLine(text) << std::endl;
}

void LineLog::add(const LogEntry& entry)
{
    if (isOpen())
        out_ << logLine(entry) << std::endl;
}

} // namespace dov417
