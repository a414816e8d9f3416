#include "tool/statistics_json.h"

#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

namespace dov417 {

namespace {

using namespace nlohmann::literals; // a path in JSON

TEST(StatisticsForPrograms, AreOneObjectInOneLine)
{
    LinkStatistics statistics;
    RequestCounters& counters = statistics.of("read  1#R_W10(5)");
    counters.sent = 10;
    counters.notSent = 4;
    counters.good = 5;
    counters.badFor(Reason::noFrame) = 3;
    counters.badFor(Reason::exception) = 2;
    counters.exceptions[2] = 2;
    counters.givenUp = "bad CRC";
    statistics.strays.at(static_cast<std::size_t>(StrayKind::echo)) = 4;
    statistics.stations.push_back({3, Micros(3200), Micros(612000), Micros(918000)});
    const std::string text =
        statisticsJson(statistics, statistics.started + std::chrono::seconds(4));
    EXPECT_EQ(text.find('\n'), std::string::npos);
    const nlohmann::json json = nlohmann::json::parse(text).at("statistics");
    EXPECT_EQ(json.at("seconds"), 4.0);
    EXPECT_EQ(json.at("notReplies"), nlohmann::json({{"echo", 4}}));
    EXPECT_EQ(json.at("stations"), nlohmann::json::parse(R"([{"station": 3, "answersAfter": 3.2,
        "slowest": 612.0, "timeout": 918.0}])"));
    statistics.stationNames = {{3, "press"}};
    const std::string named = statisticsJson(statistics, statistics.started);
    EXPECT_EQ(nlohmann::json::parse(named).at("statistics").at("stations").at(0).at("name"),
              "press");
    EXPECT_EQ(json.at("requests").at("read  1#R_W10(5)"), nlohmann::json::parse(R"({
        "sent": 10, "notSent": 4, "good": 5, "bad": {"noFrame": 3, "exception": 2}, "exceptions": {"2": 2},
        "retries": 0, "abandoned": 0, "forgotten": 0, "parts": 0,
        "givenUp": "bad CRC"
})"));
    EXPECT_EQ(json.at("all").at("bad"), nlohmann::json({{"noFrame", 3}, {"exception", 2}}));
}

// Whoever reads them has them from there.
TEST(StatisticsForPrograms, HaveTheKeysOfTheSchema)
{
    std::ifstream file(DOV417_JSON_SCHEMA);
    const nlohmann::json schema = nlohmann::json::parse(file).at("$defs");
    std::set<std::string> reasons;
    for (int i = 0; i < reasonCount; ++i)
        if (static_cast<Reason>(i) != Reason::none)
            reasons.insert(keyOf(static_cast<Reason>(i)));
    EXPECT_EQ(schema.at("why").at("enum").get<std::set<std::string>>(), reasons);
    EXPECT_EQ(schema.at("/count/properties/bad/propertyNames/$ref"_json_pointer), "#/$defs/why");
    std::set<std::string> strays;
    for (std::size_t i = 0; i < strayKinds; ++i)
        strays.insert(keyOf(static_cast<StrayKind>(i)));
    EXPECT_EQ(
        schema
            .at("/statistics/properties/statistics/properties/notReplies/propertyNames/enum"_json_pointer)
            .get<std::set<std::string>>(),
        strays);
}

} // namespace

} // namespace dov417
