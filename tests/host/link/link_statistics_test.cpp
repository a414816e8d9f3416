#include "link/link_statistics.h"

#include <gmock/gmock.h>

namespace dov417 {

namespace {

using std::chrono::seconds;

TEST(Durations, GiveMinimumMedianAndMaximum)
{
    Durations durations;
    for (const int millis : {30, 10, 20, 50, 40})
        durations.add(std::chrono::milliseconds(millis));
    EXPECT_EQ(durations.count(), 5);
    EXPECT_EQ(durations.minimum(), Micros(10000));
    EXPECT_EQ(durations.median(), Micros(30000));
    EXPECT_EQ(durations.maximum(), Micros(50000));
}

TEST(Durations, AreKeptInTenthsOfAMillisecond)
{
    Durations durations;
    for (const int micros : {10049, 10051, 10149, 25000})
        durations.add(Micros(micros));
    EXPECT_EQ(durations.bins(), (std::map<long long, long long>{{100, 1}, {101, 2}, {250, 1}}));
}

TEST(Durations, OfNothingAreZero)
{
    EXPECT_EQ(Durations().count(), 0);
    EXPECT_EQ(Durations().median(), Micros(0));
}

TEST(Statistics, SumUpWhatHappenedToEachRequest)
{
    LinkStatistics statistics;
    RequestCounters& first = statistics.of("read  1#R_W10(5)");
    first.sent = 10;
    first.good = 7;
    first.retries = 2;
    first.exceptions[2] = 3;
    RequestCounters& second = statistics.of("write 1#T5(1)");
    second.sent = 4;
    second.badFor(Reason::silence) = 3;
    second.badFor(Reason::badCrc) = 1;
    second.retries = 2;
    second.abandoned = 1;
    second.good = 1;
    statistics.wireTime = seconds(1);
    const std::string text = fullStatistics(statistics, statistics.started + seconds(4));
    for (const char* const expected :
         {"over 4.0 s",
          "all requests: 14 sent, 8 good, 3 x no byte came, 1 x bad CRC, "
          "3 x exception 2 (illegal data address), 4 retries, 1 given up, 3.5 polls/s",
          "no whole cycle, line 25.0 % used by bytes", "link good",
          "read  1#R_W10(5): 10 sent, 7 good, 3 x exception 2 (illegal data address), 2 retries",
          "write 1#T5(1): 4 sent, 1 good, 3 x no byte came, 1 x bad CRC, 2 retries, 1 given up"})
        EXPECT_NE(text.find(expected), std::string::npos) << expected << "\nin\n" << text;
}

TEST(Statistics, TellWhatWasNotSent)
{
    LinkStatistics statistics;
    Transmission held;
    held.description = "1#R_W10(1)";
    held.verdict = replyBad;
    held.why = Reason::heldBack;
    held.repeats = true;
    statistics.add(held);
    Transmission sent = held;
    sent.number = 5;
    sent.why = Reason::silence;
    statistics.add(sent);
    Transmission inParts = held;
    inParts.frames = 3; // two of them had been answered
    statistics.add(inParts);
    inParts.frames = 1;
    statistics.add(inParts);
    EXPECT_THAT(requestStatistics(statistics),
                ::testing::ElementsAre("write 1#R_W10(1): 2 sent, 0 good, 1 x no byte came, "
                                       "3 x held back, 2 not sent, 2 retries, 4 parts"));
}

TEST(Statistics, TellNoShareOfALineThatIsFasterThanItsSpeed)
{
    LinkStatistics statistics;
    statistics.wireTime = seconds(5);
    EXPECT_EQ(briefStatistics(statistics, statistics.started + seconds(4)).at(1),
              "no whole cycle, bytes come faster than the line's speed");
}

TEST(Statistics, SayWhyARequestWasLastGivenUp)
{
    LinkStatistics statistics;
    statistics.of("write 1#T5(1)").givenUp = "no answer: no byte came";
    EXPECT_EQ(requestStatistics(statistics),
              (std::vector<std::string>{
                  "write 1#T5(1): 0 sent, 0 good; given up last: no answer: no byte came"}));
}

TEST(Statistics, TellTheMinimumMedianAndMaximumOfTheCycles)
{
    LinkStatistics statistics;
    for (const int millis : {30, 10, 20})
        statistics.cycles.add(std::chrono::milliseconds(millis));
    EXPECT_THAT(briefStatistics(statistics, Clock::now()),
                ::testing::Contains(::testing::HasSubstr(
                    "cycle 10.0 ms / 20.0 ms / 30.0 ms (min / median / max)")));
}

TEST(Statistics, EndWithTheStateOfTheLink)
{
    LinkStatistics statistics;
    EXPECT_EQ(briefStatistics(statistics, Clock::now()).back(), "link good");
    statistics.linkIsGood = false;
    EXPECT_EQ(briefStatistics(statistics, Clock::now()).back(), "link FAILED");
    statistics.portIsOpen = false;
    EXPECT_EQ(briefStatistics(statistics, Clock::now()).back(), "port closed");
}

TEST(Statistics, TellWhatEachStationTakesAndIsGiven)
{
    LinkStatistics statistics;
    statistics.stations.push_back({3, Micros(3200), Micros(612000), Micros(918000)});
    statistics.stationNames = {{3, "oven"}};
    const std::string text = fullStatistics(statistics, statistics.started + seconds(1));
    EXPECT_NE(
        text.find(
            "  station 3 (oven): answers after 3.2 ms, 612.0 ms at the slowest; is waited for "
            "918.0 ms\n"),
        std::string::npos)
        << text;
}

TEST(Statistics, NameWhatWasNoReply)
{
    LinkStatistics statistics;
    statistics.strays.at(static_cast<std::size_t>(StrayKind::otherStation)) = 2;
    statistics.strays.at(static_cast<std::size_t>(StrayKind::echo)) = 1;
    const std::string text = fullStatistics(statistics, statistics.started + seconds(1));
    EXPECT_NE(text.find("bytes that were no reply: 2 x another station, 1 x echo of the request"),
              std::string::npos)
        << text;
}

} // namespace

} // namespace dov417
