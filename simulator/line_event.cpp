#include "simulator/line_event.h"

#include <array>
#include <cstdio>
#include <cstring>

#include "line/frame_text.h"

namespace dov417::simulator {

namespace {

constexpr long long nanosecondsPerMicro = 1000;
constexpr long long microsPerSecond = 1000000;

std::string faultNames(const std::vector<FaultKind>& faults)
{
    std::string names;
    for (FaultKind kind : faults)
        names += (names.empty() ? "[" : " ") + faultName(kind);
    return names.empty() ? names : names + "]";
}

// By LineEvent::Kind.
constexpr std::array<const char*, 5> arrows = {"<-", "->", "-x", "<?", "--"};

// Seconds with microseconds, whatever the user's locale has for a point.
std::string timeText(std::int64_t nanoseconds)
{
    const long long micros = (nanoseconds + nanosecondsPerMicro / 2) / nanosecondsPerMicro;
    char text[32];
    std::snprintf(text, sizeof text, "%5lld.%06lld", micros / microsPerSecond,
                  micros % microsPerSecond);
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
    return timeText(event.timeNs) + " " + arrows.at(event.kind) + " " + hex +
           (hex.empty() ? "" : "  ") + event.meaning;
}

std::optional<LineEvent> parseLogText(const std::string& text)
{
    long long seconds = 0;
    int micros = 0;
    char arrow[3] = "";
    int used = 0;
    // The widths keep every number in range: 292 years are 64 bits of nanoseconds, nine digits of
    // seconds 31 years. NOLINTNEXTLINE(cert-err34-c)
    if (std::sscanf(text.c_str(), " %9lld.%6d %2s%n", &seconds, &micros, arrow, &used) != 3 ||
        seconds < 0 || micros < 0)
        return std::nullopt;
    LineEvent event;
    std::size_t kind = 0;
    while (kind < arrows.size() && std::strcmp(arrow, arrows.at(kind)) != 0)
        ++kind;
    if (kind == arrows.size())
        return std::nullopt;
    event.kind = static_cast<LineEvent::Kind>(kind);
    event.timeNs = (seconds * microsPerSecond + micros) * nanosecondsPerMicro;
    std::string rest = text.substr(static_cast<std::size_t>(used));
    if (!rest.empty() && rest.back() == '\r')
        rest.pop_back();
    if (event.kind == LineEvent::notice) {
        event.meaning = rest.substr(rest.find_first_not_of(' ') == std::string::npos
                                        ? rest.size()
                                        : rest.find_first_not_of(' '));
        return event;
    }
    const std::size_t gap = rest.find("  ");
    const auto bytes = parseHexText(rest.substr(0, gap));
    if (!bytes || bytes->isEmpty())
        return std::nullopt;
    event.bytes = *bytes;
    event.meaning = gap == std::string::npos ? std::string() : rest.substr(gap + 2);
    return event;
}

} // namespace dov417::simulator
