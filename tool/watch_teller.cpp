#include "tool/watch_teller.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <csv.h>
#include <ctime>
#include <limits>
#include <nlohmann/json.hpp>

#include "line/failure.h"
#include "line/line_log.h"
#include "text/characters.h"
#include "text/json_value.h"
#include "tool/live_command.h"

namespace dov417 {

namespace {

constexpr int millisecondsPerSecond = 1000;
constexpr std::size_t maxTroubleLines = 10; // a minute
constexpr std::size_t maxMessages = 3;      // on the screen
constexpr std::size_t dateLength = 11;      // "2026-01-31T"
constexpr std::size_t clockLength = 8;

// What a screen has shown is told when it is left.
std::size_t maxNews(bool json, bool hasScreen)
{
    return json ? std::numeric_limits<std::size_t>::max() : hasScreen ? 0 : maxTroubleLines;
}

std::string timeText()
{
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() %
        millisecondsPerSecond;
    std::tm local = std::tm();
    localtime_r(&seconds, &local);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    std::snprintf(text + length, sizeof text - length, ".%03lld", static_cast<long long>(millis));
    return text;
}

std::string jsonTime()
{
    return logTimeText(logTime(Clock::now()));
}

std::string qualityWord(Quality quality)
{
    return quality == Quality::good ? "good" : qualityText(quality);
}

// Also whether the file took it.
bool writeRow(std::FILE* file, const std::vector<std::string>& fields)
{
    for (std::size_t i = 0; i < fields.size(); ++i) {
        std::fputs(i == 0 ? "" : ",", file);
        csv_fwrite(file, fields.at(i).data(), fields.at(i).size());
    }
    std::fputs("\n", file);
    return std::fflush(file) == 0 && std::ferror(file) == 0;
}

} // namespace

std::string clockText()
{
    return timeText().substr(dateLength, clockLength);
}

WatchTeller::WatchTeller(bool json, const CsvWish& csv, bool hasScreen,
                         const std::vector<ViewLabel>& labels,
                         const std::function<void()>& outputLost)
    : json_(json), labels_(labels), csvName_(csv.name), csvIsOutput_(csv.name == "-"),
      outputLost_(outputLost), hasScreen_(hasScreen), troubles_(maxNews(json, hasScreen))
{
    if (csvName_.empty())
        return;
    Row heading = {"time", "name", "address", "value", "previous", "quality"};
    if (csv.isWide) {
        wideRows_.emplace(labels);
        heading = wideRows_->header();
        heading.insert(heading.begin(), "time");
    }
    if (!csvIsOutput_)
        csvFile_.reset(std::fopen(csvName_.c_str(), "w"));
    csv_ = csvIsOutput_ ? stdout : csvFile_.get();
    if (!csv_ || !writeRow(csv_, heading))
        throw Failure("cannot write " + csvName_ + ": " + std::strerror(errno));
}

void WatchTeller::tell(const ViewChange& change)
{
    const ViewLabel& label = labels_.at(change.index);
    const View& view = change.view;
    const std::string quality = qualityWord(view.quality());
    const std::string value = view.hasValue ? valueText(view, label) : std::string();
    const std::string previous = change.isValue ? previousText(view, label) : std::string();
    if (csv_ && !wideRows_ &&
        !writeRow(csv_, {timeText(), label.name, label.address, withoutQuotes(value),
                         withoutQuotes(previous), quality}))
        outputLost_();
    if (json_) {
        tellInJson(change, label, value, previous);
    } else if (!hasScreen_ && !csvIsOutput_) {
        const std::string shown = view.hasValue ? " = " + shownText(view, label) : std::string();
        std::string remark =
            previous.empty() ? "" : " (was " + shownPreviousText(view, label) + ")";
        if (!change.isValue)
            remark = " (" + quality + ")";
        say(timeText() + " " + label.name + shown + remark);
    }
}

void WatchTeller::tellInJson(const ViewChange& change, const ViewLabel& label,
                             const std::string& value, const std::string& previous)
{
    const View& view = change.view;
    nlohmann::ordered_json object = {
        {"time", jsonTime()}, {"name", label.name}, {"address", label.address}};
    if (view.hasValue) {
        object["value"] = jsonValue(value);
        if (!label.format.scaling.unit.empty())
            object["unit"] = label.format.scaling.unit;
        if (object["value"].is_null())
            object["bits"] = bitsText(view, view.value, label);
    }
    if (!previous.empty()) {
        object["previous"] = jsonValue(previous);
        if (object["previous"].is_null())
            object["previousBits"] = bitsText(view, view.previous, label);
    }
    object["quality"] = qualityWord(view.quality());
    say(object.dump());
}

void WatchTeller::tellRow(const std::vector<View>& views)
{
    if (!wideRows_)
        return;
    Row row = wideRows_->next(views);
    row.insert(row.begin(), timeText());
    if (!writeRow(csv_, row))
        outputLost_();
}

void WatchTeller::tellAbandoned(const std::string& request, const std::string& reason, Reason why)
{
    const bool isNews = troubles_.isNews(request, why, reason, Clock::now());
    const std::string text = "given up: " + request + ": " + reason;
    if (hasScreen_) {
        const long long times = troubles_.times(request, why);
        show("given up " + request + keyOf(why),
             times == 1 ? text : text + " (" + std::to_string(times) + " times)");
    } else if (isNews && json_) {
        const nlohmann::ordered_json object = {
            {"time", jsonTime()}, {"abandoned", request}, {"why", keyOf(why)}, {"reason", reason}};
        say(object.dump());
    } else if (isNews) {
        std::fprintf(stderr, "%s %s\n", timeText().c_str(), text.c_str());
        if (troubles_.isFull())
            std::fprintf(stderr,
                         "dov417: what is given up besides is counted and told at the end\n");
    }
}

void WatchTeller::tellPort(bool open, const std::string& message)
{
    wasLost_ = wasLost_ || !open;
    if (wasLost_)
        tellNotice(message);
}

void WatchTeller::tellNotice(const std::string& text)
{
    if (json_)
        say(nlohmann::ordered_json{{"time", jsonTime()}, {"notice", text}}.dump());
    if (!hasScreen_)
        return;
    show(text, text);
    keep(text);
}

void WatchTeller::show(const std::string& about, const std::string& text)
{
    const std::string line = clockText() + " " + text;
    for (Message& message : messages_)
        if (message.about == about) {
            message.text = line;
            return;
        }
    messages_.push_back({about, line});
    if (messages_.size() > maxMessages)
        messages_.erase(messages_.begin());
}

void WatchTeller::tellUnsaid()
{
    std::vector<std::pair<std::string, std::string>> lines;
    for (const Trouble& each : troubles_.unsaid()) {
        if (json_)
            say(nlohmann::ordered_json{{"time", jsonTime()},
                                       {"abandoned", each.what},
                                       {"why", keyOf(each.why)},
                                       {"reason", each.reason},
                                       {"times", each.times}}
                    .dump());
        else
            lines.emplace_back(each.what + " " + std::to_string(each.times) +
                                   (each.times == 1 ? " time" : " times"),
                               each.reason);
    }
    for (const std::string& notice : notices_)
        std::fprintf(stderr, "%s\n", notice.c_str());
    for (const std::string& line : grouped(lines))
        std::fprintf(stderr, "dov417: given up: %s\n", line.c_str());
}

std::vector<std::string> WatchTeller::messages() const
{
    std::vector<std::string> texts;
    texts.reserve(messages_.size());
    for (const Message& message : messages_)
        texts.push_back(message.text);
    return texts;
}

void WatchTeller::keep(const std::string& text)
{
    notices_.push_back(timeText() + " " + text);
}

void WatchTeller::requireComplete() const
{
    if (csv_ && std::ferror(csv_) != 0)
        throw Failure("cannot write " + csvName_);
}

void WatchTeller::say(const std::string& text)
{
    std::printf("%s\n", text.c_str());
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        outputLost_();
}

} // namespace dov417
