#include "link/station_timeout.h"

#include <gtest/gtest.h>

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TimeoutSettings settings()
{
    return {milliseconds(500), seconds(15), false};
}

TEST(AStationsTimeout, IsTheInitialOneForAQuickStation)
{
    StationTimeout timeout;
    EXPECT_EQ(timeout.value(settings()), milliseconds(500));
    timeout.answered(milliseconds(3), settings());
    EXPECT_EQ(timeout.value(settings()), milliseconds(500));
}

TEST(AStationsTimeout, FallsToTheLeastThatIsGiven)
{
    TimeoutSettings low = settings();
    low.min = milliseconds(20);
    StationTimeout timeout;
    EXPECT_EQ(timeout.value(low), milliseconds(500)) << "nothing is known yet";
    timeout.answered(milliseconds(3), low);
    EXPECT_EQ(timeout.value(low), milliseconds(20));
    timeout.answered(milliseconds(40), low);
    EXPECT_EQ(timeout.value(low), milliseconds(60)) << "half as long again";
}

TEST(AStationsTimeout, GrowsToTheMostThatIsGiven)
{
    StationTimeout timeout;
    timeout.answered(seconds(40), settings());
    EXPECT_EQ(timeout.value(settings()), seconds(15));
}

// One that is switched off costs the others no more than one that is quick.
TEST(AStationsTimeout, GrowsThreeTimesInVain)
{
    StationTimeout timeout;
    timeout.answered(milliseconds(3), settings());
    for (int round = 0; round < 2; ++round) {
        for (const seconds grown : {seconds(1), seconds(2), seconds(4)}) {
            timeout.passed(settings());
            EXPECT_EQ(timeout.value(settings()), grown);
            EXPECT_FALSE(timeout.hasGrownInVain());
        }
        timeout.passed(settings());
        EXPECT_EQ(timeout.value(settings()), milliseconds(500));
        EXPECT_TRUE(timeout.hasGrownInVain());
        timeout.answered(milliseconds(3), settings());
    }
}

TEST(AStationsTimeout, StaysWhatItIsIfFixed)
{
    TimeoutSettings fixed = settings();
    fixed.isFixed = true;
    StationTimeout timeout;
    timeout.answered(milliseconds(900), fixed);
    EXPECT_EQ(timeout.value(fixed), milliseconds(500));
}

TEST(AStationsTimeout, TellsWhatTheStationTook)
{
    StationTimeout timeout;
    EXPECT_FALSE(timeout.hasAnswered());
    timeout.answered(milliseconds(800), settings());
    timeout.answered(milliseconds(3), settings());
    EXPECT_TRUE(timeout.hasAnswered());
    const StationTime time = timeout.time(7, settings());
    EXPECT_EQ(time.station, 7);
    EXPECT_EQ(time.last, milliseconds(3));
    EXPECT_EQ(time.slowest, milliseconds(800));
    EXPECT_EQ(time.timeout, milliseconds(1125)) << "a sixteenth less than 1.2 s";
}

TEST(AStationsTimeout, IsThePatienceAtTheEndUntilTheStationHasAnswered)
{
    TimeoutSettings fixed = settings();
    fixed.isFixed = true;
    StationTimeout timeout;
    EXPECT_EQ(timeout.patience(fixed), milliseconds(500));
    timeout.answered(milliseconds(1), fixed);
    EXPECT_EQ(timeout.patience(fixed), milliseconds(100)) << "a busy machine hears later";
    timeout.answered(milliseconds(600), fixed);
    EXPECT_EQ(timeout.patience(fixed), milliseconds(900)) << "however it is waited for else";
}

} // namespace

} // namespace dov417
