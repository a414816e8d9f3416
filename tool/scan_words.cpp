#include "tool/scan_words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace dov417 {

namespace {

constexpr double microsPerMillisecond = 1000;
constexpr long long secondsPerMinute = 60;
constexpr std::size_t barWidth = 20;

// To a tenth: a time on a line is not known better.
double tenthsOfMilliseconds(Micros time)
{
    return std::round(static_cast<double>(time.count()) * 10 / microsPerMillisecond) / 10;
}

std::string millisecondsText(Micros time)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ms", tenthsOfMilliseconds(time));
    return text;
}

std::string listText(const std::set<int>& numbers)
{
    std::string text = numbers.size() == 1 ? "station " : "stations ";
    for (const int number : numbers)
        text += (number == *numbers.begin() ? "" : ", ") + std::to_string(number);
    return text;
}

const char* keyOf(HeardKind kind)
{
    switch (kind) {
    case HeardKind::inUse:
        return "inUse";
    case HeardKind::noFrame:
        return "noFrame";
    case HeardKind::garbled:
        return "garbled";
    case HeardKind::answeredTwice:
        return "answeredTwice";
    case HeardKind::otherLine:
        return "otherLine";
    }
    return "";
}

std::string leftText(Micros left)
{
    const long long seconds = std::chrono::ceil<std::chrono::seconds>(left).count();
    const long long minutes = seconds / secondsPerMinute;
    return (minutes > 0 ? std::to_string(minutes) + " min " : "") +
           std::to_string(seconds % secondsPerMinute) + " s left";
}

} // namespace

std::string atText(const ScanLine& line)
{
    return line ? " at " + toText(*line) : std::string();
}

std::string foundText(const Found& found, Micros timeout, const StationNames& names)
{
    const std::string took = millisecondsText(found.took);
    std::string text = stationText(found.station, names) + atText(found.line);
    text += found.isConfirmed ? " answers in " + took
                              : " answered once, in " + took + ", and then no more";
    return found.isSlow ? text + ": slow, as it is given " + millisecondsText(timeout) : text;
}

nlohmann::ordered_json foundJson(const Found& found, const StationNames& names)
{
    nlohmann::ordered_json object = {{"station", found.station}};
    const std::string name = nameOf(found.station, names);
    if (!name.empty())
        object["name"] = name;
    if (found.line)
        object["line"] = toText(*found.line);
    object["milliseconds"] = tenthsOfMilliseconds(found.took);
    object["slow"] = found.isSlow;
    object["confirmed"] = found.isConfirmed;
    return object;
}

std::string heardText(const ScanHeard& heard, bool asksAnyway, const StationNames& names)
{
    const std::string at = heard.line ? "at " + toText(*heard.line) + ": " : std::string();
    const std::string station = stationText(heard.station, names);
    const std::string bytes = std::to_string(heard.bytes) + " bytes";
    const char* const consequence = asksAnyway ? "" : "; nothing is asked (--ask-anyway does)";
    switch (heard.kind) {
    case HeardKind::inUse:
        return at +
               (heard.stations.empty()
                    ? bytes + " came unasked, but no frame: the line is in use at another speed "
                              "or parity, or it is disturbed"
                    : "the line is in use: others speak with " + listText(heard.stations)) +
               consequence;
    case HeardKind::noFrame:
        return at + "bytes come whoever is asked, but no frame: another speed or parity, or a "
                    "disturbed line";
    case HeardKind::garbled:
        return at + station + " answers garbled, " + bytes +
               " without a frame: two stations under one number, or one with another parity";
    case HeardKind::answeredTwice:
        return at + station +
               " answered one question twice: two stations under one number, or a "
               "modem that repeats";
    case HeardKind::otherLine:
        return station + " answered late, perhaps to what it was asked" + atText(heard.line) +
               ": it is asked there again";
    }
    return std::string();
}

nlohmann::ordered_json heardJson(const ScanHeard& heard, bool asksAnyway, const StationNames& names)
{
    nlohmann::ordered_json object = {{"heard", keyOf(heard.kind)}};
    if (heard.line)
        object["line"] = toText(*heard.line);
    if (heard.station != 0)
        object["station"] = heard.station;
    if (heard.bytes != 0)
        object["bytes"] = heard.bytes;
    if (heard.kind == HeardKind::inUse)
        object["stations"] = heard.stations;
    object["text"] = heardText(heard, asksAnyway, names);
    return object;
}

std::string rangeLine(const std::string& words, const WordRange& range)
{
    switch (range.kind) {
    case WordRange::answered:
        return words + " is answered";
    case WordRange::refused:
        return words + " is refused: " + range.reason;
    case WordRange::unknown:
        return words + " is not known: " + range.reason;
    }
    return std::string();
}

nlohmann::ordered_json rangeJson(const std::string& words, const WordRange& range)
{
    nlohmann::ordered_json object = {{"range", words}, {"answered", nullptr}};
    if (range.kind != WordRange::unknown)
        object["answered"] = range.kind == WordRange::answered;
    if (!range.reason.empty())
        object["reason"] = range.reason;
    return object;
}

std::string barText(double share, const std::string& what)
{
    const auto filled =
        std::min(barWidth, static_cast<std::size_t>(share * static_cast<double>(barWidth)));
    char percent[16];
    std::snprintf(percent, sizeof percent, "%3.0f %%", share * 100);
    return "[" + std::string(filled, '#') + std::string(barWidth - filled, '-') + "] " + percent +
           "  " + what;
}

std::string progressText(const ScanProgress& progress)
{
    const double all = static_cast<double>((progress.elapsed + progress.left).count());
    const double share = all > 0 ? static_cast<double>(progress.elapsed.count()) / all : 0;
    return barText(share, (progress.station == 0 ? "listening"
                                                 : "station " + std::to_string(progress.station)) +
                              atText(progress.line) + ", " + leftText(progress.left));
}

} // namespace dov417
