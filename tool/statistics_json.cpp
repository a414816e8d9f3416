#include "tool/statistics_json.h"

#include <nlohmann/json.hpp>

namespace dov417 {

namespace {

using Json = nlohmann::ordered_json;

double milliseconds(Micros duration)
{
    return static_cast<double>(duration.count()) / 1000.0;
}

Json toJson(const RequestCounters& counters)
{
    Json bad = Json::object();
    for (int i = 0; i < reasonCount; ++i) {
        const Reason reason = static_cast<Reason>(i);
        if (counters.badFor(reason) > 0)
            bad[keyOf(reason)] = counters.badFor(reason);
    }
    Json exceptions = Json::object();
    for (const auto& [code, times] : counters.exceptions)
        exceptions[std::to_string(code)] = times;
    Json json = {{"sent", counters.sent},           {"notSent", counters.notSent},
                 {"good", counters.good},           {"bad", bad},
                 {"exceptions", exceptions},        {"retries", counters.retries},
                 {"abandoned", counters.abandoned}, {"forgotten", counters.forgotten},
                 {"parts", counters.parts}};
    if (!counters.givenUp.empty())
        json["givenUp"] = counters.givenUp;
    if (counters.notAsked > 0)
        json["notAsked"] = counters.notAsked;
    if (!counters.whyNotAsked.empty())
        json["whyNotAsked"] = counters.whyNotAsked;
    return json;
}

} // namespace

std::string statisticsJson(const LinkStatistics& statistics, Clock::time_point now)
{
    Json stations = Json::array();
    for (const StationTime& each : statistics.stations) {
        Json station = {{"station", each.station}};
        const std::string name = nameOf(each.station, statistics.stationNames);
        if (!name.empty())
            station["name"] = name;
        station["answersAfter"] = milliseconds(each.last);
        station["slowest"] = milliseconds(each.slowest);
        station["timeout"] = milliseconds(each.timeout);
        stations.push_back(station);
    }
    Json requests = Json::object();
    for (const std::string& request : statistics.order)
        requests[request] = toJson(statistics.requests.at(request));
    Json strays = Json::object();
    for (std::size_t kind = 0; kind < statistics.strays.size(); ++kind)
        if (statistics.strays.at(kind) > 0)
            strays[keyOf(static_cast<StrayKind>(kind))] = statistics.strays.at(kind);
    const Json all = {{"seconds", std::chrono::duration<double>(now - statistics.started).count()},
                      {"portIsOpen", statistics.portIsOpen},
                      {"linkIsGood", statistics.linkIsGood},
                      {"portLosses", statistics.portLosses},
                      {"markers", statistics.markers},
                      {"cycles",
                       {{"count", statistics.cycles.count()},
                        {"min", milliseconds(statistics.cycles.minimum())},
                        {"median", milliseconds(statistics.cycles.median())},
                        {"max", milliseconds(statistics.cycles.maximum())}}},
                      {"notReplies", strays},
                      {"stations", stations},
                      {"all", toJson(statistics.total())},
                      {"requests", requests}};
    return Json{{"statistics", all}}.dump();
}

} // namespace dov417
