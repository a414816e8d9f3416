#include "panel/frames/recorded_log.h"

#include <QCoreApplication>
#include <algorithm>
#include <set>
#include <sstream>

#include "line/crc16.h"
#include "line/failure.h"
#include "line/frame_bytes.h"
#include "text/text_file.h"

namespace dov417 {

namespace {

constexpr std::chrono::hours logZero{1}; // a moment of 0 is none
// A note has the time at which it was told, the frame behind it that of its first byte, which may
// be earlier. Only what no program delays is a clock that was put back; or ahead, or one digit is
// wrong.
constexpr std::chrono::seconds longestDelay{1};
constexpr std::chrono::hours longestPause{24};
constexpr std::chrono::hours longestLog{24 * 365 * 100};

bool startsWith(const std::string& text, const char* with)
{
    return text.rfind(with, 0) == 0;
}

// "# port /dev/ttyUSB0, line 38400,8,EVEN,1"
std::optional<SerialFormat> formatInRemark(const std::string& remark)
{
    const std::string word = "line ";
    const std::size_t at = remark.rfind(word);
    if (at == std::string::npos)
        return std::nullopt;
    try {
        return parseRtuFormat(remark.substr(at + word.size()));
    } catch (const Failure&) {
        return std::nullopt; // something else is said of a line
    }
}

// Goes through the entries and tells the times what a line would have told.
class Retelling {
public:
    explicit Retelling(const RecordedLog& log) : log_(log)
    {
        times_.setWire(log.wire);
    }

    WireTimes times()
    {
        std::size_t nextBreak = 0;
        Micros at{0};
        for (std::size_t i = 0; i < log_.entries.size(); ++i) {
            const LogEntry& entry = log_.entries.at(i);
            const bool isBreak = nextBreak < log_.breaks.size() && log_.breaks[nextBreak] == i;
            nextBreak += isBreak ? 1 : 0;
            const Micros step =
                i > 0 ? Micros(entry.time - log_.entries.at(i - 1).time) : Micros(0);
            const bool isJump =
                step < -longestDelay || step > longestPause || at + step > longestLog;
            if (i > 0 && (isBreak || isJump))
                breakOff();
            if (!isJump) // else time goes on from there
                at += step;
            retell(i, entry, Clock::time_point(logZero) + at);
        }
        flush();
        times_.lineGone();
        return times_;
    }

private:
    void retell(std::size_t place, const LogEntry& entry, Clock::time_point at)
    {
        switch (entry.direction) {
        case Direction::sent:
            sent(place, entry, at);
            break;
        case Direction::received:
            received(entry, at);
            break;
        case Direction::stray:
            stray(entry, at);
            break;
        case Direction::note:
            note(entry, at);
            break;
        }
    }

    void sent(std::size_t place, const LogEntry& entry, Clock::time_point at)
    {
        if (entry.bytes.size() < minFrameLength)
            return;
        const int function = functionOf(entry.bytes);
        open_ = Transmission();
        open_.number = numberOfEntry(place);
        open_.sent = entry.bytes;
        open_.request.station = stationOf(entry.bytes);
        open_.sendBegin = at;
        open_.sendEnd =
            at + (log_.wire ? log_.wire->characters(entry.bytes.size()) : Clock::duration(0));
        open_.isMarker = function == diagnostics;
        open_.repeats = !open_.isMarker && hasFailed_ && entry.bytes == lastSent_;
        if (isReadFunction(function) && !open_.repeats &&
            !seen_.insert({entry.bytes.constData(), static_cast<std::size_t>(entry.bytes.size())})
                 .second) {
            ++cycle_;
            seen_ = {{entry.bytes.constData(), static_cast<std::size_t>(entry.bytes.size())}};
        }
        if (!open_.isMarker) { // which may go out between a frame and its repetition
            lastSent_ = entry.bytes;
            hasFailed_ = true; // until it is answered
        }
        tell(Passed::What::began, at);
        if (stationOf(entry.bytes) == broadcastStation) {
            end(LineResult::broadcast, Reason::broadcast, open_.sendEnd);
            hasFailed_ = false;
        }
    }

    void received(const LogEntry& entry, Clock::time_point at)
    {
        const bool isException = entry.bytes.size() == exceptionLength && hasGoodCrc(entry.bytes) &&
                                 (byteAt(entry.bytes, functionIndex) & exceptionFlag) != 0;
        const bool isOfMarker = open_.isMarker;
        const bool isBad = isBadReply(entry.bytes);
        open_.reception.bytes = entry.bytes;
        open_.reception.firstByte = open_.reception.lastByte = at;
        end(isException ? LineResult::exception : LineResult::reply,
            isException ? Reason::exception
            : isBad     ? Reason::badCrc
                        : Reason::none,
            at);
        if (!isOfMarker)
            hasFailed_ = isBad;
    }

    void stray(const LogEntry& entry, Clock::time_point at)
    {
        Passed each;
        each.what = Passed::What::stray;
        each.at = at;
        each.stray.at = at;
        each.stray.bytes = entry.bytes;
        passed_.push_back(each);
    }

    void note(const LogEntry& entry, Clock::time_point at)
    {
        if (startsWith(entry.meaning, "no answer") && open_.number > 0) {
            open_.reason = entry.meaning;
            open_.timeout = std::chrono::ceil<Micros>(
                std::max<Clock::duration>(at - open_.sendEnd, Clock::duration(0)));
            end(LineResult::timeout, Reason::silence, at);
        }
        const bool hasPassed = !passed_.empty() || times_.end() != Clock::time_point();
        if (startsWith(entry.meaning, "port ") && hasPassed &&
            entry.meaning.find(" is open") != std::string::npos) { // it was not, before
            flush();
            times_.lineGone();
        }
    }

    void end(LineResult result, Reason why, Clock::time_point at)
    {
        open_.reception.result = result;
        open_.why = why;
        tell(Passed::What::ended, at);
        open_ = Transmission();
    }

    void tell(Passed::What what, Clock::time_point at)
    {
        Passed each;
        each.what = what;
        each.at = at;
        each.transmission = open_;
        each.cycle = cycle_;
        passed_.push_back(std::move(each));
        constexpr std::size_t maxAtOnce = 1000; // they are large
        if (passed_.size() >= maxAtOnce)
            flush();
    }

    void flush()
    {
        times_.add(passed_, missing_);
        passed_.clear();
        missing_ = 0;
    }

    // Nobody recorded what passed up to the next entry.
    void breakOff()
    {
        flush();
        missing_ = 1;
        open_ = Transmission();
        seen_.clear();
        ++cycle_;
        hasFailed_ = false;
    }

    const RecordedLog& log_;
    WireTimes times_;
    std::vector<Passed> passed_;
    long long missing_ = 0;
    Transmission open_; // number 0: none is under way
    QByteArray lastSent_;
    bool hasFailed_ = false;
    std::set<std::string> seen_; // reads of this cycle
    long long cycle_ = 0;
};

} // namespace

RecordedLog readRecordedLog(const std::string& file)
{
    RecordedLog log;
    log.file = file;
    std::istringstream lines(contentOf(file, file));
    std::set<std::string> wires;
    const auto addBreak = [&log]() {
        if (log.breaks.empty() || log.breaks.back() != log.entries.size())
            log.breaks.push_back(log.entries.size());
    };
    for (std::string line; std::getline(lines, line);) {
        if (std::optional<LogEntry> entry = parseLogLine(line)) {
            if (tellsGap(*entry))
                addBreak();
            log.entries.push_back(std::move(*entry));
            continue;
        }
        if (line.empty() || line == "\r")
            continue;
        addBreak(); // a recording begins, or a frame cannot be read
        if (const std::optional<SerialFormat> wire =
                startsWith(line, "#") ? formatInRemark(line) : std::nullopt) {
            log.wire = wire;
            wires.insert(toText(*wire));
        }
    }
    if (log.entries.empty())
        throw Failure(QCoreApplication::translate("RecordedLog", "%1 holds no line of a line log")
                          .arg(QString::fromStdString(file))
                          .toStdString());
    if (wires.size() > 1)
        log.wire.reset();
    return log;
}

bool isBadReply(const QByteArray& frame)
{
    return frame.size() < exceptionLength || !hasGoodCrc(frame) ||
           (byteAt(frame, functionIndex) & exceptionFlag) != 0;
}

long long numberOfEntry(std::size_t entry)
{
    return static_cast<long long>(entry) + 1;
}

const LogEntry& entryOfNumber(const RecordedLog& log, long long number)
{
    return log.entries.at(static_cast<std::size_t>(number - 1));
}

std::size_t requestsIn(const RecordedLog& log)
{
    return static_cast<std::size_t>(
        std::count_if(log.entries.begin(), log.entries.end(), [](const LogEntry& entry) {
            return entry.direction == Direction::sent && entry.bytes.size() >= minFrameLength;
        }));
}

WireTimes timesOf(const RecordedLog& log)
{
    return Retelling(log).times();
}

} // namespace dov417
