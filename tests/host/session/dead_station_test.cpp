#include <algorithm>

#include "session/recipe_layout.h"
#include "session_world.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

int polls = 0;
decltype(&intf_getSendFrame) driversGetSendFrame = nullptr;

int countedGetSendFrame(FRAME_PRO* frame)
{
    ++polls;
    return driversGetSendFrame(frame);
}

Write wordOf(int station, int address)
{
    Write write = wordWrite("R_W", address, 1);
    write.address.station = station;
    return write;
}

// Stations 1 and 2, of which 2 is switched off.
class DeadStation : public SessionOnALine {
protected:
    struct Sent {
        Clock::time_point at;
        int station;
        int function;
        int polls; // until then
        QByteArray frame;
    };

    DeadStation()
    {
        beAController();
        silentStations = {2};
        line.timeout = milliseconds(250); // the living are to answer in time on a busy machine, too
        line.isTimeoutFixed = true;
        line.maxProbePause = minutes(10);
        const auto controller = slave.arrived;
        slave.arrived = [this, controller](const QByteArray& bytes) {
            sent.push_back({Clock::now(), bytes.at(0), bytes.at(1), polls, bytes});
            controller(bytes);
        };
    }

    void SetUp() override
    {
        polls = 0;
        driversGetSendFrame = library.intf_getSendFrame;
        library.intf_getSendFrame = countedGetSendFrame;
        start();
    }

    void start()
    {
        SessionOnALine::SetUp();
        QObject::connect(session.get(), &Session::noticed, session.get(),
                         [this](const std::string& text) {
                             // A busy machine may be slow, and is told so.
                             if (text.find("raise --timeout") == std::string::npos)
                                 notices.push_back(text);
                         });
        QObject::connect(session.get(), &Session::abandoned, session.get(),
                         [this](const std::string& request, const std::string&, Reason) {
                             abandoned.push_back(request);
                         });
        QObject::connect(session.get(), &Session::cycleEnded, session.get(),
                         [this](long long ended) { cycles = ended; });
        QObject::connect(session.get(), &Session::transmissionEnded, session.get(),
                         [this](const Transmission&) { ++logged; });
    }

    void restart()
    {
        session.reset();
        sent.clear();
        start();
    }

    std::vector<Sent> sentTo(int station) const
    {
        std::vector<Sent> found;
        std::copy_if(sent.begin(), sent.end(), std::back_inserter(found),
                     [station](const Sent& each) { return each.station == station; });
        return found;
    }

    void watch(const std::vector<Address>& addresses)
    {
        ASSERT_TRUE(session->watch(addresses).accepted);
    }

    // Until the only request of station 2 has been given up.
    bool waitForDeath()
    {
        return waitUntil([this]() { return !abandoned.empty(); });
    }

    const RequestCounters& countersOf(const std::string& request)
    {
        return session->statistics().requests.at(request);
    }

    std::vector<Sent> sent;
    std::vector<std::string> notices;
    std::vector<std::string> abandoned;
    long long cycles = 0;
    int logged = 0;
};

TEST_F(DeadStation, IsAskedNowAndThenWhileTheOthersAreAskedAllTheTime)
{
    watch({words("R_W", 10), words("R_W", 10, 1, 2), words("R_W", 500, 1, 2)});
    ASSERT_TRUE(waitUntil([this]() { return sentTo(2).size() >= 5; }));
    const std::vector<Sent> toDead = sentTo(2);
    // Given up after two, then probes of one transmission each.
    EXPECT_GE(toDead.at(2).at - toDead.at(1).at, seconds(1));
    EXPECT_GE(toDead.at(3).at - toDead.at(2).at, seconds(2));
    EXPECT_GE(toDead.at(4).at - toDead.at(3).at, seconds(4));
    EXPECT_NE(toDead.at(2).frame, toDead.at(1).frame) << "whose reply could be late";
    EXPECT_GT(sentTo(1).size(), 100U);
    EXPECT_EQ(countersOf("read  1#R_W10(1)").badFor(Reason::silence), 0);
    EXPECT_EQ(countersOf("read  1#R_W10(1)").retries, 0) << "what follows a probe is none";
    // One message for the request that was given up, one for the station.
    EXPECT_THAT(abandoned, ::testing::ElementsAre("2#R_W10(1)"));
    ASSERT_EQ(notices.size(), 1U);
    EXPECT_THAT(notices.front(), ::testing::StartsWith("station 2 is silent since "));
}

TEST_F(DeadStation, CountsAsACycleAndIsNotCountedAsAsked)
{
    watch({words("R_W", 10), words("R_W", 10, 1, 2)});
    ASSERT_TRUE(waitForDeath());
    const long long before = cycles;
    const long long sentBefore = countersOf("read  2#R_W10(1)").sent;
    ASSERT_TRUE(waitUntil([&]() { return cycles > before + 5; }));
    EXPECT_GE(session->statistics().cycles.count(), 5);
    const RequestCounters& counters = countersOf("read  2#R_W10(1)");
    EXPECT_GE(counters.notAsked, 5);
    EXPECT_THAT(counters.whyNotAsked, ::testing::MatchesRegex("not asked: silent since .*"));
    EXPECT_EQ(counters.sent - sentBefore, counters.badFor(Reason::silence) - 2)
        << "probes, if there were any";
    EXPECT_EQ(counters.abandoned, 1);
    EXPECT_TRUE(session->statistics().linkIsGood) << "the last that was asked has answered";
    session->tellAll();
    EXPECT_EQ(logged, session->statistics().total().sent + session->statistics().markers)
        << "what was not sent is no transmission";
}

TEST_F(DeadStation, WhatItHeldIsOldEvenWhereItWasNotAskedFor)
{
    silentStations.clear();
    watch({words("R_W", 10), words("R_W", 10, 1, 2), words("R_W", 500, 1, 2)});
    const auto haveAll = [this](Quality quality) {
        return session->views().at(0).quality() == Quality::good &&
               session->views().at(1).quality() == quality &&
               session->views().at(2).quality() == quality;
    };
    ASSERT_TRUE(waitUntil([&]() { return haveAll(Quality::good); }));
    silentStations = {2};
    ASSERT_TRUE(waitUntil([&]() { return haveAll(Quality::old); }));
    session->tellAll();
    EXPECT_EQ(abandoned.size(), 1U);
    silentStations.clear();
    ASSERT_TRUE(waitUntil([&]() { return haveAll(Quality::good); }));
}

TEST_F(DeadStation, IsTakenBackWithEverythingOnceItAnswers)
{
    watch({words("R_W", 10, 1, 2), words("R_W", 500, 1, 2)});
    ASSERT_TRUE(waitUntil([this]() { return notices.size() == 1; }));
    silentStations.clear();
    ASSERT_TRUE(waitUntil([this]() {
        return session->views().at(0).quality() == Quality::good &&
               session->views().at(1).quality() == Quality::good;
    }));
    ASSERT_TRUE(waitUntil([this]() { return notices.size() == 2; }));
    EXPECT_EQ(notices.at(1), "station 2 answers again");
    ASSERT_TRUE(waitUntil([&, before = cycles]() { return cycles > before + 20; }));
    EXPECT_EQ(notices.size(), 2U);
}

TEST_F(DeadStation, IsTakenBackByALateReply)
{
    watch({words("R_W", 10, 1, 2)});
    ASSERT_TRUE(waitForDeath());
    const std::size_t before = sent.size();
    silentStations.clear();
    // A probe is not due for another second.
    slave.send(withCrc(QByteArray::fromHex("0203020007")));
    ASSERT_TRUE(waitUntil([&]() { return sent.size() > before; }));
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(0).quality() == Quality::good; }));
    EXPECT_EQ(session->statistics().total().badFor(Reason::silence), 2)
        << "it was no probe that found it";
}

TEST_F(DeadStation, IsProbedAtOnceAndOnceWhenThePortIsBack)
{
    line.isShared = true; // so that a marker goes first
    restart();
    watch({words("R_W", 10, 1, 2)});
    ASSERT_TRUE(waitForDeath());
    slave.unplug();
    ASSERT_TRUE(waitUntil([this]() { return !session->statistics().portIsOpen; }));
    const std::size_t before = sent.size();
    slave.plug();
    ASSERT_TRUE(waitUntil([&]() { return sent.size() >= before + 3; }));
    EXPECT_GE(sent.at(before + 1).at - sent.at(before).at, seconds(1));
    EXPECT_GE(sent.at(before + 2).at - sent.at(before + 1).at, seconds(2));
}

TEST_F(DeadStation, NothingSpinsWhereAllAreDead)
{
    line.maxProbePause = milliseconds(300);
    restart();
    watch({words("R_W", 10, 1, 2)});
    ASSERT_TRUE(waitForDeath());
    const std::size_t dead = sent.size();
    ASSERT_TRUE(waitUntil([&]() { return sent.size() >= dead + 3; }));
    EXPECT_GE(sent.at(dead + 1).at - sent.at(dead).at, milliseconds(300));
    // The driver is asked twice where it has nothing; a timer may be early, which costs a round.
    EXPECT_LE(sent.at(dead + 1).polls - sent.at(dead).polls, 12);
    EXPECT_LE(sent.at(dead + 2).polls - sent.at(dead + 1).polls, 12);
}

TEST_F(DeadStation, IsProbedInItsOwnTimeWhereOthersHaveBeenDeadForLonger)
{
    silentStations = {3, 4};
    watch({words("R_W", 10, 1, 2), words("R_W", 10, 1, 3), words("R_W", 10, 1, 4)});
    // Given up after two, then two probes: the next one is four seconds away.
    ASSERT_TRUE(waitUntil([this]() { return sentTo(4).size() == 4; }));
    silentStations = {2, 3, 4};
    ASSERT_TRUE(waitUntil([this]() { return abandoned.size() == 3; }));
    silentStations = {3, 4};
    const std::size_t before = sent.size();
    const std::size_t toOthers = sentTo(3).size() + sentTo(4).size();
    ASSERT_TRUE(waitUntil([&]() { return sentTo(3).size() + sentTo(4).size() > toOthers; }));
    EXPECT_GT(sent.size(), before + 10) << "it was found to be back, and is asked as ever";
}

TEST_F(DeadStation, AWriteWakesWhoeverWaitsForTheNextProbe)
{
    watch({words("R_W", 10, 1, 2)});
    ASSERT_TRUE(waitForDeath());
    waitUntil([before = polls]() { return polls >= before + 2; });
    session->write(wordOf(1, 20), outcome(1));
    session->write(wordOf(2, 20), outcome(2));
    session->readOnce(words("R_W", 30, 1, 1), outcome(3));
    ASSERT_TRUE(waitForOutcomes(3));
    EXPECT_EQ(outcomes[1], "accepted");
    EXPECT_EQ(outcomes[2], "no answer: no byte came");
    EXPECT_EQ(outcomes[3], "accepted");
}

TEST_F(DeadStation, IsAskedForWhatSomebodyWaitsFor)
{
    watch({words("R_W", 10, 1, 2)});
    ASSERT_TRUE(waitForDeath());
    const auto inVain = [this](int function) {
        return std::count_if(sent.begin(), sent.end(),
                             [function](const Sent& each) { return each.function == function; });
    };
    session->readOnce(words("M_W", 30, 1, 2), outcome(1));
    Address bit = bits("R_bit", 160);
    bit.station = 2;
    session->write({bit, {1}}, outcome(2));
    session->write(wordOf(2, 20), outcome(3));
    session->transferRecipe(
        layOutRecipe({words("R_W", 40, 2, 2)}), RecipeDirection::download, {1, 1},
        [this](const Result& result, const RecipeWords&) { outcome(4)(result); });
    ASSERT_TRUE(waitForOutcomes(4));
    EXPECT_EQ(outcomes[1], "no answer: no byte came");
    EXPECT_EQ(outcomes[2], "no answer: no byte came");
    EXPECT_EQ(outcomes[3], "no answer: no byte came");
    EXPECT_THAT(outcomes[4], ::testing::EndsWith("no answer: no byte came"));
    EXPECT_EQ(inVain(1), 2) << "the single read, and its repetition";
    EXPECT_EQ(inVain(6), 2) << "the write of a word";
    EXPECT_EQ(inVain(16), 2) << "the recipe";
    EXPECT_GE(inVain(3), 4) << "the read before the write of a bit, besides the cyclic ones";
}

TEST_F(DeadStation, ItsWritesFailOneByOneAndThoseToOthersDoNotWaitForThem)
{
    std::vector<int> order;
    const auto noted = [this, &order](int number) {
        return [this, &order, number](const Result& result) {
            order.push_back(number);
            outcome(number)(result);
        };
    };
    int handedIn = 0; // of station 2, at a time
    const auto controller = slave.arrived;
    slave.arrived = [&](const QByteArray& bytes) {
        int queued = 0;
        for (int i = 0; i < library.driver->writeList.size(); ++i)
            queued += library.driver->writeList.at(i).stationNo == 2 ? 1 : 0;
        handedIn = std::max(handedIn, queued);
        controller(bytes);
    };
    watch({words("R_W", 10)});
    // Before anybody knows that it is dead.
    for (int number = 1; number <= 4; ++number)
        session->write(wordOf(2, 20 + number), noted(number));
    for (int number = 5; number <= 8; ++number)
        session->write(wordOf(1, 20 + number), noted(number));
    ASSERT_TRUE(waitForOutcomes(8));
    EXPECT_EQ(handedIn, 1);
    EXPECT_EQ(order.front(), 1) << "until its first write has failed nobody knows";
    const auto place = [&order](int number) {
        return std::find(order.begin(), order.end(), number) - order.begin();
    };
    for (const int number : {1, 2, 3, 5, 6, 7})
        EXPECT_LT(place(number), place(number + 1)) << "each station's in their order";
    EXPECT_LT(place(8), place(4)) << "the living do not wait for all of the dead";
    std::vector<int> between; // reads of the living, before each write to the dead
    int reads = 0;
    for (const Sent& each : sent) {
        reads += each.function == 3 ? 1 : 0;
        if (each.function == 6 && each.station == 2)
            between.push_back(std::exchange(reads, 0));
    }
    ASSERT_EQ(between.size(), 8U) << "each twice";
    EXPECT_GE(between.at(4), 1) << "values are read between two of them";
    EXPECT_GE(between.at(6), 1);
    for (int number = 1; number <= 4; ++number)
        EXPECT_EQ(outcomes[number], "no answer: no byte came");
    for (int number = 5; number <= 8; ++number)
        EXPECT_EQ(outcomes[number], "accepted");
}

TEST_F(DeadStation, WritesToTheLivingKeepTheirOrder)
{
    silentStations.clear();
    std::vector<int> order;
    for (int number = 0; number < 12; ++number)
        session->write(wordOf(1 + number / 2 % 2, 20 + number),
                       [&order, number](const Result&) { order.push_back(number); });
    ASSERT_TRUE(waitUntil([&order]() { return order.size() == 12; }));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_F(DeadStation, ALonelySilentRequestIsPutOffAlone)
{
    // Nobody answers for R_W:500.
    silentStations.clear();
    const auto controller = slave.arrived;
    slave.arrived = [&](const QByteArray& bytes) {
        if (bytes.startsWith(QByteArray::fromHex("020306F4")))
            sent.push_back({Clock::now(), 0, 0, polls, {}});
        else
            controller(bytes);
    };
    watch({words("R_W", 10, 1, 2), words("R_W", 100, 1, 2), words("R_W", 500, 2, 2)});
    ASSERT_TRUE(waitUntil([this]() { return notices.size() == 1; }));
    EXPECT_THAT(notices.front(),
                ::testing::StartsWith("station 2 answers others, but not 2#R_W500(2) since "));
    const long long before = countersOf("read  2#R_W10(1)").good;
    ASSERT_TRUE(waitUntil([this]() { return sentTo(0).size() >= 6; }));
    const std::vector<Sent> inVain = sentTo(0); // twice two in vain, then probes
    EXPECT_GE(inVain.at(4).at - inVain.at(3).at, seconds(1));
    EXPECT_GE(inVain.at(5).at - inVain.at(4).at, seconds(2));
    EXPECT_GT(countersOf("read  2#R_W10(1)").good, before + 20);
    EXPECT_EQ(notices.size(), 1U);
    slave.arrived = controller;
    ASSERT_TRUE(waitUntil([this]() { return notices.size() == 2; }));
    EXPECT_EQ(notices.at(1), "station 2 answers 2#R_W500(2) again");
}

} // namespace

} // namespace dov417
