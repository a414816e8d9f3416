#include <QTimer>
#include <optional>
#include <thread>

#include "session/recipe_job.h"
#include "session/write_job.h"
#include "session_world.h"

namespace dov417 {

namespace {

using std::chrono::minutes;

// What happens to what is under way while somebody closes, opens or changes something.
class UnderWayOnALine : public SessionOnALine {
protected:
    UnderWayOnALine()
    {
        next.arrived = [this](const QByteArray& bytes) {
            atNext += bytes;
            next.send(bytes);
        };
        nextLine = line;
        nextLine.device = next.port();
    }
    // A recipe, in another function than single writes: for those it would have to wait until no
    // late reply can be mixed up with its own.
    void download(int number)
    {
        session->transferRecipe(
            layOutRecipe({words("R_W", 40, 2)}), RecipeDirection::download, {1, 1},
            [this, number](const Result& result, const RecipeWords&) { outcome(number)(result); });
    }
    void openALineThatIsSilent()
    {
        line.timeout = minutes(10);
        ASSERT_TRUE(session->open(line).accepted);
        beAController();
        isSilent = true;
    }

    PtySlave next;
    QByteArray atNext;
    LineSettings nextLine;
};

Item itemOf(const Address& address)
{
    return {"item", address, Format(), ""};
}

TEST_F(UnderWayOnALine, AListenerThatRunsAnEventLoopOfItsOwnKeepsNobodyFromHearing)
{
    beAController();
    bool heard = false;
    session->readOnce(words("R_W", 10), [&](const Result&) {
        session->readOnce(words("R_W", 20), [&](const Result&) { heard = true; });
        EXPECT_TRUE(waitUntil([&]() { return heard; }));
    });
    ASSERT_TRUE(waitUntil([&]() { return heard; }));
}

TEST_F(UnderWayOnALine, WhoAsksAgainAndAgainIsRefusedWithoutStoppingTheProgram)
{
    session->close();
    bool isAlive = false;
    int refusals = 0;
    Done again = [&](const Result& result) {
        EXPECT_EQ(result.reason, "the line is closed");
        ++refusals;
        if (!isAlive)
            session->write(wordWrite("R_W", 10, 1), again);
    };
    QTimer::singleShot(0, session.get(), [&]() { isAlive = true; });
    session->write(wordWrite("R_W", 10, 1), again);
    ASSERT_TRUE(waitUntil([&]() { return isAlive && refusals > 1; }));
}

TEST_F(UnderWayOnALine, WhatIsStartedOnALineInBetweenDoesNotReachTheNext)
{
    openALineThatIsSilent();
    PtySlave between;
    session->write(wordWrite("R_W", 20, 1), [&](const Result& result) {
        EXPECT_EQ(result.reason, "another line is opened");
        LineSettings other = line;
        other.device = between.port();
        EXPECT_TRUE(session->open(other).accepted);
        session->write(wordWrite("R_W", 21, 2), outcome(1));
    });
    ASSERT_TRUE(session->open(nextLine).accepted);
    session->readOnce(words("R_W", 50), nullptr);
    ASSERT_TRUE(waitUntil([this]() { return atNext.size() >= 8; }));
    EXPECT_EQ(atNext, withCrc(QByteArray::fromHex("010305320001")));
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(outcomes.at(1), "another line is opened");
}

TEST_F(UnderWayOnALine, AWriteJobDoesNotGoOnOnTheNextLine)
{
    openALineThatIsSilent();
    session->write(wordWrite("R_W", 20, 1),
                   [this](const Result&) { EXPECT_TRUE(session->open(nextLine).accepted); });
    bool ended = false;
    WriteJob job(*session, [&]() { ended = true; });
    WriteTask task;
    task.item = itemOf(words("R_W", 10));
    task.data = {5, 0};
    job.start({task});
    // The listener of the first opens the next line before the job hears that its read has ended.
    session->close();
    ASSERT_TRUE(waitUntil([&]() { return ended; }));
    EXPECT_EQ(job.tasks().at(0).result, WriteResult::refused);
    EXPECT_EQ(job.tasks().at(0).reason, "the line was closed");
    session->readOnce(words("R_W", 50), outcome(1));
    ASSERT_TRUE(waitUntil([this]() { return atNext.size() >= 8; }));
    EXPECT_EQ(atNext, withCrc(QByteArray::fromHex("010305320001")));
}

TEST_F(UnderWayOnALine, AWriteJobDoesNotGoOnWithAnotherGapThatWouldCutItsValues)
{
    openALineThatIsSilent();
    bool ended = false;
    WriteJob job(*session, [&]() { ended = true; });
    WriteTask task;
    task.item = itemOf(doubleWords("R_D", 10));
    task.data = {5, 0, 0, 0};
    job.start({task});
    session->setSettings({2, 1});
    ASSERT_TRUE(waitUntil([&]() { return ended; }));
    EXPECT_EQ(job.tasks().at(0).result, WriteResult::refused);
}

TEST_F(UnderWayOnALine, ARecipeJobWritesItsBitsToTheControllerThatGotItsWords)
{
    beAController();
    // Told before the recipe's own outcome, as it belongs to the same transmission.
    const int before = session->generation();
    QObject::connect(session.get(), &Session::transmissionEnded, session.get(),
                     [this, before](const Transmission&) {
                         if (session->generation() == before) {
                             EXPECT_TRUE(session->open(nextLine).accepted);
                         }
                     });
    bool ended = false;
    RecipeJob job(*session, [&]() { ended = true; });
    job.download({{itemOf(words("R_W", 10)), {5, 0}}, {itemOf(bits("M_bit", 16)), {1}}});
    ASSERT_TRUE(waitUntil([&]() { return ended; }));
    EXPECT_EQ(job.problems(),
              std::vector<std::string>{"the line or its settings were changed meanwhile"});
    session->readOnce(words("R_W", 50), outcome(1));
    ASSERT_TRUE(waitUntil([this]() { return atNext.size() >= 8; }));
    EXPECT_EQ(atNext, withCrc(QByteArray::fromHex("010305320001")));
}

TEST_F(UnderWayOnALine, WhatWasReadBeforeAChangeIsNotCalledReadAfterIt)
{
    // The driver has forgotten the first by then.
    beAController();
    std::optional<ReadResults> results;
    QObject::connect(session.get(), &Session::transmissionEnded, session.get(),
                     [this](const Transmission&) {
                         session->setSettings({2, 4});
                     });
    readAll(*session, {words("R_W", 10), words("R_W", 50)},
            [&](const ReadResults& read) { results = read; });
    ASSERT_TRUE(waitUntil([&]() { return results.has_value(); }));
    EXPECT_THAT(*results, ::testing::ElementsAre(
                              ::testing::Field(&Result::reason,
                                               "the line or its settings were changed meanwhile"),
                              ::testing::Field(&Result::reason, "the settings were changed")));
}

TEST_F(UnderWayOnALine, ARecipeBeginsAfterOtherSettingsWhileThePortIsAway)
{
    openALineThatIsSilent();
    bool isOpen = true;
    QObject::connect(session.get(), &Session::portChanged, session.get(),
                     [&](bool open, const std::string&) { isOpen = open; });
    session->write(wordWrite("R_W", 20, 1), outcome(1));
    ASSERT_TRUE(waitUntil([this]() { return requests == 1; }));
    slave.unplug();
    ASSERT_TRUE(waitUntil([&]() { return !isOpen; }));
    session->setSettings({2, 4});
    download(2);
    isSilent = false;
    slave.plug();
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(outcomes.at(1), "the settings were changed");
    EXPECT_EQ(outcomes.at(2), "accepted");
}

TEST_F(UnderWayOnALine, AWriteThatIsEndedWithThePortNeverGoesOutToWhateverIsThereThen)
{
    openALineThatIsSilent();
    bool isOpen = true;
    QObject::connect(session.get(), &Session::portChanged, session.get(),
                     [&](bool open, const std::string&) {
                         isOpen = open;
                         if (!open)
                             session->endWithPort("it is gone");
                     });
    session->write(wordWrite("R_W", 20, 7), outcome(1));
    session->write(wordWrite("R_W", 21, 7), outcome(2));
    ASSERT_TRUE(waitUntil([this]() { return requests == 1; }));
    slave.unplug();
    ASSERT_TRUE(waitForOutcomes(2));
    const std::string reason =
        "it is gone; whether the controller has taken what was on its way is not known";
    EXPECT_EQ(outcomes.at(1), reason);
    EXPECT_EQ(outcomes.at(2), reason);
    EXPECT_EQ(session->writesUnderWay(), 0U);
    isSilent = false;
    received.clear();
    slave.plug();
    session->readOnce(words("R_W", 20), outcome(3));
    ASSERT_TRUE(waitForOutcomes(3));
    EXPECT_EQ(outcomes.at(3), "accepted");
    session->readOnce(words("R_W", 30), outcome(4));
    ASSERT_TRUE(waitForOutcomes(4));
    EXPECT_EQ(received.left(2), QByteArray::fromHex("0103"));
    EXPECT_EQ(received.size(), 16) << "two reads";
    EXPECT_EQ(registers.at(0x0500 + 20), 0);
}

TEST_F(UnderWayOnALine, ARecipeBeginsAlthoughAForgottenFrameWasLostWithThePort)
{
    openALineThatIsSilent();
    session->write(wordWrite("R_W", 20, 1), outcome(1));
    ASSERT_TRUE(waitUntil([this]() { return requests == 1; }));
    session->setSettings({2, 4});
    download(2);
    slave.unplug();
    isSilent = false;
    slave.plug();
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(outcomes.at(2), "accepted");
}

TEST_F(UnderWayOnALine, ALineThatHasJustBeenLostCanBeOpenedAtOnce)
{
    beAController();
    session->readOnce(words("R_W", 10), outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    std::this_thread::sleep_for(
        std::chrono::milliseconds(20)); // the silence before a frame is over
    slave.unplug();
    slave.plug();
    // Sent at once, which tells that the port is gone.
    session->readOnce(words("R_W", 10), outcome(2));
    const Result result = session->open(line);
    EXPECT_EQ(result.reason, "");
    EXPECT_TRUE(result.accepted);
    session->readOnce(words("R_W", 10), outcome(3));
    ASSERT_TRUE(waitForOutcomes(3));
    EXPECT_EQ(outcomes.at(2), "another line is opened");
    EXPECT_EQ(outcomes.at(3), "accepted");
}

TEST_F(UnderWayOnALine, ARecipeWaitsForTheWriteThatIsOnTheLine)
{
    beAController();
    session->write(wordWrite("R_W", 20, 1), outcome(1));
    download(2);
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(outcomes.at(1), "accepted");
    EXPECT_EQ(outcomes.at(2), "accepted");
}

TEST_F(UnderWayOnALine, AFrameThatTheDriverHasForgottenIsNoPartOfACycle)
{
    openALineThatIsSilent();
    std::vector<int> requestsAtCycle;
    QObject::connect(session.get(), &Session::cycleEnded, session.get(),
                     [&](long long) { requestsAtCycle.push_back(requests); });
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitUntil([this]() { return requests == 1; }));
    session->setSettings({2, 4});
    isSilent = false;
    slave.send(QByteArray::fromHex("010302002A399B"));
    ASSERT_TRUE(waitUntil([&]() { return !requestsAtCycle.empty(); }));
    EXPECT_GE(requestsAtCycle.front(), 2);
}

TEST_F(UnderWayOnALine, WritesGoOutAfterARecipeThatWasBegunBeforeThem)
{
    beAController();
    download(1);
    session->write(wordWrite("R_W", 40, 2), outcome(2));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(outcomes.at(1), "accepted");
    EXPECT_EQ(outcomes.at(2), "accepted");
    EXPECT_EQ(registers.at(0x0500 + 40), 2);
}

TEST_F(UnderWayOnALine, AFrameThatTheDriverHasForgottenIsCountedAsThat)
{
    openALineThatIsSilent();
    session->readOnce(words("R_W", 10), outcome(1));
    ASSERT_TRUE(waitUntil([this]() { return requests == 1; }));
    session->setSettings({2, 4});
    std::vector<Transmission> ended;
    QObject::connect(session.get(), &Session::transmissionEnded, session.get(),
                     [&](const Transmission& each) { ended.push_back(each); });
    slave.send(QByteArray::fromHex("010302002A399B"));
    ASSERT_TRUE(waitUntil([&]() { return !ended.empty(); }));
    EXPECT_EQ(ended.front().name(), "read  1#R_W10(1)");
    EXPECT_EQ(ended.front().verdict, replyNothingOutstanding);
    EXPECT_EQ(ended.front().reason, "the driver was started anew meanwhile");
    EXPECT_EQ(requestStatistics(session->statistics()),
              std::vector<std::string>{"read  1#R_W10(1): 1 sent, 0 good, 1 forgotten"});
}

TEST_F(UnderWayOnALine, AReplyToTheLineBeforeIsNotTakenForAnother)
{
    beAController();
    isSilent = true;
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitUntil([this]() { return requests == 1; }));
    // The same port again, and another address: the late reply would fit.
    session->watch({words("R_W", 600)});
    ASSERT_TRUE(session->open(line).accepted);
    registers[0x0500 + 600] = 6;
    // The controller answers first what it was asked first.
    const auto controller = slave.arrived;
    bool isAnswered = false;
    const auto answerLate = [&]() {
        if (!isAnswered)
            slave.send(QByteArray::fromHex("010302002A399B"));
        isAnswered = true;
        isSilent = false;
    };
    slave.arrived = [&](const QByteArray& bytes) {
        answerLate();
        controller(bytes);
    };
    QTimer::singleShot(100, session.get(), answerLate);
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(0).hasValue; }));
    EXPECT_EQ(number(session->views().at(0)), 6);
}

TEST_F(UnderWayOnALine, WhatTheDriverWouldCutIsRefused)
{
    session->readOnce(words("R_W", 0, 21), outcome(1));
    session->readOnce(words("R_W", 0, 0), outcome(2));
    session->write({words("R_W", 0, 21), std::vector<unsigned char>(42)}, outcome(3));
    session->write({words("R_W", 0, 2), {1, 0}}, outcome(4));
    session->write({bits("M_bit", 0, 2), {1, 0}}, outcome(5));
    ASSERT_TRUE(waitForOutcomes(5));
    for (int number = 1; number <= 5; ++number)
        EXPECT_EQ(outcomes.at(number), "the driver would not make one request of it") << number;
    EXPECT_EQ(received.size(), 0);
}

} // namespace

} // namespace dov417
