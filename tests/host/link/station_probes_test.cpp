#include "link/station_probes.h"

#include <gmock/gmock.h>

#include "line/crc16.h"
#include "link/silence_words.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Turn = StationProbes::Turn;
using News = StationProbes::News;

constexpr int one = 0x100;
constexpr int two = 0x200;
constexpr int three = 0x300;

// A line on which time passes when somebody is asked in vain.
class Probing : public ::testing::Test {
protected:
    static QByteArray request(int station, int address, char function = 3)
    {
        QByteArray frame;
        frame.append(static_cast<char>(station)).append(function);
        frame.append(static_cast<char>(address >> 8)).append(static_cast<char>(address & 0xFF));
        return withCrc(frame.append('\0').append('\1'));
    }

    static Transmission transmission(const QByteArray& sent, bool isCyclic)
    {
        Transmission transmission;
        transmission.number = 1;
        transmission.sent = sent;
        transmission.replyLength = 7;
        transmission.isCyclic = isCyclic;
        return transmission;
    }

    Turn turn(int station, int address)
    {
        return probes.mayGoOut(request(station, address), now).turn;
    }

    News silent(Transmission transmission, bool isGivenUp)
    {
        transmission.isToSilent =
            transmission.isCyclic && probes.mayGoOut(transmission.sent, now).turn == Turn::probe;
        transmission.sendBegin = now;
        transmission.verdict = isGivenUp ? replyAbandoned : replyBad;
        now += milliseconds(500);
        return probes.ended(transmission, now);
    }

    // Asked three times in vain, and given up.
    News giveUp(int station, int address, bool isCyclic = true)
    {
        const Transmission asked = transmission(request(station, address), isCyclic);
        EXPECT_EQ(silent(asked, false), News::none);
        EXPECT_EQ(silent(asked, false), News::none);
        return silent(asked, true);
    }

    News probeInVain(int station, int address)
    {
        EXPECT_EQ(turn(station, address), Turn::probe) << address;
        return silent(transmission(request(station, address), true), false);
    }

    News answer(int station, int address)
    {
        Transmission asked = transmission(request(station, address), true);
        asked.reception.result = LineResult::reply;
        asked.reception.bytes = withCrc(QByteArray::fromHex("0103020007"));
        asked.verdict = replyAccepted;
        return probes.ended(asked, now);
    }

    StationProbes probes;
    Clock::time_point now = Clock::time_point() + std::chrono::hours(1);
};

TEST_F(Probing, WhoAnswersIsAskedAsEver)
{
    EXPECT_EQ(turn(1, one), Turn::asEver);
    answer(1, one);
    EXPECT_EQ(turn(1, one), Turn::asEver);
    EXPECT_FALSE(probes.isDead(1));
}

TEST_F(Probing, ARequestThatIsNotGivenUpKillsNobody)
{
    silent(transmission(request(1, one), true), false);
    EXPECT_FALSE(probes.isDead(1));
    EXPECT_EQ(turn(1, one), Turn::asEver);
}

TEST_F(Probing, ADeadStationIsProbedAfterPausesThatDouble)
{
    giveUp(3, one);
    EXPECT_TRUE(probes.isDead(3));
    EXPECT_FALSE(probes.isDead(1));
    std::vector<long long> pauses;
    for (int i = 0; i < 8; ++i) {
        const Clock::time_point ended = now;
        EXPECT_EQ(turn(3, two), Turn::notNow);
        now = probes.mayGoOut(request(3, two), now).notBefore - Micros(1);
        EXPECT_EQ(turn(3, two), Turn::notNow);
        EXPECT_EQ(turn(3, one), Turn::notNow) << "every request of the station";
        now += Micros(1);
        pauses.push_back(std::chrono::round<seconds>(now - ended).count());
        probeInVain(3, i % 2 == 0 ? two : one);
    }
    EXPECT_THAT(pauses, ::testing::ElementsAre(1, 2, 4, 8, 16, 30, 30, 30));
    EXPECT_EQ(turn(1, one), Turn::asEver);
}

TEST_F(Probing, AShorterLongestPauseIsTheFirstToo)
{
    probes = StationProbes({seconds(1), milliseconds(200)});
    giveUp(3, one);
    EXPECT_EQ(probes.mayGoOut(request(3, two), now).notBefore, now + milliseconds(200));
}

TEST_F(Probing, ThePausesBeginAnewWithEachDeath)
{
    for (int death = 0; death < 2; ++death) {
        giveUp(3, one);
        EXPECT_EQ(probes.mayGoOut(request(3, two), now).notBefore, now + seconds(1));
        now += seconds(1);
        probeInVain(3, two);
        EXPECT_EQ(probes.mayGoOut(request(3, one), now).notBefore, now + seconds(2));
        answer(3, two);
        answer(3, one);
    }
}

TEST_F(Probing, AnotherRequestThanTheLastIsTheNextProbe)
{
    giveUp(3, one);
    now += seconds(1);
    EXPECT_EQ(turn(3, one), Turn::notNow) << "it was given up";
    probeInVain(3, two);
    now += seconds(2);
    EXPECT_EQ(turn(3, two), Turn::notNow);
    probeInVain(3, three);
}

TEST_F(Probing, TheOnlyRequestOfAStationIsItsProbeWhenItComesAgain)
{
    giveUp(3, one);
    for (int i = 0; i < 3; ++i) {
        now += seconds(30);
        const StationProbes::Answer first = probes.mayGoOut(request(3, one), now);
        EXPECT_EQ(first.turn, Turn::notNow);
        EXPECT_EQ(first.notBefore, now) << "nobody sleeps meanwhile";
        probeInVain(3, one);
    }
}

TEST_F(Probing, OneProbeIsOneTransmission)
{
    giveUp(3, one);
    now += seconds(1);
    probeInVain(3, two);
    EXPECT_EQ(turn(3, two), Turn::notNow) << "no repetition";
    EXPECT_EQ(turn(3, one), Turn::notNow);
}

TEST_F(Probing, AnAnsweredProbeBringsEverythingBackAtOnce)
{
    giveUp(3, one);
    now += seconds(1);
    probeInVain(3, two);
    now += seconds(2);
    EXPECT_EQ(answer(3, three), News::stationBack);
    EXPECT_FALSE(probes.isDead(3));
    for (const int address : {one, two, three})
        EXPECT_EQ(turn(3, address), Turn::asEver) << address;
}

TEST_F(Probing, AnySoundFrameOfTheStationBringsItBack)
{
    giveUp(3, one);
    EXPECT_EQ(probes.heard(2, now), News::none);
    EXPECT_TRUE(probes.isDead(3));
    EXPECT_EQ(probes.heard(3, now), News::none) << "its silence has not been told";
    EXPECT_FALSE(probes.isDead(3));
    EXPECT_EQ(turn(3, one), Turn::asEver);
}

TEST_F(Probing, AnExceptionIsASignOfLife)
{
    Transmission refused = transmission(request(3, one), true);
    refused.reception.result = LineResult::exception;
    refused.verdict = replyAbandoned;
    EXPECT_EQ(probes.ended(refused, now), News::none);
    EXPECT_FALSE(probes.isDead(3));
    EXPECT_EQ(turn(3, one), Turn::asEver);
}

TEST_F(Probing, GarbledBytesAreNone)
{
    Transmission garbled = transmission(request(3, one), true);
    garbled.reception.result = LineResult::reply;
    garbled.reception.bytes = QByteArray::fromHex("01030200070000");
    garbled.verdict = replyAbandoned;
    probes.ended(garbled, now);
    EXPECT_TRUE(probes.isDead(3));
}

TEST_F(Probing, ABroadcastAwaitsNoAnswer)
{
    Transmission broadcast = transmission(request(0, one, 6), false);
    broadcast.replyLength = 0;
    broadcast.reception.result = LineResult::broadcast;
    broadcast.verdict = replyAbandoned;
    probes.ended(broadcast, now);
    EXPECT_FALSE(probes.isDead(0));
}

TEST_F(Probing, AMarkerInVainGivesNothingUp)
{
    Transmission marker = transmission(request(3, one, 8), false);
    marker.isMarker = true;
    marker.verdict = replyAbandoned;
    probes.ended(marker, now);
    EXPECT_FALSE(probes.isDead(3));
}

TEST_F(Probing, AFailedWriteIsADeathToo)
{
    silent(transmission(request(3, one, 6), false), true);
    EXPECT_TRUE(probes.isDead(3));
    EXPECT_EQ(turn(3, one), Turn::notNow);
    now += seconds(1);
    EXPECT_EQ(turn(3, one), Turn::probe);
}

TEST_F(Probing, WhatSomebodyWaitsForIsNoProbe)
{
    giveUp(3, one);
    const Clock::time_point probe = probes.mayGoOut(request(3, two), now).notBefore;
    giveUp(3, two, false); // a single read
    EXPECT_EQ(probes.mayGoOut(request(3, two), now - seconds(1)).notBefore, probe);
}

TEST_F(Probing, ARequestThatAloneIsSilentIsPutOffAlone)
{
    answer(3, two);
    EXPECT_EQ(giveUp(3, one), News::none);
    now += seconds(1);
    EXPECT_EQ(answer(3, two), News::none) << "nobody had heard of a silence";
    const Clock::time_point askedAgain = now;
    EXPECT_EQ(giveUp(3, one), News::requestSilent);
    EXPECT_FALSE(probes.isDead(3));
    EXPECT_LT(probes.silentSince(request(3, one)), askedAgain);
    std::vector<long long> pauses;
    for (int i = 0; i < 7; ++i) {
        const Clock::time_point ended = now;
        EXPECT_EQ(turn(3, one), Turn::notNow);
        EXPECT_EQ(turn(3, two), Turn::asEver);
        now = probes.mayGoOut(request(3, one), now).notBefore;
        pauses.push_back(std::chrono::round<seconds>(now - ended).count());
        EXPECT_EQ(probeInVain(3, one), News::none);
        EXPECT_FALSE(probes.isDead(3));
    }
    EXPECT_THAT(pauses, ::testing::ElementsAre(1, 2, 4, 8, 16, 30, 30));
    EXPECT_EQ(answer(3, one), News::requestBack);
    EXPECT_EQ(turn(3, one), Turn::asEver);
    giveUp(3, one);
    EXPECT_TRUE(probes.isDead(3)) << "as if nothing had been";
}

TEST_F(Probing, AStationCanDieWhoseRequestWasPutOff)
{
    giveUp(3, one);
    answer(3, two);
    giveUp(3, one);
    giveUp(3, two);
    EXPECT_TRUE(probes.isDead(3));
    now += seconds(1);
    probeInVain(3, one);
    now += seconds(2);
    probeInVain(3, two);
    answer(3, three);
    EXPECT_EQ(turn(3, one), Turn::probe) << "everything is asked at once";
    EXPECT_EQ(turn(3, two), Turn::asEver);
}

TEST_F(Probing, WhatSomebodyWaitsForIsNeverPutOff)
{
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(giveUp(3, one, false), News::none);
        EXPECT_EQ(answer(3, two), News::none);
        EXPECT_EQ(turn(3, one), Turn::asEver);
    }
}

TEST_F(Probing, ASingleReadOfAPutOffRequestChangesNothing)
{
    giveUp(3, one);
    answer(3, two);
    giveUp(3, one);
    const Clock::time_point probe = probes.mayGoOut(request(3, one), now).notBefore;
    giveUp(3, one, false);
    EXPECT_EQ(probes.mayGoOut(request(3, one), now - seconds(1)).notBefore, probe);
    EXPECT_FALSE(probes.isDead(3));
}

TEST_F(Probing, SilenceIsToldOnceAndSoIsItsEnd)
{
    EXPECT_EQ(giveUp(3, one), News::none) << "one answer may have been lost";
    now += seconds(1);
    EXPECT_EQ(probeInVain(3, two), News::stationSilent);
    now += seconds(2);
    EXPECT_EQ(probeInVain(3, one), News::none);
    EXPECT_EQ(answer(3, one), News::stationBack);
    EXPECT_EQ(answer(3, one), News::none);
}

TEST_F(Probing, AStationIsSilentSinceItWasFirstAskedInVain)
{
    answer(3, one);
    now += seconds(5);
    const Clock::time_point first = now;
    giveUp(3, one);
    now += seconds(1);
    probeInVain(3, two);
    EXPECT_EQ(probes.silentSince(3), first);
    EXPECT_EQ(probes.mayGoOut(request(3, one), now).silentSince, first);
    answer(3, one);
    now += seconds(5);
    giveUp(3, one);
    EXPECT_EQ(probes.silentSince(3), now - milliseconds(1500));
}

TEST_F(Probing, APortThatComesBackIsAChanceForAll)
{
    giveUp(3, one);
    for (int i = 0; i < 5; ++i) {
        now += seconds(30);
        probeInVain(3, i % 2 == 0 ? two : one);
    }
    probes.portIsBack(now);
    EXPECT_TRUE(probes.isDead(3));
    probeInVain(3, one);
    EXPECT_EQ(probes.mayGoOut(request(3, two), now).notBefore, now + seconds(1));
}

TEST_F(Probing, APortThatComesBackIsAChanceForARequestThatWasPutOff)
{
    answer(3, two);
    giveUp(3, one);
    now += seconds(1);
    answer(3, two);
    giveUp(3, one);
    ASSERT_EQ(turn(3, one), Turn::notNow);
    probes.portIsBack(now);
    EXPECT_EQ(probes.mayGoOut(request(3, one), now).notBefore, now);
}

TEST_F(Probing, AStationOfWhichAGatewaySaysThatItDoesNotAnswerIsDead)
{
    for (const char* const code : {"0A", "0B", "02"}) {
        probes = StationProbes();
        Transmission asked = transmission(request(3, one), true);
        asked.reception.result = LineResult::exception;
        asked.reception.bytes = withCrc(QByteArray::fromHex(QByteArray("0383") + code));
        silent(asked, false);
        silent(asked, true);
        EXPECT_EQ(probes.isDead(3), std::string(code) != "02") << code;
    }
}

TEST(SilenceWords, SayWhoIsSilentAndHowOftenItIsAsked)
{
    const Clock::time_point since = Clock::now();
    const std::string time = wallTime(since);
    EXPECT_THAT(time, ::testing::MatchesRegex("[0-9][0-9]:[0-9][0-9]:[0-9][0-9]"));
    const auto text = [since](News news, const ProbeSettings& settings,
                              Reason why = Reason::silence) {
        return textOf(news, "station 3", "3#R_W10(1)", why, since, settings);
    };
    EXPECT_EQ(text(News::none, {}), "");
    EXPECT_EQ(text(News::stationSilent, {}),
              "station 3 is silent since " + time + ": asked every 1 s to 30 s");
    EXPECT_EQ(text(News::stationSilent, {seconds(1), milliseconds(500)}),
              "station 3 is silent since " + time + ": asked every 0.5 s");
    EXPECT_EQ(text(News::stationSilent, {}, Reason::badCrc),
              "station 3 sends no sound frame since " + time + ": asked every 1 s to 30 s");
    EXPECT_EQ(text(News::stationBack, {}), "station 3 answers again");
    EXPECT_EQ(text(News::requestSilent, {}), "station 3 answers others, but not 3#R_W10(1) since " +
                                                 time + ": asked every 1 s to 30 s");
    EXPECT_EQ(text(News::requestBack, {}), "station 3 answers 3#R_W10(1) again");
    EXPECT_EQ(notAskedSince(since), "not asked: silent since " + time);
}

TEST(SilenceWords, OfAnotherDaySayWhich)
{
    EXPECT_THAT(wallTime(Clock::now() - std::chrono::hours(25)),
                ::testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}"));
}

} // namespace

} // namespace dov417
