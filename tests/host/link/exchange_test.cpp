#include "link/exchange.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <optional>

#include "late_rounds.h"
#include "line/crc16.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(Exchange, AControllerThatIsSlowerThanTheTimeoutIsWaitedForLonger)
{
    LateWorld world(1);
    world.bus.stations[1].delay = []() { return milliseconds(600); };
    world.start();
    for (int round = 0; round < 30; ++round)
        for (const int address : {0x100, 0x200, 0x300}) {
            const Transmission ended = world.read(1, address, 1);
            if (isGood(ended)) {
                EXPECT_EQ(wordOf(ended, 0), LateBus::ownValue(1, address)) << "round " << round;
            } else {
                EXPECT_EQ(round, 0) << "by then its time is known";
            }
        }
    EXPECT_LE(world.markers, 2);
}

// How many of 60 requests are answered by a station that drops its reply when it is asked again?
int goodOfOneThatDrops(int delay, int diagnostics)
{
    LateWorld world(1);
    LateStation& station = world.bus.stations[1];
    station.delay = [delay]() { return milliseconds(delay); };
    station.dropsWhenAskedAgain = true;
    station.diagnostics = diagnostics;
    world.start();
    int good = 0;
    for (int i = 0; i < 60; ++i) {
        Transmission ended;
        for (int attempt = 0; attempt < 3 && !isGood(ended); ++attempt)
            ended = world.read(1, 0x100 + 2 * (i % 5), 1);
        good += isGood(ended) ? 1 : 0;
    }
    return good;
}

// Asked too soon, again and again, it would never speak.
TEST(Exchange, AStationIsListenedToAfterAMarkerToo)
{
    for (const int diagnostics : {1, 0, -1})
        for (const int delay : {900, 2500, 3900})
            EXPECT_GE(goodOfOneThatDrops(delay, diagnostics), 58) << delay << " " << diagnostics;
}

// Requests are held back once no marker is left, and that is its chance.
TEST(Exchange, AStationThatTakesLongerThanItIsListenedToComesThrough)
{
    for (const int diagnostics : {1, 0})
        for (const int delay : {4500, 9000, 14000})
            EXPECT_GE(goodOfOneThatDrops(delay, diagnostics), 50) << delay << " " << diagnostics;
}

TEST(Exchange, WhatAnotherProgramAskedJustBeforeIsNotTakenForOurs)
{
    LateWorld world(1);
    world.bus.stations[1].delay = []() { return milliseconds(300); };
    // The other program reads one register and goes.
    world.bus.send(withCrc(QByteArray::fromHex("010302000001")), world.now);
    world.pass(milliseconds(10));
    world.start();
    const Transmission ended = world.read(1, 0x300, 1);
    ASSERT_TRUE(isGood(ended));
    EXPECT_EQ(wordOf(ended, 0), LateBus::ownValue(1, 0x300));
    EXPECT_EQ(world.markers, 1);
}

TEST(Exchange, NothingIsMarkedWhileAllIsWell)
{
    LateWorld world(1);
    world.bus.stations[1].delay = []() { return milliseconds(5); };
    world.start();
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(isGood(world.read(1, 0x100 + 2 * i, 1)));
    EXPECT_EQ(world.markers, 1) << "the one at the start";
    EXPECT_EQ(world.sent, 100);
}

TEST(Exchange, ALateReplyToTheVerySameRequestIsGoodAndAsOldAsThatRequest)
{
    LateWorld world(1);
    int asked = 0;
    world.bus.stations[1].delay = [&asked]() {
        return ++asked == 2 ? milliseconds(700) : milliseconds(5); // the first is the marker
    };
    world.start();
    const Clock::time_point begin = world.now;
    EXPECT_EQ(world.read(1, 0x100, 1).reception.result, LineResult::timeout);
    const Transmission again = world.read(1, 0x100, 1);
    ASSERT_TRUE(isGood(again));
    EXPECT_LT(again.asOf - begin, milliseconds(100));
    EXPECT_EQ(world.sent, 1) << "it was not asked again";
}

TEST(Exchange, AReadThatWasSentBeforeAWriteDoesNotAnswerOneThatComesAfterIt)
{
    LateWorld world(1);
    world.settings.timeout.isFixed = true; // so nobody listens before the next is sent
    LateStation& station = world.bus.stations[1];
    station.written[0x1000] = {1};
    int asked = 0;
    station.delay = [&asked]() { return ++asked == 2 ? milliseconds(900) : milliseconds(5); };
    world.start();
    EXPECT_EQ(world.read(1, 0x1000, 1).reception.result, LineResult::timeout);
    // The controller answers in order, so the write's time is up, too, before it has been
    // confirmed.
    for (int attempt = 0; attempt < 3; ++attempt)
        if (isGood(world.write(1, 0x1000, 2)))
            break;
    for (int i = 0; i < 3; ++i) {
        const Transmission ended = world.read(1, 0x1000, 1);
        if (isGood(ended)) {
            EXPECT_EQ(wordOf(ended, 0), 2);
        }
    }
}

// An adapter hands on at once what came one after the other: first the reply to a read that was
// sent before a write, then the write's.
TEST(Exchange, FramesThatArriveTogetherAreTakenInTheirOrder)
{
    LateWorld world(1);
    world.settings.timeout.isFixed = true;
    world.settings.isShared = false;
    LateStation& station = world.bus.stations[1];
    station.written[0x1000] = {1};
    station.delay = []() { return milliseconds(1900); };
    world.bus.latency = seconds(2);
    world.start();
    EXPECT_FALSE(isGood(world.read(1, 0x1000, 1)));
    EXPECT_FALSE(isGood(world.write(1, 0x1000, 2)));
    for (int i = 0; i < 5; ++i) {
        const Transmission ended = world.read(1, 0x1000, 1);
        if (isGood(ended)) {
            EXPECT_EQ(wordOf(ended, 0), 2);
        }
    }
}

// The exceptions of a station that has no function 8 say nothing of whose they are: once one is
// lost, each seems to be the one before.
TEST(Exchange, AnExceptionToAnEarlierMarkerEndsTheDoubtAsWell)
{
    LateWorld world(1);
    LateStation& station = world.bus.stations[1];
    station.diagnostics = 0;
    station.delay = []() { return milliseconds(5); };
    station.loses = 1;
    world.start();
    EXPECT_FALSE(isGood(world.read(1, 0x100, 1)));
    station.loses = 0;
    int good = 0;
    for (int i = 0; i < 4; ++i)
        good += isGood(world.read(1, 0x100 + 2 * i, 1)) ? 1 : 0;
    EXPECT_GE(good, 3);
}

// Reads of every length are out then, and it is no wonder that the echoes were not answered.
TEST(Exchange, AStationThatEchoesIsAskedForAnEchoOnceNoReadCanMarkAnyMore)
{
    LateWorld world(1);
    world.settings.timeout.isFixed = true;
    world.bus.stations[1].delay = []() { return milliseconds(5); };
    world.start();
    EXPECT_TRUE(isGood(world.read(1, 0x100, 1)));
    world.bus.stations[1].loses = 1;
    for (int i = 0; i < 12; ++i)
        EXPECT_FALSE(isGood(world.read(1, 0x102 + 2 * i, 1)));
    world.bus.stations[1].loses = 0;
    const Clock::time_point back = world.now;
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(isGood(world.read(1, 0x200 + 2 * i, 1)));
    EXPECT_LT(world.now - back, seconds(1));
}

// Whatever its time-outs were until then.
TEST(Exchange, AStationThatSaysNothingToAnEchoIsAskedAllTheSame)
{
    LateWorld world(1);
    world.bus.stations[1].diagnostics = -1;
    world.bus.stations[1].delay = []() { return milliseconds(5); };
    world.start();
    EXPECT_TRUE(isGood(world.read(1, 0x100, 2)));
    EXPECT_EQ(world.markers, 4) << "two echoes and two reads";
    EXPECT_TRUE(isGood(world.read(1, 0x200, 2)));
    EXPECT_EQ(world.markers, 4);
    world.start();
    EXPECT_TRUE(isGood(world.write(1, 0x1000, 2)));
}

TEST(Exchange, AReplyUnderWayIsNotCutOff)
{
    LateWorld world(1);
    world.start();
    Transmission request;
    request.sent = withCrc(QByteArray::fromHex("010301000064"));
    request.replyLength = 205;
    world.settings.isShared = false;
    world.start();
    std::optional<Transmission> ended;
    world.exchange->transact(
        request, [&ended](const Transmission& each) { ended = each; }, world.now);
    QByteArray reply = QByteArray::fromHex("0103C8") + QByteArray(200, '\7');
    reply = withCrc(reply);
    world.pass(milliseconds(400));
    for (const char byte : reply) {
        ASSERT_FALSE(ended.has_value());
        world.exchange->bytesCame(QByteArray(1, byte), world.now);
        world.pass(milliseconds(20));
    }
    ASSERT_TRUE(ended.has_value());
    EXPECT_EQ(ended->reception.bytes, reply);
}

TEST(Exchange, WhereFunction8IsForbiddenAReadOfAnotherLengthIsTheMarker)
{
    LateWorld world(1);
    world.settings.mayMark = false;
    LateStation& station = world.bus.stations[1];
    station.delay = []() { return milliseconds(300); };
    world.bus.send(withCrc(QByteArray::fromHex("010302000002")), world.now);
    world.pass(milliseconds(10));
    world.start();
    const Transmission ended = world.read(1, 0x300, 2);
    ASSERT_TRUE(isGood(ended));
    EXPECT_EQ(wordOf(ended, 0), LateBus::ownValue(1, 0x300));
    EXPECT_EQ(world.markers, 2) << "of two lengths: the first may be the other program's";
    EXPECT_EQ(station.echoRequests, 0);
}

TEST(Exchange, AFixedTimeoutStaysWhatItIs)
{
    LateWorld world(1);
    world.settings.timeout.isFixed = true;
    world.bus.stations[1].delay = []() { return milliseconds(600); };
    world.start();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(world.read(1, 0x100, 1).timeout, milliseconds(500));
    LateWorld learning(1);
    learning.bus.stations[1].delay = []() { return milliseconds(600); };
    learning.start();
    learning.read(1, 0x100, 1);
    EXPECT_GT(learning.read(1, 0x200, 1).timeout, milliseconds(600));
}

TEST(Exchange, BabbleEndsARequest)
{
    LateWorld world(1);
    world.settings.isShared = false;
    world.start();
    Transmission request;
    request.sent = withCrc(QByteArray::fromHex("010301000001"));
    request.replyLength = 7;
    std::optional<Transmission> ended;
    world.exchange->transact(
        request, [&ended](const Transmission& each) { ended = each; }, world.now);
    world.pass(milliseconds(20));
    for (int i = 0; i < 2000 && !ended; ++i) {
        world.exchange->bytesCame(QByteArray(1, '\x55'), world.now);
        world.pass(milliseconds(1));
    }
    ASSERT_TRUE(ended.has_value());
    EXPECT_EQ(ended->reception.result, LineResult::timeout);
}

class ACopy : public ::testing::Test {
protected:
    ACopy()
    {
        world.doubted = [this]() { ++doubts; };
        world.bus.stations[1].delay = []() { return milliseconds(20); };
        world.bus.stations[1].repeatLag = milliseconds(1);
        world.start();
        EXPECT_TRUE(isGood(world.read(1, 0x100, 1)));
    }
    // The line is left alone meanwhile.
    void readWithCopy()
    {
        world.bus.stations[1].repeats = 1;
        world.read(1, 0x100, 1); // it may meet with the copy of the marker's reply
        world.bus.stations[1].repeats = 0;
        world.pass(milliseconds(100));
    }
    LateWorld world{1};
    int doubts = 0;
};

TEST_F(ACopy, IsSaidOnceAndPutsWhatWasReadInDoubt)
{
    readWithCopy();
    EXPECT_EQ(doubts, 1);
    ASSERT_EQ(world.notices.size(), 1U);
    EXPECT_EQ(world.notices.front().find("station 1 sends more replies than it was asked for"), 0U);
    EXPECT_EQ(world.surplus, 1);
    readWithCopy();
    EXPECT_EQ(doubts, 1) << "each reply is certain since";
    EXPECT_EQ(world.notices.size(), 1U);
    EXPECT_GE(world.surplus, 2);
}

TEST_F(ACopy, HasAMarkerSentBeforeEachRequestUntilTheLineHasBeenCleanForAWhile)
{
    EXPECT_EQ(world.markers, 1) << "at the start";
    readWithCopy();
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(isGood(world.read(1, 0x100 + 2 * i, 1)));
    EXPECT_EQ(world.markers, 6);
    world.pass(std::chrono::minutes(11));
    EXPECT_TRUE(isGood(world.read(1, 0x200, 1)));
    EXPECT_EQ(world.markers, 6);
    readWithCopy();
    EXPECT_EQ(doubts, 2);
}

TEST_F(ACopy, PutsAMarkerBeforeTheRequestsToOtherStationsToo)
{
    world.bus.stations[2].delay = []() { return milliseconds(20); };
    EXPECT_TRUE(isGood(world.read(2, 0x100, 1)));
    EXPECT_EQ(world.markers, 2);
    readWithCopy();
    EXPECT_TRUE(isGood(world.read(2, 0x100, 1)));
    EXPECT_EQ(world.markers, 3);
}

TEST_F(ACopy, OfAReplyToAnotherProgramsRequestIsNone)
{
    LateWorld other(1);
    other.bus.stations[1].delay = []() { return milliseconds(200); };
    other.bus.send(withCrc(QByteArray::fromHex("010302000001")), other.now);
    other.pass(milliseconds(10));
    other.start();
    EXPECT_TRUE(isGood(other.read(1, 0x100, 1)));
    EXPECT_GE(other.strays, 1);
    EXPECT_EQ(other.surplus, 0);
}

// The station has no function 8, and what comes twice answered a marker before the last one.
TEST_F(ACopy, IsNotTakenForTheReplyToAMarker)
{
    readWithCopy();
    world.settings.mayMark = false;
    world.settings.isShared = false;
    world.start();
    world.bus.stations[1].loses = 1;
    EXPECT_FALSE(isGood(world.read(1, 0x100, 1)));
    EXPECT_FALSE(isGood(world.read(1, 0x100, 1)));
    EXPECT_EQ(world.markers, 3) << "one at the start, of two words, of three";
    const QByteArray ofTwo = withCrc(QByteArray::fromHex("01030411112222"));
    world.exchange->bytesCame(ofTwo, world.now);
    std::optional<Transmission> ended;
    Transmission request;
    request.sent = withCrc(readRequestOf(1, 0x200, 3));
    request.replyLength = 11;
    request.request.length = 3;
    world.exchange->transact(
        request, [&ended](const Transmission& each) { ended = each; }, world.now);
    for (const QByteArray& late : {ofTwo, withCrc(QByteArray::fromHex("010306333344445555"))}) {
        world.pass(milliseconds(50));
        ASSERT_FALSE(ended.has_value());
        world.exchange->bytesCame(late, world.now);
    }
    world.pass(seconds(60));
    ASSERT_TRUE(ended.has_value());
    EXPECT_FALSE(isGood(*ended));
}

// Each reply is taken for that to the request after, and all look alike: nothing is left over. But
// they come too soon.
TEST_F(ACopy, IsNoticedWhereAllRequestsHaveOneShape)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        LateWorld other(seed);
        LateStation& station = other.bus.stations[1];
        station.delay = [&other]() { return milliseconds(other.bus.between(20, 30)); };
        station.repeats = 0.02;
        station.repeatLag = milliseconds(30);
        other.start();
        int wrong = 0;
        for (int i = 0; i < 1000 && other.notices.empty(); ++i) {
            const int address = 0x100 + 2 * (i % 3);
            const Transmission ended = other.read(1, address, 1);
            wrong += isGood(ended) && wordOf(ended, 0) != LateBus::ownValue(1, address) ? 1 : 0;
        }
        EXPECT_EQ(other.notices.size(), 1U) << "seed " << seed;
        EXPECT_LE(wrong, 10) << "seed " << seed;
    }
}

TEST(Exchange, ACopyIsNoValueOnceOneHasBeenMet)
{
    Tally all;
    for (unsigned seed = 1; seed <= 100; ++seed) {
        const Tally tally = playModemRound(seed, 200);
        EXPECT_EQ(tally.lies(), tally.beforeDoubt) << "seed " << seed << ": " << textOf(tally);
        EXPECT_LE(tally.wrong, 10) << "seed " << seed << ": " << textOf(tally);
        EXPECT_EQ(tally.silent, 0) << "seed " << seed << ": " << textOf(tally);
        all.add(tally);
    }
    std::printf("behind a modem: %s\n", textOf(all).c_str());
    EXPECT_GT(all.copies, 1000);
}

// Of rounds that showed a wrong value before what each of them asked for was built.
TEST(Exchange, RoundsThatOnceShowedAWrongValueShowNone)
{
    constexpr int requests = 400;
    for (const unsigned seed : {1095U, 1250U, 1317U, 1507U, 1580U, 3039U, 3157U, 4255U, 4292U}) {
        const Tally tally = playRound(seed, requests);
        EXPECT_EQ(tally.doubts, 0) << "seed " << seed << ": " << textOf(tally);
        EXPECT_EQ(tally.lies(), 0) << "seed " << seed << ": " << textOf(tally);
    }
    for (const unsigned seed : {184U, 297U, 413U, 3625U, 4618U, 4787U, 4965U, 65217U, 75459U}) {
        const Tally tally = playModemRound(seed, requests);
        EXPECT_EQ(tally.lies(), tally.beforeDoubt) << "seed " << seed << ": " << textOf(tally);
    }
    for (const unsigned seed : {1721U, 4245U}) {
        const Tally tally = playMixedModemRound(seed, requests);
        EXPECT_EQ(tally.lies(), tally.beforeDoubt) << "seed " << seed << ": " << textOf(tally);
    }
}

// In short; tests/late has the long form.
TEST(Exchange, NoValueIsWrongOnABusThatAnswersLate)
{
    Tally all;
    for (unsigned seed = 1; seed <= 300; ++seed) {
        const Tally tally = playRound(seed, 100);
        EXPECT_EQ(tally.lies(), 0) << "seed " << seed << ": " << textOf(tally);
        EXPECT_EQ(tally.silent, 0) << "seed " << seed << ": " << textOf(tally);
        EXPECT_EQ(tally.doubts, 0) << "seed " << seed << ": " << textOf(tally);
        all.add(tally);
    }
    std::printf("%s\n", textOf(all).c_str());
    EXPECT_GT(all.values, 10000);
}

TEST(Exchange, NoCoilAndNoBitOfAWordIsWrongAndNoWriteOfSeveralWords)
{
    Tally all;
    for (unsigned seed = 1; seed <= 100; ++seed) {
        const Tally tally = playMixedRound(seed, 100);
        EXPECT_EQ(tally.lies() + tally.doubts + tally.silent, 0)
            << "seed " << seed << ": " << textOf(tally);
        all.add(tally);
    }
    EXPECT_GT(all.values, 3000);
    EXPECT_GT(all.writes, 1000);
}

TEST(Exchange, NoValueIsWrongOverANetworkThatHandsOnAtIntervals)
{
    Tally all;
    for (unsigned seed = 1; seed <= 100; ++seed) {
        const Tally tally = playNetworkRound(seed, 100);
        EXPECT_EQ(tally.lies() + tally.doubts + tally.silent, 0)
            << "seed " << seed << ": " << textOf(tally);
        all.add(tally);
    }
    EXPECT_GT(all.values, 3000);
}

} // namespace

} // namespace dov417
