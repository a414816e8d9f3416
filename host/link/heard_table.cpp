#include "link/heard_table.h"

#include <algorithm>
#include <cstdio>

#include "line/frame_bytes.h"
#include "line/frame_text.h"

namespace dov417 {

namespace {

constexpr std::size_t maxRows = 1000; // a master that goes through all addresses fills no memory
constexpr int quantityEnd = 6;

struct Named {
    int function;
    bool hasCount; // else it is about one
    bool isOfArea; // coils or registers of the controller's areas
    const char* unit;
};
constexpr Named addressed[] = {
    {1, true, true, "coil"},       {2, true, false, "input"},
    {3, true, true, "register"},   {4, true, false, "input register"},
    {5, false, true, "coil"},      {6, false, true, "register"},
    {15, true, true, "coil"},      {16, true, true, "register"},
    {22, false, true, "register"}, {23, true, true, "register"},
};

const Named* named(int function)
{
    for (const Named& each : addressed)
        if (each.function == function)
            return &each;
    return nullptr;
}

std::string times(const Durations& durations)
{
    if (durations.count() == 0)
        return "-";
    char text[80];
    const auto milliseconds = [](Micros time) { return static_cast<double>(time.count()) / 1000; };
    std::snprintf(text, sizeof text, "%.1f / %.1f / %.1f", milliseconds(durations.minimum()),
                  milliseconds(durations.median()), milliseconds(durations.maximum()));
    return text;
}

constexpr std::size_t stationWidth = 7; // without a name

// "17", "17 oven"
std::string stationCell(const HeardRow& row, const StationNames& names)
{
    const std::string number = row.station == 0 ? "all" : std::to_string(row.station);
    const std::string name = nameOf(row.station, names);
    return name.empty() ? number : number + " " + name;
}

// In UTF-8.
std::size_t charactersOf(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    }));
}

std::string padded(std::string text, std::size_t width)
{
    text.append(width - std::min(width, charactersOf(text)), ' ');
    return text;
}

// Behind the station.
std::string line(const char* function, const char* addresses, const std::string& asked,
                 const std::string& answered, const std::string& refused, const std::string& silent,
                 const std::string& cycle, const std::string& answer)
{
    char text[256];
    std::snprintf(text, sizeof text, "  %-20s  %-22s %7s %8s %7s %6s  %-25s  %s", function,
                  addresses, asked.c_str(), answered.c_str(), refused.c_str(), silent.c_str(),
                  cycle.c_str(), answer.c_str());
    return text;
}

} // namespace

HeardRow* HeardTable::rowOf(const QByteArray& request)
{
    HeardRow row;
    row.station = byteAt(request, 0);
    row.function = byteAt(request, 1);
    const Named* const known = named(row.function);
    if (known && request.size() >= quantityEnd) {
        row.first = wordAt(request, addressIndex);
        row.count = known->hasCount ? wordAt(request, quantityIndex) : 1;
    }
    const Key key(row.station, row.function, row.first, row.count);
    if (rows_.size() >= maxRows && rows_.count(key) == 0)
        return nullptr;
    return &rows_.emplace(key, row).first->second;
}

void HeardTable::add(const Heard& heard)
{
    if (heard.as == HeardAs::noise) {
        noise_ += heard.bytes.size();
        return;
    }
    ++frames_;
    if (heard.as == HeardAs::unclear || heard.as == HeardAs::unasked) {
        ++unclear_;
        return;
    }
    HeardRow* const row = rowOf(heard.as == HeardAs::reply ? heard.request : heard.bytes);
    if (!row) {
        others_ += heard.as == HeardAs::request ? 1 : 0;
        last_.reset();
        return;
    }
    const Key key(row->station, row->function, row->first, row->count);
    switch (heard.as) {
    case HeardAs::request:
        if (heard.isUnanswered && last_)
            ++rows_.at(*last_).silent;
        if (row->asked > 0 && !(heard.isUnanswered && last_ == key))
            row->cycle.add(std::chrono::duration_cast<Micros>(heard.at - row->last));
        ++row->asked;
        row->last = heard.at;
        last_ = key;
        break;
    case HeardAs::alike:
        ++row->alike;
        break;
    case HeardAs::reply:
        ++row->answered;
        row->refused += (byteAt(heard.bytes, 1) & exceptionFlag) != 0 ? 1 : 0;
        row->answer.add(heard.after);
        break;
    case HeardAs::unclear:
    case HeardAs::unasked:
    case HeardAs::noise:
        break;
    }
}

std::vector<HeardRow> HeardTable::rows() const
{
    std::vector<HeardRow> all;
    all.reserve(rows_.size());
    for (const auto& [key, row] : rows_)
        all.push_back(row);
    return all;
}

long long HeardTable::noise() const
{
    return noise_;
}

long long HeardTable::unclear() const
{
    return unclear_;
}

long long HeardTable::frames() const
{
    return frames_;
}

long long HeardTable::others() const
{
    return others_;
}

std::string heardAddresses(const HeardRow& row, const std::vector<Area>& areas)
{
    const Named* const known = named(row.function);
    if (!known || row.first < 0)
        return "-";
    const bool coils = known->unit == std::string("coil");
    std::string place =
        known->isOfArea ? areaText(areas, coils, row.first, row.count) : std::string();
    if (!place.empty())
        return place;
    const std::string first = std::to_string(row.first);
    return row.count == 1 ? std::string(known->unit) + " " + first
                          : std::string(known->unit) + "s " + first + ".." +
                                std::to_string(row.first + row.count - 1);
}

std::vector<std::string> heardLines(const HeardTable& table, const std::vector<Area>& areas,
                                    const StationNames& names)
{
    const std::vector<HeardRow> rows = table.rows();
    std::size_t width = stationWidth;
    for (const HeardRow& row : rows)
        width = std::max(width, charactersOf(stationCell(row, names)));
    std::vector<std::string> lines;
    lines.push_back(padded("station", width) + line("function", "addresses", "asked", "answered",
                                                    "refused", "silent", "cycle ms min/median/max",
                                                    "answers after ms"));
    long long alike = 0;
    for (const HeardRow& row : rows) {
        alike += row.alike;
        lines.push_back(padded(stationCell(row, names), width) +
                        line(functionName(row.function).c_str(), heardAddresses(row, areas).c_str(),
                             std::to_string(row.asked), std::to_string(row.answered),
                             std::to_string(row.refused), std::to_string(row.silent),
                             times(row.cycle), times(row.answer)));
    }
    const auto say = [&lines](long long count, const std::string& what) {
        if (count > 0)
            lines.push_back(std::to_string(count) + " " + what);
    };
    say(table.others(), "requests to further addresses");
    say(alike, "frames that repeat a request or answer it: the two look alike");
    say(table.unclear(), "replies whose request is not clear");
    say(table.noise(), "bytes that are no frame");
    return lines;
}

} // namespace dov417
