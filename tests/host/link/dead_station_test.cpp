// Exchange and probes together, on a bus in handed-in time, polled as the driver does it.
#include <algorithm>
#include <gtest/gtest.h>
#include <map>

#include "late_world.h"
#include "line/crc16.h"
#include "link/station_probes.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int maxTries = 3;

class PolledBus {
public:
    PolledBus()
    {
        for (const int station : {1, 2, 3}) {
            world.bus.stations[station].delay = []() { return milliseconds(5); };
            for (const int address : {0x100, 0x200, 0x300})
                cycle.push_back({station, address, 1});
        }
        world.settings.isShared = false;
        world.heard = [this](int station) {
            probes.heard(station, world.now);
            heardAt_[station] = world.now;
        };
    }

    struct Polled {
        int station;
        int address;
        int words;
    };

    void pollCycle()
    {
        for (const Polled& each : cycle)
            poll(each);
        if (world.now == cycleBegan_)
            world.pass(milliseconds(20)); // all of them are silent
        cycleBegan_ = world.now;
    }

    void pollUntil(Clock::time_point end)
    {
        while (world.now < end)
            pollCycle();
    }

    void poll(const Polled& each)
    {
        Transmission request;
        request.sent = withCrc(readRequestOf(each.station, each.address, each.words));
        request.replyLength = 5 + 2 * each.words;
        request.request.station = each.station;
        request.request.length = each.words;
        request.isCyclic = true;
        for (int tries = 1; tries <= maxTries; ++tries) {
            const auto turn = probes.mayGoOut(request.sent, world.now).turn;
            if (turn == StationProbes::Turn::notNow)
                return;
            request.isToSilent = turn == StationProbes::Turn::probe;
            const int framesBefore = world.sent + world.markers;
            const Clock::time_point before = world.now;
            Transmission ended = world.run(request);
            if (request.isToSilent && probes.isDead(each.station) && !isSound(ended.reception)) {
                mostFramesOfAProbe =
                    std::max(mostFramesOfAProbe, world.sent + world.markers - framesBefore);
                longestProbe = std::max<Clock::duration>(longestProbe, world.now - before);
                ++probesInVain;
            }
            ended.verdict = isGood(ended)       ? replyAccepted
                            : tries == maxTries ? replyAbandoned
                                                : replyBad;
            probes.ended(ended, world.now);
            if (isGood(ended)) {
                for (int n = 0; n < each.words; ++n)
                    EXPECT_EQ(wordOf(ended, n), LateBus::ownValue(each.station, each.address + n));
                heardAt_[each.station] = world.now;
                ++good[each.station];
                return;
            }
        }
    }

    // Switches a station off for so long and on again. How long until it is heard?
    Clock::duration offAndOn(int station, Clock::duration off)
    {
        world.bus.stations[station].loses = 1;
        pollUntil(world.now + off);
        EXPECT_TRUE(probes.isDead(station));
        world.bus.stations[station].loses = 0;
        const Clock::time_point on = world.now;
        const int before = probesInVain;
        while (heardAt_[station] < on && world.now < on + seconds(200))
            pollCycle();
        EXPECT_EQ(probesInVain, before) << "the first probe tells";
        return heardAt_[station] < on ? seconds(200) : heardAt_[station] - on;
    }

    LateWorld world{1};
    StationProbes probes;
    std::vector<Polled> cycle;
    std::map<int, int> good;
    int mostFramesOfAProbe = 0;
    int probesInVain = 0;
    Clock::duration longestProbe{0};

private:
    Clock::time_point cycleBegan_{};
    std::map<int, Clock::time_point> heardAt_; // by station
};

TEST(DeadStationOnABus, LeavesTheOthersMoreThanNineteenOfTwentyReplies)
{
    PolledBus alone;
    alone.cycle.erase(alone.cycle.begin() + 3, alone.cycle.begin() + 6);
    alone.world.start();
    PolledBus beside;
    beside.world.bus.stations[2].loses = 1;
    beside.world.start();
    for (PolledBus* const bus : {&alone, &beside}) {
        bus->pollUntil(bus->world.now + seconds(60));
        bus->good.clear();
        bus->pollUntil(bus->world.now + seconds(60));
    }
    EXPECT_GT(beside.good[1], 0.95 * alone.good[1]);
    EXPECT_GT(beside.good[3], 0.95 * alone.good[3]);
}

TEST(DeadStationOnABus, CostsOneFrameAndOneTimeoutAProbe)
{
    for (const bool mayMark : {true, false})
        for (const bool isShared : {true, false}) {
            PolledBus bus;
            bus.world.settings.mayMark = mayMark;
            bus.world.settings.isShared = isShared;
            bus.world.bus.stations[2].loses = 1;
            bus.world.start();
            bus.pollUntil(bus.world.now + seconds(300));
            EXPECT_GE(bus.probesInVain, 10);
            EXPECT_EQ(bus.mostFramesOfAProbe, 1);
            EXPECT_LT(bus.longestProbe, milliseconds(520)) << "it does not grow";
        }
}

// Whatever it says to function 8.
TEST(DeadStationOnABus, IsBackWithAProbeHoweverLongItWasOff)
{
    for (const int diagnostics : {1, 0, -1})
        for (const int maxPause : {30000, 2000, 200})
            for (const bool isShared : {true, false}) {
                SCOPED_TRACE(diagnostics);
                SCOPED_TRACE(maxPause);
                PolledBus bus;
                bus.probes = StationProbes({seconds(1), milliseconds(maxPause)});
                bus.world.settings.isShared = isShared;
                bus.world.bus.stations[2].diagnostics = diagnostics;
                bus.world.start();
                bus.pollUntil(bus.world.now + seconds(1));
                for (const int off : {5, 8, 20, 33, 70, 151}) {
                    EXPECT_LT(bus.offAndOn(2, seconds(off)), milliseconds(maxPause + 1000)) << off;
                    bus.good.clear();
                    const bool isLast = off == 151; // once beyond the horizon
                    bus.pollUntil(bus.world.now + seconds(isLast ? 40 : 8));
                    EXPECT_GT(bus.good[2], isLast ? 1000 : 80) << off;
                }
            }
}

TEST(DeadStationOnABus, IsBackWhereAllWereDead)
{
    PolledBus bus;
    bus.world.start();
    bus.pollUntil(bus.world.now + seconds(1));
    for (const int station : {1, 2, 3})
        bus.world.bus.stations[station].loses = 1;
    bus.pollUntil(bus.world.now + seconds(100));
    const int sent = bus.world.sent + bus.world.markers;
    bus.pollUntil(bus.world.now + seconds(60));
    EXPECT_LE(bus.world.sent + bus.world.markers - sent, 3 * 3);
    for (const int station : {1, 2, 3})
        bus.world.bus.stations[station].loses = 0;
    bus.good.clear();
    bus.pollUntil(bus.world.now + seconds(32));
    for (const int station : {1, 2, 3})
        EXPECT_GT(bus.good[station], 3) << station;
}

TEST(DeadStationOnABus, ASlowStationKeepsItsTimeWhenItIsProbed)
{
    PolledBus bus;
    bus.world.bus.stations[2].delay = []() { return milliseconds(1500); };
    bus.world.start();
    bus.pollUntil(bus.world.now + seconds(60));
    bus.offAndOn(2, seconds(60));
    EXPECT_GT(bus.longestProbe, milliseconds(1500));
    EXPECT_LT(bus.longestProbe, milliseconds(3000));
}

} // namespace

} // namespace dov417
