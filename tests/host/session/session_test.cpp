#include "session/session.h"

#include <set>

#include "driver/areas.h"
#include "session_world.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;

TEST_F(SessionOnALine, EqualWritesEachHaveAnOutcomeAndGoOutInOrder)
{
    // The driver alone would replace the queued one by the other.
    for (unsigned char value = 1; value <= 3; ++value)
        session->write(wordWrite("R_W", 100, value), outcome(value));
    ASSERT_TRUE(waitForOutcomes(3));
    for (int value = 1; value <= 3; ++value)
        EXPECT_EQ(outcomes.at(value), "accepted");
    EXPECT_EQ(received.toHex().toStdString(), "010605640001"
                                              "0919"
                                              "010605640002"
                                              "4918"
                                              "010605640003"
                                              "88d8");
}

TEST_F(SessionOnALine, MoreWritesThanTheDriverQueuesAllGoOut)
{
    constexpr int count = 700; // the driver drops writes beyond 513
    for (int address = 0; address < count; ++address)
        session->write(wordWrite("R_W", address, 7), outcome(address));
    EXPECT_EQ(session->writesUnderWay(), static_cast<std::size_t>(count));
    ASSERT_TRUE(waitForOutcomes(count));
    EXPECT_EQ(received.size(), 8 * count);
    for (const auto& [number, outcome] : outcomes)
        EXPECT_EQ(outcome, "accepted") << number;
    EXPECT_EQ(session->writesUnderWay(), 0U);
}

TEST_F(SessionOnALine, AShortAddressInsideALongOneLeavesNoWordUnread)
{
    session->watch({words("R_W", 0, 300), words("R_W", 20, 11)});
    std::set<int> planned;
    for (int i = 0; i < library.driver->readList.size(); ++i)
        for (int word = 0; word < library.driver->readList.at(i).length; ++word)
            planned.insert(library.driver->readList.at(i).address + word);
    EXPECT_EQ(planned.size(), 300U);
}

TEST_F(SessionOnALine, ANumberAndATextInTheSameWordAreBothFollowed)
{
    beAController();
    Address text = words("R_W", 1);
    text.width = Width::text;
    const auto allAre = [this](unsigned char byte) {
        for (const View& view : session->views())
            if (!view.hasValue || view.isOld || view.value != ValueBytes{byte, byte})
                return false;
        return true;
    };
    registers[0x0500 + 1] = registers[0x0500 + 2] = 0x4141;
    session->watch({words("R_W", 1), text});
    ASSERT_TRUE(waitUntil([&]() { return allAre(0x41); }));
    session->watch({words("R_W", 1), text, words("R_W", 2)});
    registers[0x0500 + 1] = registers[0x0500 + 2] = 0x4242;
    EXPECT_TRUE(waitUntil([&]() { return allAre(0x42); }));
    EXPECT_EQ(session->views().at(1).address, text);
}

TEST_F(SessionOnALine, WhatTheDriverDoesNotTakeIsReportedAndTheOthersGoOut)
{
    session->write(wordWrite("X_W", 1, 1), outcome(1));
    session->write(wordWrite("R_W", 1, 1), outcome(2));
    session->readOnce(words("X_W", 0), outcome(3));
    ASSERT_TRUE(waitForOutcomes(3));
    EXPECT_EQ(outcomes.at(1), "1/X_W:1: " + checkSentence(library, checkUnknown, "X_W", ""));
    EXPECT_EQ(outcomes.at(2), "accepted");
    EXPECT_EQ(outcomes.at(3), "1/X_W:0: " + checkSentence(library, checkUnknown, "X_W", ""));
}

TEST_F(SessionOnALine, AValueThatStaysTheSameIsConfirmedByEachReply)
{
    // The age in the table counts from the last reply.
    std::vector<Clock::time_point> answered;
    slave.arrived = [&](const QByteArray& bytes) {
        received += bytes;
        if (received.size() % 8 != 0)
            return;
        answered.push_back(Clock::now());
        if (answered.size() <= 3)
            slave.send(QByteArray::fromHex("010302002A399B"));
    };
    session->watch({words("R_W", 100)});
    for (std::size_t reply = 1; reply <= 3; ++reply) {
        // The next request goes out once this reply has been dealt with.
        ASSERT_TRUE(waitUntil([&]() { return answered.size() > reply; }));
        const View& view = session->views().at(0);
        EXPECT_GE(view.lastGood, answered.at(reply - 1)) << "reply " << reply;
        EXPECT_EQ(view.changes, 0);
    }
}

TEST_F(SessionOnALine, ARecipeWithoutAddressesSetsNoFlag)
{
    // With the flag set the driver would repeat the frame of the first write for ever.
    session->write(wordWrite("R_W", 100, 1), outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    RecipeLayout layout;
    layout.rounds.emplace_back(); // nothing in it, so the driver takes none of it
    std::string recipeOutcome;
    session->transferRecipe(
        layout, RecipeDirection::download, {},
        [&](const Result& result, const RecipeWords&) { recipeOutcome = result.reason; });
    session->write(wordWrite("R_W", 100, 2), outcome(2));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(recipeOutcome, "the driver took none of the recipe's addresses");
    EXPECT_EQ(received.toHex().toStdString(), "010605640001"
                                              "0919"
                                              "010605640002"
                                              "4918");
}

TEST_F(SessionOnALine, ABroadcastOfARegisterBitIsRefusedBeforeItBlocksTheQueue)
{
    Write bit{bits("R_bit", 16), {1}};
    bit.address.station = 0;
    session->write(bit, outcome(1));
    session->write(wordWrite("R_W", 1, 1), outcome(2));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(outcomes.at(1), "0/R_bit:1.0: a bit of a register cannot be written as a broadcast");
    EXPECT_EQ(outcomes.at(2), "accepted");
}

TEST_F(SessionOnALine, NobodyElseUsesItsDriver)
{
    EXPECT_THROW(Session(library, SessionSettings{2, 20}), std::logic_error);
    EXPECT_THROW(learnAreas(library), std::logic_error);
    session.reset();
    EXPECT_NO_THROW(learnAreas(library));
}

// ---- what is watched ------------------------------------------------------------------------

TEST_F(SessionOnALine, AnotherScreenKeepsWhatIsKnownOfTheAddressesThatStay)
{
    beAController();
    registers[0x0500 + 10] = 7;
    session->watch({words("R_W", 10), words("R_W", 300)});
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(0).hasValue; }));
    registers[0x0500 + 10] = 8;
    ASSERT_TRUE(waitUntil([this]() { return number(session->views().at(0)) == 8; }));
    const View before = session->views().at(0);
    EXPECT_EQ(before.changes, 1);

    session->watch({words("R_W", 500), words("R_W", 10)});
    ASSERT_EQ(session->views().size(), 2U);
    EXPECT_EQ(session->views().at(0).quality(), Quality::neverRead);
    const View& after = session->views().at(1);
    EXPECT_EQ(after.quality(), Quality::good);
    EXPECT_EQ(number(after), 8);
    EXPECT_EQ(after.changes, 1);
    EXPECT_EQ(after.lastChange, before.lastChange);
    EXPECT_GE(after.lastGood, before.lastGood);
}

TEST_F(SessionOnALine, OnlyTheAddressesOfThePresentScreenArePolled)
{
    beAController();
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(0).hasValue; }));
    session->watch({words("R_W", 600)});
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(0).hasValue; }));
    received.clear();
    const int asked = requests;
    ASSERT_TRUE(waitUntil([&]() { return requests >= asked + 5; }));
    EXPECT_FALSE(received.contains(QByteArray::fromHex("0103050a"))) << "R_W:10";
    session->watch({});
    EXPECT_TRUE(session->views().empty());
}

TEST_F(SessionOnALine, AValueThatOnlyTheCacheHoldsIsNotShownAsRead)
{
    // Written, so the driver holds it; nobody has read it.
    session->write(wordWrite("R_W", 10, 5), outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    slave.arrived = nullptr; // and nobody answers
    session->watch({words("R_W", 10)});
    EXPECT_EQ(session->views().at(0).quality(), Quality::neverRead);
    EXPECT_FALSE(session->views().at(0).hasValue);
}

TEST_F(SessionOnALine, AReplyToThePlanBeforeDoesNotCountForTheNewCycle)
{
    std::vector<int> requestsAtCycle;
    QObject::connect(session.get(), &Session::cycleEnded, session.get(),
                     [&](long long) { requestsAtCycle.push_back(requests); });
    line.timeout = std::chrono::minutes(10);
    ASSERT_TRUE(session->open(line).accepted);
    // The first request stays on the line until the new plan is made.
    isSilent = true;
    beAController();
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitUntil([this]() { return requests == 1; }));
    session->watch({words("R_W", 600), words("R_W", 900)});
    isSilent = false;
    slave.send(QByteArray::fromHex("010302002A399B"));
    ASSERT_TRUE(waitUntil([&]() { return !requestsAtCycle.empty(); }));
    EXPECT_GE(requestsAtCycle.front(), 3) << "the two requests of the new plan, and the old one";
    EXPECT_TRUE(session->views().at(0).hasValue);
    EXPECT_TRUE(session->views().at(1).hasValue);
}

TEST_F(SessionOnALine, WhatCannotBeReadIsRefused)
{
    EXPECT_TRUE(session->watch({words("R_W", 10)}).accepted);
    const Result result = session->watch({words("R_W", 10, 0)});
    EXPECT_FALSE(result.accepted);
    EXPECT_EQ(result.reason, "1/R_W:10 is no address of its register type");
    EXPECT_TRUE(session->watch({}).accepted);
}

TEST_F(SessionOnALine, AListenerMayOpenAnotherScreenWhileItIsTold)
{
    beAController();
    int told = 0;
    QObject::connect(session.get(), &Session::changed, session.get(), [&](const ViewChanges&) {
        if (++told < 20)
            session->watch({words("R_W", 100 * told), words("R_W", 100 * told + 50)});
    });
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitUntil([&]() { return told >= 20; }));
    ASSERT_EQ(session->views().size(), 2U);
    EXPECT_EQ(session->views().at(0).address.first, 1900);
}

TEST_F(SessionOnALine, SeveralListenersHearTheSameInBatchesThatAreCopies)
{
    beAController();
    registers[0x0500 + 10] = 3;
    registers[0x0500 + 11] = 4;
    std::vector<std::vector<int>> first;
    std::vector<std::vector<int>> second;
    for (auto* heard : {&first, &second})
        QObject::connect(session.get(), &Session::changed, session.get(),
                         [this, heard](const ViewChanges& changes) {
                             std::vector<int> values;
                             for (const ViewChange& change : changes)
                                 values.push_back(number(change.view));
                             heard->push_back(values);
                             session->watch({}); // what was told does not change by this
                         });
    session->watch({words("R_W", 10, 2)});
    ASSERT_TRUE(waitUntil([&]() { return !second.empty(); }));
    EXPECT_EQ(first, (std::vector<std::vector<int>>{{3, 4}}));
    EXPECT_EQ(second, first);
}

// ---- quality --------------------------------------------------------------------------------

TEST_F(SessionOnALine, AValueIsOldWhileItsRequestFailsAndGoodAgainAfterwards)
{
    line.timeout = milliseconds(20);
    ASSERT_TRUE(session->open(line).accepted);
    beAController();
    registers[0x0500 + 10] = 7;
    std::vector<Quality> qualities;
    QObject::connect(session.get(), &Session::changed, session.get(),
                     [&](const ViewChanges& changes) {
                         for (const ViewChange& change : changes)
                             qualities.push_back(change.view.quality());
                     });
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitUntil([&]() { return qualities.size() == 1; }));
    isSilent = true;
    ASSERT_TRUE(waitUntil([&]() { return qualities.size() == 2; }));
    EXPECT_EQ(number(session->views().at(0)), 7) << "what was last known stays";
    isSilent = false;
    ASSERT_TRUE(waitUntil([&]() { return qualities.size() == 3; }));
    EXPECT_EQ(qualities, (std::vector<Quality>{Quality::good, Quality::old, Quality::good}));
    EXPECT_EQ(session->views().at(0).changes, 0);
}

TEST_F(SessionOnALine, AValueIsBeingWrittenFromTheCallUntilTheOutcome)
{
    beAController();
    session->watch({words("R_W", 10), words("R_W", 11)});
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(1).hasValue; }));
    session->write(wordWrite("R_W", 10, 5), outcome(1));
    EXPECT_EQ(session->views().at(0).quality(), Quality::beingWritten);
    EXPECT_EQ(session->views().at(1).quality(), Quality::good);
    // Planning anew clears the driver's own marks.
    session->watch({words("R_W", 11), words("R_W", 10)});
    EXPECT_EQ(session->views().at(0).quality(), Quality::good);
    EXPECT_EQ(session->views().at(1).quality(), Quality::beingWritten);
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(session->views().at(1).quality(), Quality::good);
    ASSERT_TRUE(waitUntil([this]() { return number(session->views().at(1)) == 5; }));
}

TEST_F(SessionOnALine, AWriteOfOneBitLeavesTheOtherBitsOfItsWordAsTheyAre)
{
    slave.arrived = nullptr;
    session->watch({bits("M_bit", 16, 2), words("M_W", 1)});
    session->write({bits("M_bit", 17), {1}}, outcome(1));
    EXPECT_EQ(session->views().at(0).writes, 0);
    EXPECT_EQ(session->views().at(1).writes, 1);
    EXPECT_EQ(session->views().at(2).writes, 1) << "the word holds the bit";
}

// ---- the line is changed while the session lives --------------------------------------------

TEST_F(SessionOnALine, ClosingEndsEverythingWithItsReasonAndTheValuesAreOld)
{
    line.timeout = std::chrono::minutes(10);
    ASSERT_TRUE(session->open(line).accepted);
    beAController();
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(0).hasValue; }));
    isSilent = true;
    session->write(wordWrite("R_W", 20, 1), outcome(1));
    session->write(wordWrite("R_W", 20, 2), outcome(2));
    session->readOnce(words("R_W", 30), outcome(3));
    std::string recipe;
    session->transferRecipe(
        layOutRecipe({words("R_W", 40, 2)}), RecipeDirection::download, {1, 2},
        [&](const Result& result, const RecipeWords&) { recipe = result.reason; });
    session->close("somebody pulled the plug");
    for (int number = 1; number <= 3; ++number)
        EXPECT_EQ(outcomes[number], "somebody pulled the plug") << number;
    EXPECT_EQ(recipe, "somebody pulled the plug");
    EXPECT_FALSE(session->isOpen());
    EXPECT_EQ(session->writesUnderWay(), 0U);
    EXPECT_EQ(session->views().at(0).quality(), Quality::old);
    session->write(wordWrite("R_W", 20, 3), outcome(4));
    ASSERT_TRUE(waitForOutcomes(4));
    EXPECT_EQ(outcomes.at(4), "the line is closed");
}

TEST_F(SessionOnALine, NothingThatWasMeantForOneControllerReachesTheNext)
{
    line.timeout = std::chrono::minutes(10);
    ASSERT_TRUE(session->open(line).accepted);
    beAController();
    isSilent = true;
    registers[0x0500 + 40] = 1;
    session->write(wordWrite("R_W", 20, 1), outcome(1));
    ASSERT_TRUE(waitUntil([this]() { return requests == 1; }));
    session->write(wordWrite("R_W", 21, 1), outcome(2));
    session->readOnce(words("R_W", 30), outcome(3));

    PtySlave next;
    QByteArray atNext;
    next.arrived = [&](const QByteArray& bytes) { atNext += bytes; };
    line.device = next.port();
    ASSERT_TRUE(session->open(line).accepted);
    EXPECT_EQ(outcomes.size(), 3U);
    session->readOnce(words("R_W", 50), outcome(4));
    ASSERT_TRUE(waitUntil([&]() { return atNext.size() >= 8; }));
    EXPECT_EQ(atNext, withCrc(QByteArray::fromHex("010305320001")));
}

TEST_F(SessionOnALine, ARecipeThatWasUnderWayDoesNotGoOnElsewhere)
{
    line.timeout = std::chrono::minutes(10);
    ASSERT_TRUE(session->open(line).accepted);
    beAController();
    // Two requests; the first is answered, the second stays on the line.
    session->transferRecipe(layOutRecipe({words("R_W", 40), words("R_W", 60)}),
                            RecipeDirection::download, {1, 2}, nullptr);
    ASSERT_TRUE(waitUntil([this]() { return requests >= 1; }));
    isSilent = true;
    ASSERT_TRUE(waitUntil([this]() { return requests == 2; }));

    PtySlave next;
    QByteArray atNext;
    next.arrived = [&](const QByteArray& bytes) {
        atNext += bytes;
        next.send(bytes);
    };
    line.device = next.port();
    ASSERT_TRUE(session->open(line).accepted);
    bool ended = false;
    session->transferRecipe(layOutRecipe({words("R_W", 70), words("R_W", 80)}),
                            RecipeDirection::download, {3, 4},
                            [&](const Result& result, const RecipeWords&) {
                                ended = true;
                                EXPECT_TRUE(result.accepted) << result.reason;
                            });
    ASSERT_TRUE(waitUntil([&]() { return ended; }));
    EXPECT_EQ(atNext, withCrc(QByteArray::fromHex("010605460003")) +
                          withCrc(QByteArray::fromHex("010605500004")))
        << "both requests of the new recipe, from its first on";
}

TEST_F(SessionOnALine, ValuesOfOneControllerAreNotShownAsTheNextOnes)
{
    beAController();
    registers[0x0500 + 10] = 7;
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(0).hasValue; }));
    isSilent = true;
    ASSERT_TRUE(session->open(line).accepted);
    EXPECT_EQ(session->views().at(0).quality(), Quality::neverRead);
    EXPECT_FALSE(session->views().at(0).hasValue);
    isSilent = false;
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(0).hasValue; }));
    EXPECT_EQ(number(session->views().at(0)), 7);
    EXPECT_EQ(session->views().at(0).changes, 0);
}

TEST_F(SessionOnALine, AnotherGapPlansAnewAndTheValuesAreOldUntilTheyAreRead)
{
    beAController();
    registers[0x0500 + 10] = 7;
    session->watch({words("R_W", 10), words("R_W", 20)});
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(1).hasValue; }));
    EXPECT_EQ(library.driver->readList.size(), 1);
    registers[0x0500 + 10] = 0; // what the driver's empty cache holds too: it announces nothing
    session->setSettings({2, 4});
    EXPECT_EQ(library.driver->readList.size(), 2);
    EXPECT_EQ(session->views().at(0).quality(), Quality::old);
    ASSERT_TRUE(waitUntil([this]() { return session->views().at(0).quality() == Quality::good; }));
    EXPECT_EQ(number(session->views().at(0)), 0);
    EXPECT_EQ(session->views().at(0).changes, 1);
}

TEST_F(SessionOnALine, AnotherGapEndsWhatIsUnderWay)
{
    line.timeout = std::chrono::minutes(10);
    ASSERT_TRUE(session->open(line).accepted);
    beAController();
    isSilent = true;
    session->write(wordWrite("R_W", 20, 1), outcome(1));
    ASSERT_TRUE(waitUntil([this]() { return requests == 1; }));
    session->setSettings({2, 4});
    EXPECT_EQ(outcomes[1], "the settings were changed");
    // The answer to it is nobody's, and the line goes on.
    isSilent = false;
    session->readOnce(words("R_W", 10), outcome(2));
    slave.send(withCrc(QByteArray::fromHex("010605140001")));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(outcomes.at(2), "accepted");
}

TEST_F(SessionOnALine, APortThatWasLostAndComesBackGoesOnWhereItWas)
{
    beAController();
    isSilent = true;
    session->write(wordWrite("R_W", 20, 1), outcome(1));
    ASSERT_TRUE(waitUntil([this]() { return requests == 1; }));
    slave.unplug();
    bool isBack = false;
    QObject::connect(session.get(), &Session::portChanged, session.get(),
                     [&](bool open, const std::string&) { isBack = open; });
    isSilent = false;
    slave.plug();
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(outcomes.at(1), "accepted");
    EXPECT_TRUE(isBack);
}

TEST_F(SessionOnALine, APortThatCannotBeHadIsRefusedInWords)
{
    line.device = QStringLiteral("/dev/there_is_none");
    const Result result = session->open(line);
    EXPECT_FALSE(result.accepted);
    EXPECT_EQ(result.reason, "there is no port /dev/there_is_none");
    EXPECT_FALSE(session->isOpen());
}

TEST_F(SessionOnALine, AListenerMayCloseTheLineWhileItIsTold)
{
    beAController();
    int closed = 0;
    QObject::connect(session.get(), &Session::transmissionEnded, session.get(),
                     [&](const Transmission&) {
                         ++closed;
                         session->close();
                     });
    session->watch({words("R_W", 10)});
    ASSERT_TRUE(waitUntil([&]() { return closed > 0; }));
    EXPECT_FALSE(session->isOpen());
}

// ---- recipes --------------------------------------------------------------------------------

TEST_F(SessionOnALine, ARecipeWithAPlaceOutsideTheBufferIsRefused)
{
    for (const int offset : {-1, 1}) {
        RecipeLayout layout = layOutRecipe({words("R_W", 40, 2)});
        layout.rounds.at(0).at(0).bufferOffset = offset;
        std::string reason;
        session->transferRecipe(
            layout, RecipeDirection::download, {1, 2},
            [&](const Result& result, const RecipeWords&) { reason = result.reason; });
        ASSERT_TRUE(waitUntil([&]() { return !reason.empty(); }));
        EXPECT_EQ(reason, "a recipe record lies outside the buffer") << offset;
    }
    EXPECT_EQ(received.size(), 0);
}

TEST_F(SessionOnALine, OneRecipeAtATime)
{
    beAController();
    std::vector<std::string> reasons;
    const auto note = [&](const Result& result, const RecipeWords&) {
        reasons.push_back(result.accepted ? "accepted" : result.reason);
    };
    session->transferRecipe(layOutRecipe({words("R_W", 40)}), RecipeDirection::upload, {}, note);
    session->transferRecipe(layOutRecipe({words("R_W", 50)}), RecipeDirection::upload, {}, note);
    ASSERT_TRUE(waitUntil([&]() { return reasons.size() == 2; }));
    EXPECT_EQ(reasons.at(0), "another recipe is under way");
    EXPECT_EQ(reasons.at(1), "accepted");
}

TEST_F(SessionOnALine, AnUploadHandsOverTheWordsThatItRead)
{
    beAController();
    registers[0x0500 + 40] = 4711;
    RecipeWords uploaded;
    session->transferRecipe(layOutRecipe({words("R_W", 40)}), RecipeDirection::upload, {},
                            [&](const Result&, const RecipeWords& recipe) { uploaded = recipe; });
    ASSERT_TRUE(waitUntil([&]() { return !uploaded.empty(); }));
    EXPECT_EQ(uploaded, RecipeWords{4711});
}

TEST_F(SessionOnALine, TheProgressOfARecipeCountsNoWordsOfTheOneBefore)
{
    beAController();
    for (const int length : {3, 2}) {
        bool ended = false;
        session->transferRecipe(layOutRecipe({words("R_W", 40, length)}), RecipeDirection::upload,
                                {}, [&](const Result&, const RecipeWords&) { ended = true; });
        ASSERT_TRUE(waitUntil([&]() { return ended; }));
        EXPECT_EQ(session->recipeWordsMoved(), static_cast<std::size_t>(length));
    }
}

// ---- transmissions --------------------------------------------------------------------------

TEST_F(SessionOnALine, EachTransmissionIsOneRecordFromItsFirstByteToItsOutcome)
{
    beAController();
    registers[0x0500 + 10] = 42;
    std::vector<Transmission> begun;
    std::vector<Transmission> ended;
    QObject::connect(session.get(), &Session::transmissionBegan, session.get(),
                     [&](const Transmission& each) { begun.push_back(each); });
    QObject::connect(session.get(), &Session::transmissionEnded, session.get(),
                     [&](const Transmission& each) { ended.push_back(each); });
    session->readOnce(words("R_W", 10), outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    ASSERT_EQ(begun.size(), 1U);
    ASSERT_EQ(ended.size(), 1U);
    const Transmission& record = ended.front();
    EXPECT_EQ(record.number, begun.front().number);
    EXPECT_EQ(record.sent, QByteArray::fromHex("0103050A0001A4C4"));
    EXPECT_EQ(record.request.regName, "R_W");
    EXPECT_EQ(record.request.address, 10);
    EXPECT_FALSE(record.repeats);
    EXPECT_LT(record.sendBegin, record.sendEnd);
    EXPECT_LE(record.reception.firstByte, record.reception.lastByte);
    EXPECT_LT(record.sendBegin, record.reception.firstByte);
    EXPECT_EQ(record.reception.bytes, QByteArray::fromHex("010302002A399B"));
    EXPECT_EQ(record.verdict, replyAccepted);
    EXPECT_EQ(record.name(), "read  1#R_W10(1)");
}

TEST_F(SessionOnALine, ALateReplyNamesTheTransmissionThatItAnswers)
{
    line.timeout = milliseconds(20);
    ASSERT_TRUE(session->open(line).accepted);
    slave.arrived = nullptr;
    std::vector<Transmission> ended;
    std::vector<Stray> strays;
    QObject::connect(session.get(), &Session::transmissionEnded, session.get(),
                     [&](const Transmission& each) { ended.push_back(each); });
    QObject::connect(session.get(), &Session::strayCame, session.get(),
                     [&](const Stray& stray) { strays.push_back(stray); });
    session->readOnce(words("R_W", 10), outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    ASSERT_EQ(ended.size(), 2U);
    EXPECT_TRUE(ended.at(1).repeats);
    slave.send(QByteArray::fromHex("010302002A399B"));
    ASSERT_TRUE(waitUntil([&]() { return !strays.empty(); }));
    EXPECT_EQ(strays.front().answers, ended.front().number);
}

} // namespace

} // namespace dov417
