#include "panel/health/line_advice.h"

#include <gmock/gmock.h>

#include "line/crc16.h"
#include "panel/desk/recent_statistics.h"

namespace dov417 {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

const char* const serial = "38400,8,EVEN,1";

// What happened to a request, so many times.
struct Happened {
    int station;
    const char* request;
    Reason why; // none: it was answered
    int times = 10;
    int exception = 2; // of that reason
};

Transmission transmissionOf(const Happened& happened)
{
    Transmission frame;
    frame.number = 1;
    frame.request.station = happened.station;
    frame.description = happened.request;
    frame.sent = withCrc(QByteArray::fromHex("010305640001"));
    frame.why = happened.why;
    frame.verdict = happened.why == Reason::none ? replyAccepted : replyBad;
    if (happened.why == Reason::exception) {
        frame.reception.result = LineResult::exception;
        frame.reception.bytes =
            withCrc(QByteArray("\x01\x83", 2).append(static_cast<char>(happened.exception)));
    }
    return frame;
}

LinkStatistics statisticsOf(const std::vector<Happened>& all,
                            const std::vector<std::pair<StrayKind, int>>& strays = {})
{
    LinkStatistics statistics;
    for (const Happened& each : all)
        for (int i = 0; i < each.times; ++i)
            statistics.add(transmissionOf(each));
    for (const auto& [kind, times] : strays)
        for (int i = 0; i < times; ++i) {
            Stray stray;
            stray.kind = kind;
            statistics.add(stray);
        }
    return statistics;
}

struct AdviceCase {
    const char* name;
    std::vector<Happened> happened;
    std::vector<std::pair<StrayKind, int>> strays;
    const char* wire;
    AdviceKind kind;
    const char* sentence;
};

class Advice : public testing::TestWithParam<AdviceCase> {};

TEST_P(Advice, IsGivenWhereThePatternIsKnown)
{
    const AdviceCase& each = GetParam();
    const std::vector<LineAdvice> advice =
        adviceOn(statisticsOf(each.happened, each.strays), each.wire);
    ASSERT_EQ(advice.size(), 1U);
    EXPECT_EQ(advice.front().kind, each.kind);
    EXPECT_THAT(advice.front().text.toStdString(), HasSubstr(each.sentence));
}

const AdviceCase adviceCases[] = {
    {"noByteEver",
     {{1, "1#R_W0(1)", Reason::silence}},
     {},
     serial,
     AdviceKind::noByte,
     "No byte comes. Is it the right port"},
    {"noByteOverANetwork",
     {{1, "1#R_W0(1)", Reason::silence}},
     {},
     "",
     AdviceKind::noByte,
     "The connection is there, but no byte comes."},
    {"badCrcOnEveryReply",
     {{1, "1#R_W0(1)", Reason::badCrc}, {1, "1#T5(1)", Reason::silence, 3}},
     {},
     serial,
     AdviceKind::noFrame,
     "another speed or parity? This line is set to 38400,8,EVEN,1."},
    {"bytesAndNoFrame",
     {{1, "1#R_W0(1)", Reason::noFrame}},
     {{StrayKind::noise, 20}},
     serial,
     AdviceKind::noFrame,
     "another speed or parity?"},
    {"garbledBehindAGateway",
     {{1, "1#R_W0(1)", Reason::badCrc}},
     {},
     "",
     AdviceKind::noFrame,
     "what is behind this network port"},
    {"lateReplies",
     {{1, "1#R_W0(1)", Reason::none}, {2, "2#R_W0(1)", Reason::silence}},
     {{StrayKind::late, 9}},
     serial,
     AdviceKind::late,
     "Replies come after the time-out: raise it."},
    {"lateRepliesAmidOthers",
     {{1, "1#R_W0(1)", Reason::late}},
     {},
     serial,
     AdviceKind::late,
     "raise it"},
    {"oneStationSilent",
     {{1, "1#R_W0(1)", Reason::none},
      {2, "2#R_W0(1)", Reason::none},
      {3, "3#R_W0(1)", Reason::silence}},
     {},
     serial,
     AdviceKind::silentOnes,
     "Only station 3 is silent."},
    {"twoStationsSilent",
     {{1, "1#R_W0(1)", Reason::none},
      {5, "5#R_W0(1)", Reason::silence},
      {3, "3#R_W0(1)", Reason::silence}},
     {},
     serial,
     AdviceKind::silentOnes,
     "Stations 3, 5 are silent; the others answer."},
    {"oneRequestSilent",
     {{1, "1#R_W0(1)", Reason::none}, {1, "1#R_W9000(5)", Reason::silence}},
     {},
     serial,
     AdviceKind::silentRequest,
     "Station 1 answers others, but not read 1/R_W:9000..9004"},
    {"wrongAddress",
     {{1, "1#R_W0(1)", Reason::none}, {1, "1#R_W9000(5)", Reason::exception}},
     {},
     serial,
     AdviceKind::address,
     "read 1/R_W:9000..9004 is refused with exception 2 (illegal data address). Wrong addresses"},
    {"tooManyAtOnce",
     {{1, "1#R_W0(128)", Reason::exception, 10, 3}, {1, "1#R_W200(128)", Reason::exception, 10, 3}},
     {},
     serial,
     AdviceKind::address,
     "exception 3 (illegal data value). So are 1 more."},
    {"deviceFails",
     {{1, "1#R_W0(1)", Reason::exception, 10, 6}},
     {},
     serial,
     AdviceKind::device,
     "exception 6 (server device busy). The controller, or the gateway"},
    {"noise",
     {{1, "1#R_W0(1)", Reason::none, 90}, {1, "1#R_W0(1)", Reason::badCrc, 10}},
     {},
     serial,
     AdviceKind::badCrc,
     "10 of 100 replies have a bad CRC: noise on the cable?"},
    {"twoOfOneNumber",
     {{1, "1#R_W0(1)", Reason::none}, {2, "2#R_W0(1)", Reason::badCrc}},
     {},
     serial,
     AdviceKind::badCrc,
     "Every reply of station 2 has a bad CRC; others are sound."},
    {"cutShort",
     {{1, "1#R_W0(1)", Reason::none}, {1, "1#R_W0(60)", Reason::cutShort}},
     {},
     serial,
     AdviceKind::cutShort,
     "A longer reply gap"},
    {"anotherMaster",
     {{1, "1#R_W0(1)", Reason::none}},
     {{StrayKind::otherStation, 8}},
     serial,
     AdviceKind::otherStation,
     "a second master on the line"},
    {"twice",
     {{1, "1#R_W0(1)", Reason::none}},
     {{StrayKind::surplus, 1}},
     serial,
     AdviceKind::twice,
     "as from a radio modem"},
    {"strayBytes",
     {{1, "1#R_W0(1)", Reason::none}},
     {{StrayKind::noise, 10}},
     serial,
     AdviceKind::strayBytes,
     "Bytes come that belong to no reply."},
    {"moreThanAskedFor",
     {{1, "1#R_W0(1)", Reason::none}},
     {{StrayKind::late, 10}},
     serial,
     AdviceKind::strayBytes,
     "Bytes come that belong to no reply."},
    {"echo",
     {{1, "1#R_W0(1)", Reason::none}},
     {{StrayKind::echo, 10}},
     serial,
     AdviceKind::echo,
     "longer than asked for: the adapter sends back what it is sent"},
};

INSTANTIATE_TEST_SUITE_P(Of, Advice, testing::ValuesIn(adviceCases),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(NoAdvice, IsGivenOnALineWithoutAPattern)
{
    const struct {
        const char* name;
        std::vector<Happened> happened;
        std::vector<std::pair<StrayKind, int>> strays;
    } good[] = {
        {"nothing yet", {}, {}},
        {"all good", {{1, "1#R_W0(1)", Reason::none, 1000}, {2, "2#T0(1)", Reason::none}}, {}},
        {"a first time-out", {{1, "1#R_W0(1)", Reason::silence, 1}}, {}},
        {"one lost reply in a thousand",
         {{1, "1#R_W0(1)", Reason::none, 1000}, {1, "1#R_W0(1)", Reason::silence, 1}},
         {}},
        {"a bad CRC now and then",
         {{1, "1#R_W0(1)", Reason::none, 5000}, {1, "1#R_W0(1)", Reason::badCrc, 5}},
         {}},
        {"time-outs here and there, replies otherwise",
         {{1, "1#R_W0(1)", Reason::none, 100}, {1, "1#R_W0(1)", Reason::silence, 20}},
         {}},
        {"a few late bytes", {{1, "1#R_W0(1)", Reason::none}}, {{StrayKind::late, 2}}},
        {"one exception, of a write", {{1, "1#R_W0(1)", Reason::exception, 1}}, {}},
        {"an exception now and then",
         {{1, "1#R_W0(1)", Reason::none, 100}, {1, "1#R_W0(1)", Reason::exception, 10}},
         {}},
        {"a broadcast", {{0, "0#R_W0(1)", Reason::broadcast, 20}}, {}},
    };
    for (const auto& each : good)
        for (const char* const wire : {serial, ""})
            EXPECT_THAT(adviceOn(statisticsOf(each.happened, each.strays), wire), IsEmpty())
                << each.name;
}

TEST(Advice, NamesEachThingThatIsWrong)
{
    LinkStatistics statistics =
        statisticsOf({{1, "1#R_W0(1)", Reason::none}, {2, "2#R_W0(1)", Reason::silence}},
                     {{StrayKind::echo, 9}});
    statistics.portLosses = 3;
    std::vector<AdviceKind> kinds;
    for (const LineAdvice& each : adviceOn(statistics, serial))
        kinds.push_back(each.kind);
    EXPECT_THAT(kinds, testing::ElementsAre(AdviceKind::portLost, AdviceKind::silentOnes,
                                            AdviceKind::echo));
}

TEST(Advice, TakesAStationForSilentThatIsNotEvenAskedAnyMore)
{
    LinkStatistics statistics = statisticsOf({{1, "1#R_W0(1)", Reason::none}});
    Transmission local = transmissionOf({2, "2#R_W0(1)", Reason::silence});
    local.isLocal = true;
    for (int i = 0; i < 10; ++i)
        statistics.add(local);
    ASSERT_EQ(adviceOn(statistics, serial).size(), 1U);
    EXPECT_EQ(adviceOn(statistics, serial).front().kind, AdviceKind::silentOnes);
}

TEST(Advice, NamesTheSlowestStation)
{
    LinkStatistics statistics = statisticsOf({{2, "2#R_W0(1)", Reason::late}});
    statistics.stations = {{1, Micros(3000), Micros(5000), Micros(500000)},
                           {2, Micros(600000), Micros(812000), Micros(500000)}};
    EXPECT_THAT(adviceOn(statistics, serial).front().text.toStdString(),
                HasSubstr("Station 2 took 812 ms."));
}

TEST(RecentCounters, AreThoseOfTheLastMinute)
{
    RecentStatistics recent;
    EXPECT_EQ(recent.recent().total().sent, 0);
    LinkStatistics counted =
        statisticsOf({{1, "1#R_W0(1)", Reason::silence, 50}}, {{StrayKind::noise, 7}});
    counted.portLosses = 2;
    const auto add = [&]() { recent.add(std::make_shared<const LinkStatistics>(counted)); };
    add();
    EXPECT_EQ(recent.recent().total().sent, 50);
    EXPECT_EQ(recent.recent().portLosses, 2);
    for (std::size_t i = 0; i < RecentStatistics::kept; ++i) {
        counted.add(transmissionOf({1, "1#R_W0(1)", Reason::none}));
        counted.add(transmissionOf({1, "1#R_W9(1)", Reason::exception}));
        add();
    }
    const LinkStatistics last = recent.recent();
    const int added = static_cast<int>(RecentStatistics::kept) - 1;
    EXPECT_EQ(last.total().good, added);
    EXPECT_EQ(last.total().badFor(Reason::silence), 0);
    EXPECT_EQ(last.requests.at("read  1#R_W9(1)").exceptions.at(2), added);
    EXPECT_EQ(last.strays.at(static_cast<std::size_t>(StrayKind::noise)), 0);
    EXPECT_EQ(last.portLosses, 0);
    recent.clear();
    EXPECT_EQ(recent.recent().total().sent, 0);
}

} // namespace

} // namespace dov417
