#include "session/planning.h"

#include <algorithm>
#include <random>

#include "line/frame_text.h"
#include "loaded_library.h"

namespace dov417 {

namespace {

using std::chrono::microseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Planning : public LoadedLibrary {
protected:
    Planner planner(const std::vector<const char*>& texts)
    {
        std::vector<Address> addresses;
        for (const char* text : texts)
            addresses.push_back(parseAddress(library, text));
        return Planner(library, addresses, SerialFormat(), microseconds(0));
    }
};

// "1/R_W:10+5"
std::vector<std::string> summary(const Plan& plan)
{
    std::vector<std::string> texts;
    for (const PlannedRequest& request : plan.requests)
        texts.push_back(std::to_string(request.station) + "/" + request.regName + ":" +
                        std::to_string(request.address) + "+" + std::to_string(request.length));
    return texts;
}

std::vector<std::string> summary(const std::vector<Stretch>& stretches)
{
    std::vector<std::string> texts;
    for (const Stretch& stretch : stretches)
        texts.push_back(std::to_string(stretch.station) + "/" + stretch.regName + ":" +
                        std::to_string(stretch.first) + "+" + std::to_string(stretch.count));
    return texts;
}

// "0..11:4"
std::vector<std::string> summary(const std::vector<GapOutcome>& outcomes)
{
    std::vector<std::string> texts;
    for (const GapOutcome& outcome : outcomes)
        texts.push_back(std::to_string(outcome.firstGap) + ".." + std::to_string(outcome.lastGap) +
                        ":" + std::to_string(outcome.requests));
    return texts;
}

TEST_F(Planning, EachRequestCarriesItsBytesAndItsTime)
{
    const Plan plan = planner({"R_W:100..107", "M_bit:1.5", "2/R_D:10..13"}).plan(10);
    EXPECT_THAT(summary(plan), ElementsAre("1/M_W:1+1", "1/R_W:100+8", "2/R_W:10+4"));
    EXPECT_EQ(hexText(plan.requests[0].bytes), "01 01 10 10 00 10 38 C3");
    EXPECT_EQ(hexText(plan.requests[1].bytes), "01 03 05 64 00 08 05 1F");
    EXPECT_EQ(plan.requests[1].replyLength, 21);
    // 8 + 21 characters, two silences.
    EXPECT_EQ(plan.requests[1].time, microseconds(8307 + 3500));
    // 15 + 29 + 21 characters and six silences, each request rounded by itself.
    EXPECT_EQ(plan.cycle, microseconds(7797 + 11807 + 9516));
}

TEST_F(Planning, TheResponseTimeIsPaidOnceARequest)
{
    const Planner slow(library, {parseAddress(library, "R_W:1"), parseAddress(library, "T:1")},
                       SerialFormat(), microseconds(5000));
    EXPECT_EQ(slow.plan(10).cycle, microseconds(2 * (7797 + 5000)));
}

TEST_F(Planning, HolesUpToTheGapAreBridged)
{
    const Planner plans = planner({"R_W:100..107", "R_W:120"});
    EXPECT_THAT(summary(plans.plan(11)), ElementsAre("1/R_W:100+8", "1/R_W:120+1"));
    EXPECT_THAT(summary(plans.plan(12)), ElementsAre("1/R_W:100+21"));
}

TEST_F(Planning, TheDriverIsLeftWithoutAPlan)
{
    planner({"R_W:100..107"}).plan(10);
    EXPECT_EQ(library.driver->readList.size(), 0);
    EXPECT_EQ(library.driver->sendList.size(), 0);
    EXPECT_EQ(library.driver->dataAreas.size(), 0);
}

TEST_F(Planning, IsRefusedWhileSomebodyUsesTheDriver)
{
    const Planner plans = planner({"R_W:100..107"});
    library.driver->mergeGap = 417;
    {
        const DriverClaim claim(library);
        EXPECT_THROW(plans.plan(10), std::logic_error);
        EXPECT_THROW(plans.outcomes(), std::logic_error);
        EXPECT_EQ(library.driver->mergeGap, 417);
    }
    EXPECT_THAT(summary(plans.plan(10)), ElementsAre("1/R_W:100+8"));
}

TEST_F(Planning, RequestsAboveWhatTheProtocolAllowsAreMarked)
{
    const auto above = [this](const char* text) {
        return planner({text}).plan(10).requests.at(0).isAboveLimit();
    };
    EXPECT_FALSE(above("R_W:0..124"));
    EXPECT_TRUE(above("R_W:0..125"));
    EXPECT_FALSE(above("M_W:0..124"));
    EXPECT_TRUE(above("M_W:0..125"));
    EXPECT_EQ(planner({"M_W:0..124"}).plan(10).requests.at(0).coils(), 2000);
}

TEST_F(Planning, ALongRequestGoesOutInParts)
{
    const Planner plans(library, {parseAddress(library, "R_W:0..127")}, SerialFormat(),
                        microseconds(5000), 60);
    const PlannedRequest request = plans.plan(10).requests.at(0);
    ASSERT_EQ(request.parts.size(), 3U);
    EXPECT_EQ(hexText(request.parts.at(1).bytes), "01 03 05 3C 00 3B C4 D9");
    EXPECT_EQ(request.parts.at(1).address, 60);
    EXPECT_EQ(request.parts.at(1).length, 59);
    EXPECT_EQ(request.parts.at(1).replyLength, 123);
    // 8 + 123 characters, two silences, and what the controller takes.
    EXPECT_EQ(request.parts.at(1).time, microseconds(37526 + 3500 + 5000));
    EXPECT_EQ(request.time,
              request.parts.at(0).time + request.parts.at(1).time + request.parts.at(2).time);
    EXPECT_EQ(plans.plan(10).cycle, request.time);
    EXPECT_FALSE(request.isAboveLimit());
    EXPECT_EQ(plans.outcomes().at(0).aboveLimit, 0);
}

TEST_F(Planning, NoPartEndsInsideAValue)
{
    const auto lengths = [this](const std::vector<const char*>& texts, int maximum) {
        std::vector<Address> addresses;
        for (const char* text : texts)
            addresses.push_back(parseAddress(library, text));
        const Planner plans(library, addresses, SerialFormat(), microseconds(0), maximum);
        std::vector<int> all;
        const Plan plan = plans.plan(10);
        for (const PlannedPart& part : plan.requests.at(0).parts)
            all.push_back(part.length);
        return all;
    };
    EXPECT_THAT(lengths({"R_W:0..127"}, 127), ElementsAre(127, 1));
    EXPECT_THAT(lengths({"R_W:0..127"}, 128), IsEmpty());
    EXPECT_THAT(lengths({"R_D:0..127"}, 125), ElementsAre(124, 4));
    EXPECT_THAT(lengths({"R_W:0", "R_D:1..126", "R_W:127"}, 124), ElementsAre(123, 5));
    EXPECT_THAT(lengths({"R_D:0..9", "R_D:1..10"}, 8), IsEmpty()) << "they overlap throughout";
}

TEST_F(Planning, AStationsOwnMaximumWinsOverThatOfAll)
{
    const std::vector<Address> addresses = {parseAddress(library, "1/R_W:0..99"),
                                            parseAddress(library, "2/R_W:0..99")};
    const Planner plans(library, addresses, SerialFormat(), microseconds(0), 60, {{2, noMaximum}});
    const Plan plan = plans.plan(10);
    EXPECT_EQ(plan.requests.at(0).parts.size(), 2u);
    EXPECT_THAT(plan.requests.at(1).parts, IsEmpty());
}

TEST_F(Planning, AnAddressInsideALongOneLeavesTheEndOfTheLongOneUnread)
{
    const Planner plans = planner({"R_W:0..199", "R_W:50"});
    const Plan plan = plans.plan(10);
    EXPECT_THAT(summary(plan), ElementsAre("1/R_W:0+128"));
    EXPECT_THAT(summary(plans.uncovered(plan)), ElementsAre("1/R_W:128+72"));
    EXPECT_EQ(plans.outcomes().at(0).uncoveredWords, 72);
}

TEST_F(Planning, WhatEveryRequestReadsIsNotReported)
{
    const Planner plans = planner({"R_W:0..127", "R_W:128..199", "R_W:50", "R_bit:199.15"});
    EXPECT_THAT(summary(plans.uncovered(plans.plan(10))), IsEmpty());
}

TEST_F(Planning, AnUnreadWordIsCountedOnceHoweverOftenItIsNamed)
{
    const Planner plans = planner({"R_W:0..300", "R_D:1..256"});
    EXPECT_THAT(summary(plans.uncovered(plans.plan(10))),
                ElementsAre("1/R_W:129+172", "1/R_D:129+128"));
    EXPECT_EQ(plans.outcomes().at(0).uncoveredWords, 172);
}

TEST_F(Planning, ValuesReadByTwoRequestsAreFound)
{
    const Planner plans = planner({"R_D:142..301", "R_W:257..261", "R_W:289..420"});
    const Plan plan = plans.plan(10);
    EXPECT_THAT(summary(plan),
                ElementsAre("1/R_W:142+128", "1/R_W:257+32", "1/R_W:289+128", "1/R_W:417+4"));
    EXPECT_THAT(summary(plans.divided(plan)), ElementsAre("1/R_D:288+2"));
}

TEST_F(Planning, EveryGapWithADifferentPlanIsListed)
{
    const auto outcomes = planner({"R_W:0", "R_W:5", "R_W:30", "T:1", "T:3"}).outcomes();
    EXPECT_THAT(summary(outcomes), ElementsAre("0..0:5", "1..3:4", "4..23:3", "24..-1:2"));
    // Holes of 1 and 4 words are worth bridging, one of 24 is not.
    EXPECT_EQ(bestOutcome(outcomes), 2);
}

TEST_F(Planning, TheBestGapIsTheSmallestOfThoseThatAreEquallyFast)
{
    const auto outcomes = planner({"R_W:0", "T:1"}).outcomes();
    EXPECT_THAT(summary(outcomes), ElementsAre("0..-1:2"));
    EXPECT_EQ(bestOutcome(outcomes), 0);
    EXPECT_EQ(bestOutcome({}), -1);
}

TEST_F(Planning, AFastPlanThatLeavesWordsOutIsNotTheBest)
{
    GapOutcome whole = {0, 3, 3, 0, 0, microseconds(300)};
    GapOutcome partial = {4, -1, 2, 0, 5, microseconds(200)};
    EXPECT_EQ(bestOutcome({whole, partial}), 0);
}

// Only gaps that can make a difference are tried; trying them all finds the same.
TEST_F(Planning, NoGapIsMissed)
{
    std::mt19937 random(417);
    const auto between = [&random](int low, int high) {
        return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    };
    for (int round = 0; round < 30; ++round) {
        std::vector<Address> addresses;
        for (int i = between(2, 8); i > 0; --i)
            addresses.push_back({1, "R_W", Width::word, between(0, 400),
                                 between(0, 3) > 0 ? between(1, 12) : between(1, 300)});
        const Planner plans(library, addresses, SerialFormat(), microseconds(0));
        std::vector<int> starts;
        std::vector<std::string> before;
        for (int gap = 0; gap <= 130; ++gap) {
            const auto plan = summary(plans.plan(gap));
            if (gap == 0 || plan != before)
                starts.push_back(gap);
            before = plan;
        }
        std::vector<int> found;
        for (const GapOutcome& outcome : plans.outcomes())
            found.push_back(outcome.firstGap);
        EXPECT_EQ(found, starts) << "round " << round;
    }
}

} // namespace

} // namespace dov417
