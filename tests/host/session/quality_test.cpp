#include <algorithm>

#include "session/recipe_layout.h"
#include "session/single_reads.h"
#include "session_world.h"

namespace dov417 {

namespace {

constexpr int r = 0x0500; // R_W:0 on the line

class QualityOnALine : public SessionOnALine {
protected:
    const View& view(std::size_t index) const
    {
        return session->views().at(index);
    }
    bool waitForGood(std::size_t index)
    {
        return waitUntil([this, index]() { return view(index).quality() == Quality::good; });
    }
    // So many further requests, each answered before the next goes out.
    bool waitForRequests(int count)
    {
        const int last = requests + count + 1;
        return waitUntil([this, last]() { return requests >= last; });
    }
    long long whole(std::size_t index) const
    {
        const ValueBytes& value = view(index).value;
        return value.at(0) + 256LL * value.at(1) + 65536LL * (value.at(2) + 256LL * value.at(3));
    }
};

// A controller that works on while it is written to, and what of it is shown.
class QualityOfPartsOnALine : public QualityOnALine {
protected:
    // work: before each request.
    void beBusy(const std::function<void()>& work)
    {
        beAController();
        const auto controller = slave.arrived;
        slave.arrived = [this, work, controller](const QByteArray& bytes) {
            work();
            hold();
            controller(bytes);
            hold();
        };
        QObject::connect(session.get(), &Session::changed, session.get(),
                         [this](const ViewChanges& told) {
                             for (const ViewChange& change : told)
                                 if (change.index == 0)
                                     take(change.view);
                         });
    }
    void take(const View& view)
    {
        qualities.push_back(view.quality());
        if (!view.hasValue)
            return;
        const bool isWord = view.value.size() == 2;
        const long long shown = isWord ? number(view) : whole(0);
        EXPECT_TRUE(isWord ? heldWords.count(shown) : held.count(shown)) << shown;
    }
    bool isGoodAgain() const
    {
        return qualities.back() == Quality::good &&
               std::count(qualities.begin(), qualities.end(), Quality::old) > 0;
    }
    void hold()
    {
        heldWords.insert(registers[r + 10]);
        held.insert(registers[r + 10] + 65536LL * registers[r + 11]);
    }

    std::set<long long> heldWords; // R_W:10
    std::set<long long> held;      // R_D:10
    std::vector<Quality> qualities;
};

TEST_F(QualityOfPartsOnALine, AWriteOfHalfADoubleWordWaitsForTheReplyThatHasBoth)
{
    int work = 0;
    beBusy([&]() { registers[r + 11] += work; });
    registers[r + 10] = 7;
    registers[r + 11] = 9;
    session->watch({doubleWords("R_D", 10)});
    ASSERT_TRUE(waitForGood(0));
    work = 1;
    session->write(wordWrite("R_W", 10, 5), outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    ASSERT_TRUE(waitUntil([this]() { return isGoodAgain(); }));
    EXPECT_EQ(whole(0) % 65536, 5);
    EXPECT_EQ(view(0).lapses, 1);
    // Nothing between the write and what was read after it.
    const auto written = std::find(qualities.begin(), qualities.end(), Quality::beingWritten);
    const auto old = std::find(written, qualities.end(), Quality::old);
    EXPECT_EQ(std::count(written, old, Quality::good), 0);
}

TEST_F(QualityOfPartsOnALine, AWriteOfABitIsShownInItsWordOnceThatWasReadWhole)
{
    int work = 0;
    beBusy([&]() { registers[r + 10] += work; });
    session->watch({words("R_W", 10), bits("R_bit", 160)});
    ASSERT_TRUE(waitForGood(1));
    work = 2; // the driver reads the other bits before, and writes them as they were
    int shown = -1;
    session->write({bits("R_bit", 160), {1}}, [&](const Result&) { shown = view(1).value.at(0); });
    ASSERT_TRUE(waitUntil([&]() { return shown >= 0; }));
    EXPECT_EQ(shown, 1) << "it is what was written";
    ASSERT_TRUE(waitUntil([this]() { return isGoodAgain(); }));
    EXPECT_EQ(number(view(0)) % 2, 1);
}

TEST_F(QualityOnALine, AWordAndABitOfItWrittenAtOnceShowWhatCameOut)
{
    beAController();
    registers[r + 10] = 0x0100;
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitForGood(0));
    session->write({bits("R_bit", 160), {1}}, outcome(1));
    session->write(wordWrite("R_W", 10, 0x40), outcome(2));
    ASSERT_TRUE(waitForOutcomes(2));
    ASSERT_TRUE(waitForRequests(2));
    EXPECT_EQ(registers.at(r + 10), 0x40);
    EXPECT_EQ(number(view(0)), 0x40);
}

TEST_F(QualityOnALine, OfTwoWritesOfAWordTheRefusedOneLeavesWhatTheOtherHasWritten)
{
    beAController();
    session->watch({words("R_W", 11)});
    ASSERT_TRUE(waitForGood(0));
    const auto controller = slave.arrived;
    slave.arrived = [&](const QByteArray& bytes) {
        controller(bytes);
        if (registers.at(r + 11) == 5)
            illegal = {r + 11}; // from now on
    };
    session->write({words("R_W", 10, 2), {4, 0, 5, 0}}, outcome(1));
    int shown = 0;
    session->write(wordWrite("R_W", 11, 6), [&](const Result& result) {
        EXPECT_FALSE(result.accepted);
        shown = number(view(0));
    });
    ASSERT_TRUE(waitUntil([&]() { return shown != 0; }));
    EXPECT_EQ(outcomes.at(1), "accepted");
    EXPECT_EQ(shown, 5);
}

TEST_F(QualityOnALine, AWriteThatWasRefusedIsNotShownEvenAfterAnotherScreen)
{
    beAController();
    registers[r + 10] = 7;
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitForGood(0));
    // Held by the controller until both calls are made, then refused; and nothing is read any more.
    isSilent = true;
    const int asked = requests;
    ASSERT_TRUE(waitUntil([&]() { return requests > asked; }));
    session->write(wordWrite("R_W", 10, 5), outcome(1));
    session->watch({words("R_W", 10), words("R_W", 600)});
    isSilent = false;
    illegal = {r + 10};
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(number(view(0)), 7);
}

TEST_F(QualityOnALine, WhatWasWrittenIsShownWithItsOutcomeAfterAnotherScreenToo)
{
    beAController();
    registers[r + 10] = 7;
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitForGood(0));
    session->watch({words("R_W", 600), words("R_W", 10)});
    std::vector<int> shown;
    session->write(wordWrite("R_W", 10, 5),
                   [&](const Result&) { shown.push_back(number(view(1))); });
    ASSERT_TRUE(waitUntil([&]() { return !shown.empty(); }));
    EXPECT_EQ(shown, std::vector<int>{5});
}

TEST_F(QualityOnALine, AWriteThatIsEndedByOtherSettingsIsNotShown)
{
    beAController();
    registers[r + 10] = 7;
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitForGood(0));
    isSilent = true;
    session->write(wordWrite("R_W", 10, 5), outcome(1));
    session->setSettings({2, 4});
    EXPECT_EQ(outcomes[1], "the settings were changed");
    EXPECT_EQ(number(view(0)), 7);
    EXPECT_EQ(view(0).quality(), Quality::old);
}

TEST_F(QualityOnALine, AValueOfWhichOnePartCannotBeReadIsNeverGood)
{
    beAController();
    session->setSettings({1, 1});
    registers[r + 200] = 7;
    registers[r + 201] = 9;
    // Two runs of 128 words, the first of which ends within the double word.
    session->watch({words("R_W", 73, 128), doubleWords("R_D", 200)});
    ASSERT_EQ(library.driver->readList.size(), 2);
    std::vector<Quality> qualities;
    QObject::connect(session.get(), &Session::changed, session.get(),
                     [&](const ViewChanges& changes) {
                         for (const ViewChange& change : changes)
                             if (change.index == 128)
                                 qualities.push_back(change.view.quality());
                     });
    illegal = {r + 201};
    ASSERT_TRUE(waitForRequests(6));
    EXPECT_EQ(view(0).quality(), Quality::good);
    EXPECT_EQ(view(128).quality(), Quality::neverRead);
    EXPECT_EQ(view(128).lastGood, Clock::time_point());
    illegal.clear();
    ASSERT_TRUE(waitForGood(128));
    EXPECT_EQ(whole(128), 9 * 65536 + 7);
    illegal = {r + 201};
    ASSERT_TRUE(waitUntil([this]() { return view(128).quality() == Quality::old; }));
    const Clock::time_point lastGood = view(128).lastGood;
    ASSERT_TRUE(waitForRequests(6));
    EXPECT_EQ(view(128).quality(), Quality::old);
    EXPECT_EQ(view(128).lastGood, lastGood) << "as old as its older part";
    EXPECT_EQ(qualities, (std::vector<Quality>{Quality::good, Quality::old}));
}

TEST_F(QualityOnALine, AnAddressThatCannotBeReadIsRefusedBeforeItKeepsTheOthersFromBeingRead)
{
    beAController();
    EXPECT_TRUE(session->watch({words("R_W", 10)}).accepted);
    // Nor is one shown beyond the highest, where the driver would read another one, or of a station
    // whose number would go round.
    for (const Address& address : {words("X_W", 5), words("R_W", 70000), words("R_W", -1),
                                   words("R_W", 10, 1, 0), words("R_W", 10, 1, 257)}) {
        const Result result = session->watch({words("R_W", 10), address});
        EXPECT_FALSE(result.accepted) << toText(library, address);
        EXPECT_NE(result.reason, "");
        EXPECT_TRUE(session->views().empty());
        EXPECT_TRUE(library.driver->readList.isEmpty());
    }
    EXPECT_TRUE(session->watch({words("R_W", 10)}).accepted);
    EXPECT_TRUE(waitForGood(0));
}

class RepliesThatComeTwice : public QualityOnALine {
protected:
    // Two reads of different length, of which the one is answered once more while the other is out.
    void watchTwo()
    {
        line.timeout = std::chrono::minutes(10);
        ASSERT_TRUE(session->open(line).accepted);
        beAController();
        registers[r + 10] = 7;
        session->watch({words("R_W", 10), words("R_W", 200, 2)});
        ASSERT_TRUE(waitForGood(0));
        ASSERT_TRUE(waitForGood(2));
        session->tellAll();
    }
    void sendACopy()
    {
        isSilent = true;
        const int last = requests;
        ASSERT_TRUE(waitUntil([&]() { return requests > last; }));
        const bool firstIsOut = received.right(8).at(5) == 1;
        slave.send(withCrc(QByteArray::fromHex(firstIsOut ? "01030400000000" : "0103020007")));
        ASSERT_TRUE(waitUntil([this]() { return session->doubts() == 1; }));
    }
    // The request that was kept waiting has its answer.
    void goOn()
    {
        isSilent = false;
        const QByteArray asked = received.right(8);
        slave.arrived(asked);
    }
};

TEST_F(RepliesThatComeTwice, PutWhatWasReadInDoubtUntilItHasBeenReadAgain)
{
    watchTwo();
    std::vector<Quality> qualities;
    std::vector<std::string> notices;
    QObject::connect(session.get(), &Session::changed, session.get(),
                     [&](const ViewChanges& changes) {
                         for (const ViewChange& change : changes)
                             if (change.index == 0)
                                 qualities.push_back(change.view.quality());
                     });
    QObject::connect(session.get(), &Session::noticed, session.get(),
                     [&](const std::string& text) { notices.push_back(text); });
    sendACopy();
    EXPECT_EQ(view(0).quality(), Quality::neverRead);
    EXPECT_EQ(view(2).quality(), Quality::neverRead);
    EXPECT_EQ(view(0).lapses, 1);
    goOn();
    ASSERT_TRUE(waitForGood(0));
    ASSERT_TRUE(waitForGood(2));
    session->tellAll();
    EXPECT_EQ(notices.size(), 1U);
    EXPECT_EQ(qualities, (std::vector<Quality>{Quality::neverRead, Quality::good}));
    EXPECT_EQ(number(view(0)), 7);
}

TEST_F(RepliesThatComeTwice, LeaveNothingGoodOfWhatIsBeingReadMeanwhile)
{
    watchTwo();
    std::string read;
    std::string upload;
    readAll(*session, {words("R_W", 20)},
            [&](const ReadResults& results) { read = results.front().reason; });
    session->transferRecipe(layOutRecipe({words("R_W", 40, 2)}), RecipeDirection::upload, {},
                            [&](const Result& result, const RecipeWords&) {
                                upload = result.accepted ? "accepted" : result.reason;
                            });
    sendACopy();
    goOn();
    ASSERT_TRUE(waitUntil([&]() { return !read.empty() && !upload.empty(); }));
    EXPECT_EQ(read, repliesAreDoubtful);
    EXPECT_EQ(upload, repliesAreDoubtful);
}

TEST_F(QualityOnALine, ValuesAreOldWhileThePortIsAway)
{
    beAController();
    registers[r + 10] = 7;
    session->watch({words("R_W", 10), words("R_W", 600)});
    ASSERT_TRUE(waitForGood(1));
    bool isOpen = true;
    QObject::connect(session.get(), &Session::portChanged, session.get(),
                     [&](bool open, const std::string&) { isOpen = open; });
    slave.unplug();
    ASSERT_TRUE(waitUntil([&]() { return !isOpen; }));
    EXPECT_EQ(view(0).quality(), Quality::old);
    EXPECT_EQ(view(1).quality(), Quality::old);
    slave.plug();
    ASSERT_TRUE(waitForGood(0));
    ASSERT_TRUE(waitForGood(1));
    EXPECT_EQ(number(view(0)), 7);
    EXPECT_EQ(view(0).changes, 0);
    EXPECT_EQ(view(0).lapses, 1);
}

TEST_F(SessionOnALine, AValueOfALateReplyIsAsOldAsTheRequestThatItAnswers)
{
    line.timeout = std::chrono::milliseconds(50);
    ASSERT_TRUE(session->open(line).accepted);
    std::vector<Clock::time_point> arrivals;
    slave.arrived = [&](const QByteArray&) { arrivals.push_back(Clock::now()); };
    // The first request is answered once its time is up.
    QObject::connect(session.get(), &Session::transmissionEnded, session.get(),
                     [this](const Transmission& ended) {
                         if (ended.verdict == replyBad)
                             slave.send(QByteArray::fromHex("010302002A399B"));
                     });
    session->watch({words("R_W", 10)});
    View first;
    QObject::connect(session.get(), &Session::changed, session.get(),
                     [&first](const ViewChanges& changes) {
                         if (!first.hasValue)
                             first = changes.front().view;
                     });
    ASSERT_TRUE(waitUntil([&first]() { return first.hasValue; }));
    EXPECT_EQ(number(first), 42);
    ASSERT_FALSE(arrivals.empty());
    EXPECT_LE(first.lastGood, arrivals.front());
}

} // namespace

} // namespace dov417
