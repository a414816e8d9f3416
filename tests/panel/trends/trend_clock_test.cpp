// Times of day where the computer has slept, or its clock was set.
#include "panel/trends/trend_clock.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

class TheClockOfTrends : public testing::Test {
protected:
    TheClockOfTrends()
    {
        goTo(0, noon);
        clock.emplace();
    }
    ~TheClockOfTrends() override
    {
        letPanelTimeRun();
    }
    // So many seconds after the beginning, as the clock that never jumps counts them.
    static Clock::time_point after(int secondsLater)
    {
        return Clock::time_point(std::chrono::hours(5) + std::chrono::seconds(secondsLater));
    }
    static TrendTime at(int secondsLater)
    {
        return toTrendTime(after(secondsLater));
    }
    static void goTo(int secondsLater, const QDateTime& timeOfDay)
    {
        setPanelTime(after(secondsLater), timeOfDay);
    }
    std::string text(int secondsLater) const
    {
        return clock->text(at(secondsLater)).toStdString();
    }

    const QDateTime noon = QDateTime::fromString("2026-02-03T12:00:00", Qt::ISODate);
    std::optional<TrendClock> clock;
};

TEST_F(TheClockOfTrends, LetsEachMomentKeepTheTimeThatWasShownAtIt)
{
    goTo(60, noon.addSecs(60 + 8 * 3600)); // it slept
    EXPECT_EQ(clock->moved(), 8 * 3600 * trendSecond);
    EXPECT_EQ(clock->moved(), 0);
    EXPECT_EQ(text(59), "12:00:59.000");
    EXPECT_EQ(text(61), "20:01:01.000");
    goTo(120, noon.addSecs(120)); // and was set back
    EXPECT_EQ(clock->moved(), -8 * 3600 * trendSecond);
    EXPECT_EQ(text(59), "12:00:59.000");
    EXPECT_EQ(text(61), "20:01:01.000");
    EXPECT_EQ(text(121), "12:02:01.000");
}

TEST_F(TheClockOfTrends, IsNotMovedWhereItIsKeptRight)
{
    goTo(60, noon.addMSecs(61900));
    EXPECT_EQ(clock->moved(), 0);
    EXPECT_EQ(text(61), "12:01:01.000");
}

TEST_F(TheClockOfTrends, HasAnAxisWithoutHoles)
{
    goTo(60, noon.addSecs(60 + 8 * 3600));
    clock->moved();
    EXPECT_EQ(clock->toAxis(at(61)) - clock->toAxis(at(59)), 2000);
    EXPECT_EQ(clock->fromAxis(clock->toAxis(at(59))), at(59));
    EXPECT_EQ(clock->toAxis(at(61)),
              static_cast<double>(noon.addSecs(61 + 8 * 3600).toMSecsSinceEpoch()));
    EXPECT_TRUE(clock->isAsOnAxis(at(61)));
    EXPECT_FALSE(clock->isAsOnAxis(at(59)));
}

TEST_F(TheClockOfTrends, FindsTheMomentAtWhichATimeWasShown)
{
    const auto moment = [this](int secondsLater) {
        return clock->momentOf(noon.addSecs(secondsLater).toMSecsSinceEpoch());
    };
    EXPECT_EQ(moment(-3600), at(-3600)) << "of an earlier session";
    EXPECT_EQ(moment(3600), at(3600)) << "still to come";
    goTo(60, noon.addSecs(60 + 8 * 3600));
    clock->moved();
    goTo(90, noon.addSecs(90 + 8 * 3600));
    EXPECT_EQ(moment(59), at(59));
    EXPECT_EQ(moment(70 + 8 * 3600), at(70));
    EXPECT_EQ(moment(4 * 3600), at(60)) << "never shown";
    EXPECT_EQ(moment(9 * 3600), at(3600)) << "still to come";
    goTo(120, noon.addSecs(30)); // 12:00:30 comes twice
    clock->moved();
    goTo(130, noon.addSecs(40));
    EXPECT_EQ(moment(35), at(125));
    EXPECT_EQ(moment(50), at(50)) << "not yet again";
    EXPECT_EQ(moment(80 + 8 * 3600), at(80));
}

} // namespace

} // namespace dov417
