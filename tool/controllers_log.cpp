#include "tool/controllers_log.h"

#include "line/crc16.h"
#include "line/frame_bytes.h"
#include "line/frame_length.h"
#include "line/frame_text.h"

namespace dov417 {

namespace {

constexpr std::chrono::hours horizon(1); // longer than a fault delays a reply

// " [flip late]", as they stand at the end of the meaning.
std::string faultsOf(const std::string& meaning)
{
    const std::size_t begin = meaning.find('[');
    return begin == std::string::npos ? std::string() : " " + meaning.substr(begin);
}

} // namespace

ControllersLog::ControllersLog(const std::vector<Area>& areas) : areas_(areas), books_(horizon) {}

std::optional<LogEntry> ControllersLog::entry(const std::string& line)
{
    using simulator::LineEvent;
    const std::optional<LineEvent> event = simulator::parseLogText(line);
    if (!event)
        return std::nullopt;
    const std::chrono::nanoseconds since(event->timeNs);
    const Clock::time_point at{std::chrono::duration_cast<Clock::duration>(since)};
    LogEntry entry;
    entry.time = LogTime(std::chrono::duration_cast<Micros>(since));
    entry.bytes = event->bytes;
    books_.expire(at);
    switch (event->kind) {
    case LineEvent::received: {
        entry.direction = Direction::sent;
        entry.meaning = requestText(event->bytes, areas_);
        if (event->bytes.size() < minFrameLength) // nobody's question: nothing answers it
            break;
        const bool isBroadcast = event->bytes.at(0) == 0;
        const int length = isBroadcast ? 0 : lengthOfReplyTo(event->bytes);
        books_.add({++requests_, event->bytes, length == neverTold ? untoldLength : length, at});
        break;
    }
    case LineEvent::sent:
        entry.direction = Direction::received;
        entry.meaning = replied(event->bytes) + faultsOf(event->meaning);
        break;
    case LineEvent::withheld: // it was not on the line, and will not be
        entry.meaning = "not sent: " + replied(event->bytes) + faultsOf(event->meaning);
        entry.bytes.clear();
        break;
    case LineEvent::garbage:
        entry.direction = Direction::stray;
        entry.meaning = "thrown away: " + event->meaning;
        break;
    case LineEvent::notice:
        entry.meaning = event->meaning;
        break;
    }
    return entry;
}

void ControllersLog::forget()
{
    books_ = Books(horizon);
}

std::string ControllersLog::replied(const QByteArray& frame)
{
    const bool isSound = hasGoodCrc(frame);
    const bool isClear = isSound && books_.isOfOneRequest(frame);
    const auto answered = isSound ? books_.take(frame) : std::nullopt;
    return replyText(frame, isClear ? answered->sent : QByteArray(), areas_);
}

} // namespace dov417
