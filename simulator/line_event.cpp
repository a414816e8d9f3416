#include "simulator/line_event.h"

#include <cstdio>

#include "line/frame_text.h"

namespace dov417::simulator {

namespace {

std::string faultNames(const std::vector<FaultKind>& faults)
{
    std::string names;
    for (FaultKind kind : faults)
        names += (names.empty() ? "[" : " ") + faultName(kind);
    return names.empty() ? names : names + "]";
}

const char* arrowOf(LineEvent::Kind kind)
{
    switch (kind) {
    case LineEvent::received:
        return "<-";
    case LineEvent::sent:
        return "->";
    case LineEvent::withheld:
        return "-x";
    case LineEvent::garbage:
        return "<?";
    case LineEvent::notice:
        return "--";
    }
    return "";
}

// Seconds with microseconds, whatever the user's locale has for a point.
std::string timeText(std::int64_t nanoseconds)
{
    const long long micros = (nanoseconds + 500) / 1000;
    char text[32];
    std::snprintf(text, sizeof text, "%5lld.%06lld", micros / 1000000, micros % 1000000);
    return text;
}

} // namespace

std::string replyText(const Answer& answer, const std::vector<FaultKind>& faults)
{
    std::string text = "reply";
    if (answer.exception != 0)
        text += ": exception " + std::to_string(answer.exception) + ", " +
                exceptionName(answer.exception);
    const std::string names = faultNames(faults);
    return names.empty() ? text : text + " " + names;
}

std::string logText(const LineEvent& event)
{
    const std::string hex = hexText(event.bytes);
    return timeText(event.timeNs) + " " + arrowOf(event.kind) + " " + hex +
           (hex.empty() ? "" : "  ") + event.meaning;
}

} // namespace dov417::simulator
