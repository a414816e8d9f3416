#include "tool/heard_teller.h"

#include <cstdio>
#include <nlohmann/json.hpp>

#include "line/frame_text.h"

namespace dov417 {

namespace {

using Json = nlohmann::ordered_json;

const char* keyOf(HeardAs as)
{
    switch (as) {
    case HeardAs::request:
        return "request";
    case HeardAs::reply:
        return "reply";
    case HeardAs::unclear:
        return "unclear";
    case HeardAs::alike:
        return "alike";
    case HeardAs::unasked:
        return "unasked";
    case HeardAs::noise:
        return "noise";
    }
    return "";
}

Json timesJson(const Durations& durations)
{
    const auto milliseconds = [](Micros time) { return static_cast<double>(time.count()) / 1000; };
    return durations.count() == 0 ? Json()
                                  : Json{{"min", milliseconds(durations.minimum())},
                                         {"median", milliseconds(durations.median())},
                                         {"max", milliseconds(durations.maximum())}};
}

Json tableJson(const HeardTable& table, const std::vector<Area>& areas, const StationNames& names)
{
    Json rows = Json::array();
    for (const HeardRow& row : table.rows()) {
        Json each = {{"station", row.station},
                     {"function", row.function},
                     {"first", row.first < 0 ? Json() : Json(row.first)},
                     {"count", row.first < 0 ? Json() : Json(row.count)},
                     {"addresses", heardAddresses(row, areas)},
                     {"asked", row.asked},
                     {"answered", row.answered},
                     {"refused", row.refused},
                     {"silent", row.silent},
                     {"alike", row.alike},
                     {"cycle", timesJson(row.cycle)},
                     {"answersAfter", timesJson(row.answer)}};
        const std::string name = nameOf(row.station, names);
        if (!name.empty())
            each["name"] = name;
        rows.push_back(each);
    }
    return {{"requests", rows},
            {"frames", table.frames()},
            {"unclear", table.unclear()},
            {"noiseBytes", table.noise()},
            {"otherRequests", table.others()}};
}

} // namespace

HeardTeller::HeardTeller(HeardForm form, const LineSettings& settings, const std::string& log,
                         const std::vector<Area>& areas)
    : form_(form), settings_(settings), areas_(areas), logName_(log)
{
    if (!log.empty()) {
        log_.open(log);
        log_.remark(lineText());
    }
    if (form == HeardForm::table && Screen::isTerminal()) {
        screen_ = std::make_unique<Screen>();
        redraw_.setInterval(redrawMilliseconds);
        QObject::connect(&redraw_, &QTimer::timeout, &redraw_, [this]() { draw(); });
        redraw_.start();
    }
    std::fflush(stdout);
}

std::string HeardTeller::lineText() const
{
    return "port " + settings_.device.toStdString() + ", line " + toText(settings_.wire) +
           ", listening";
}

void HeardTeller::sayWhere()
{
    if (form_ == HeardForm::json)
        std::printf("%s\n",
                    Json{{"port", settings_.device.toStdString()}, {"line", toText(settings_.wire)}}
                        .dump()
                        .c_str());
    if (form_ == HeardForm::frames)
        std::printf("# %s\n", lineText().c_str());
}

void HeardTeller::write(const LogEntry& entry, const std::string& text)
{
    log_.add(entry);
    if (form_ == HeardForm::frames)
        std::printf(
            "%s",
            lines_.of(entry.time, TraceLines::arrow(entry.direction) + text, entry.bytes).c_str());
}

void HeardTeller::note(LogTime time, const std::string& text)
{
    write({time, Direction::note, QByteArray(), text}, text);
}

void HeardTeller::tell(const Heard& heard)
{
    table_.add(heard);
    const LogTime time = logTime(heard.at);
    if (heard.isUnanswered)
        note(time, "no answer was heard");
    const Direction direction = directionOf(heard.as);
    const std::string text = heardText(heard, areas_);
    write({time, direction, heard.bytes, direction == Direction::stray ? heardReason(heard) : text},
          text);
    if (form_ == HeardForm::json) {
        Json json = {{"time", logTimeText(time)},
                     {"as", keyOf(heard.as)},
                     {"bytes", hexText(heard.bytes)},
                     {"text", text}};
        if (heard.isUnanswered)
            json["beforeUnanswered"] = true;
        std::printf("%s\n", json.dump().c_str());
    }
    std::fflush(stdout);
}

void HeardTeller::tellPort(bool open, const std::string& message)
{
    if (port_.empty())
        sayWhere();
    note(logTime(Clock::now()), message);
    port_ = message;
    if (form_ == HeardForm::json)
        std::printf("%s\n", Json{{"portIsOpen", open}, {"message", message}}.dump().c_str());
    std::fflush(stdout);
    if (open && wasLost_ && !screen_)
        std::fprintf(stderr, "dov417: %s again\n", message.c_str());
    if (!open && !screen_)
        std::fprintf(stderr, "dov417: %s; waiting for it\n", message.c_str());
    wasLost_ = !open;
}

void HeardTeller::draw()
{
    screen_->draw(heardLines(table_, areas_, settings_.stationNames), {},
                  {port_ + "; Ctrl-C ends"});
}

bool HeardTeller::finish()
{
    redraw_.stop();
    screen_.reset();
    if (form_ == HeardForm::json) {
        std::printf(
            "%s\n",
            Json{{"heard", tableJson(table_, areas_, settings_.stationNames)}}.dump().c_str());
    } else if (table_.frames() > 0) {
        for (const std::string& line : heardLines(table_, areas_, settings_.stationNames))
            std::printf("%s\n", line.c_str());
    }
    if (table_.frames() == 0 && table_.noise() == 0)
        std::fprintf(stderr, "dov417: nothing was heard\n");
    else if (table_.frames() == 0)
        std::fprintf(stderr,
                     "dov417: %lld bytes came, but no frame; looks like another speed or "
                     "parity\n",
                     table_.noise());
    if (log_.hasFailed())
        std::fprintf(stderr, "dov417: the log %s could not be written\n", logName_.c_str());
    return table_.frames() > 0 && !log_.hasFailed();
}

} // namespace dov417
