// Requests that are longer than the controller takes.
#include <algorithm>
#include <deque>
#include <gmock/gmock.h>

#include "session_world.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Le;

constexpr int baseOfR = 0x0500;

class PartsOnALine : public SessionOnALine {
protected:
    void SetUp() override
    {
        session = std::make_unique<Session>(library, SessionSettings{2, 0});
        QObject::connect(session.get(), &Session::noticed, session.get(),
                         [this](const std::string& text) { notices.push_back(text); });
        QObject::connect(
            session.get(), &Session::abandoned, session.get(),
            [this](const std::string&, const std::string& reason) { reasons.push_back(reason); });
        beAController();
        for (int word = 0; word < 300; ++word)
            registers[baseOfR + word] = 1000 + word;
    }

    void open(int maxOption, int maxOfController)
    {
        line.maxRegisters = maxOption;
        maxRegisters = maxOfController;
        ASSERT_TRUE(session->open(line).accepted);
    }

    // Counts all registers up between any two requests: halves of two moments differ.
    void countUp()
    {
        const auto answerRequest = slave.arrived;
        slave.arrived = [this, answerRequest](const QByteArray& bytes) {
            for (int word = 0; word < 300; ++word)
                registers[baseOfR + word] = requests;
            answerRequest(bytes);
        };
        QObject::connect(session.get(), &Session::changed, session.get(),
                         [this](const ViewChanges& told) {
                             for (const ViewChange& change : told) {
                                 const ValueBytes& value = change.view.value;
                                 if (change.view.address.width != Width::doubleWord)
                                     continue;
                                 ++changes;
                                 EXPECT_EQ(value.at(0), value.at(2));
                                 EXPECT_EQ(value.at(1), value.at(3));
                             }
                         });
    }

    bool allAreGood() const
    {
        return std::all_of(session->views().begin(), session->views().end(),
                           [](const View& view) { return view.quality() == Quality::good; });
    }

    std::vector<std::string> notices;
    std::vector<std::string> reasons;
    int changes = 0; // of 32-bit values, while they count up
};

TEST_F(PartsOnALine, EveryValueOfALongRunComesFromASmallController)
{
    for (const int maximum : {125, 60, 32, 16}) {
        open(maximum, maximum);
        session->watch({words("R_W", 0, 128)});
        ASSERT_TRUE(waitUntil([this]() { return allAreGood(); }));
        for (int word = 0; word < 128; ++word)
            ASSERT_EQ(number(session->views().at(static_cast<std::size_t>(word))), 1000 + word);
    }
    EXPECT_THAT(notices, IsEmpty());
    EXPECT_THAT(reasons, IsEmpty());
}

TEST_F(PartsOnALine, AStationShowsByItselfWhatItTakesAndIsToldOfOnce)
{
    open(learnedMaximum, 125);
    long long cycles = 0;
    QObject::connect(session.get(), &Session::cycleEnded, session.get(),
                     [&cycles](long long ended) { cycles = ended; });
    session->watch({words("R_W", 0, 128)});
    ASSERT_TRUE(waitUntil([&cycles]() { return cycles >= 3; }));
    EXPECT_TRUE(allAreGood());
    EXPECT_EQ(notices.size(), 1U);
    ASSERT_GE(counts.size(), 7U);
    EXPECT_THAT(std::vector<int>(counts.begin(), counts.begin() + 7),
                ElementsAre(128, 125, 3, 125, 3, 125, 3));
    const RequestCounters counters = session->statistics().total();
    EXPECT_EQ(counters.good, counters.sent) << "the driver's requests";
    EXPECT_EQ(counters.parts, 2 * counters.sent + 1);
    EXPECT_THAT(requestStatistics(session->statistics()).at(0), HasSubstr(" parts"));

    // Another line may lead to another controller. (The last request to the first one may still
    // come.)
    counts.clear();
    open(learnedMaximum, 128);
    ASSERT_TRUE(waitUntil([this]() { return counts.size() > 2 && allAreGood(); }));
    counts.erase(counts.begin(), std::find(counts.begin(), counts.begin() + 1, 128));
    EXPECT_THAT(counts, Each(128));
}

TEST_F(PartsOnALine, WhereItIsForbiddenTheRequestIsRefused)
{
    open(noMaximum, 125);
    session->watch({words("R_W", 0, 128)});
    ASSERT_TRUE(waitUntil([this]() { return !reasons.empty(); }));
    EXPECT_EQ(reasons.front(), "exception 3 (illegal data value)");
    EXPECT_THAT(counts, Each(128));
}

TEST_F(PartsOnALine, ThePartThatFailsIsNamed)
{
    illegal = {baseOfR + 70};
    open(60, 60);
    session->watch({words("R_W", 0, 128)});
    ASSERT_TRUE(waitUntil([this]() { return !reasons.empty(); }));
    EXPECT_EQ(reasons.front(), "exception 2 (illegal data address), in R_W:60..118, part 2 of 3");
    EXPECT_EQ(session->views().front().quality(), Quality::neverRead);
}

TEST_F(PartsOnALine, NoValueIsOfTwoMoments)
{
    countUp();
    for (const int maximum : {2, 3, 16, 61, 125}) {
        open(maximum, maximum);
        counts.clear();
        changes = 0;
        // Values that begin at even and at odd words, in one request.
        session->watch(
            {doubleWords("R_D", 0, 42), words("R_W", 42, 3), doubleWords("R_D", 45, 82)});
        ASSERT_TRUE(waitUntil([this]() { return allAreGood() && changes > 200; }));
        EXPECT_THAT(counts, Each(Le(maximum)));
        session->close();
    }
}

TEST_F(PartsOnALine, AValueThatAnotherReadCutsIsNotTakenFromIt)
{
    countUp();
    open(60, 60);
    session->watch({doubleWords("R_D", 59)});
    // Cut before word 60, as nothing of what is counts for goes on there.
    for (int i = 0; i < 5; ++i)
        session->readOnce(words("R_W", 0, 120), outcome(i));
    ASSERT_TRUE(waitForOutcomes(5));
    EXPECT_GT(std::count(counts.begin(), counts.end(), 60), 5);
    EXPECT_EQ(outcomes.at(4), "accepted");
    EXPECT_GT(changes, 0);
}

TEST_F(PartsOnALine, AReadAndAWriteOfOneGoInParts)
{
    open(40, 40);
    session->readOnce(words("R_W", 100, 100), outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(outcomes.at(1), "accepted");
    EXPECT_THAT(counts, ElementsAre(40, 38, 22)) << "even, as they may be 32-bit values";
    EXPECT_EQ(session->cachedBytes(words("R_W", 199)), (std::vector<unsigned char>{0xAF, 0x04}));

    counts.clear();
    Write write{words("R_W", 100, 100), {}};
    for (int word = 0; word < 100; ++word)
        write.data.insert(write.data.end(), {static_cast<unsigned char>(word), 7});
    session->write(write, outcome(2));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(outcomes.at(2), "accepted");
    EXPECT_THAT(counts, ElementsAre(40, 38, 22));
    for (int word = 0; word < 100; ++word)
        EXPECT_EQ(registers.at(baseOfR + 100 + word), 0x0700 + word);
}

TEST_F(PartsOnALine, AWriteSaysWhichWordsWereTaken)
{
    illegal = {baseOfR + 190};
    open(40, 40);
    session->write({words("R_W", 100, 100), std::vector<unsigned char>(200, 1)}, outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(outcomes.at(1), "exception 2 (illegal data address), in R_W:178..199, part 3 of 3; "
                              "R_W:100..177 was taken");
    EXPECT_EQ(registers.at(baseOfR + 177), 0x0101);
    EXPECT_EQ(registers.at(baseOfR + 178), 1178);
}

TEST_F(PartsOnALine, AWriteThatIsEndedInTheMiddleSaysWhichWordsWereTaken)
{
    open(40, 40);
    const auto answerRequest = slave.arrived;
    slave.arrived = [this, answerRequest](const QByteArray& bytes) {
        if (counts.size() < 2)
            answerRequest(bytes);
        else
            session->close("interrupted");
    };
    session->write({words("R_W", 100, 100), std::vector<unsigned char>(200, 1)}, outcome(1));
    session->write({words("R_W", 0, 100), std::vector<unsigned char>(200, 1)}, outcome(2));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(outcomes.at(1), "interrupted; R_W:100..177 was taken");
    EXPECT_EQ(outcomes.at(2), "interrupted") << "none of it went out";
    EXPECT_EQ(registers.at(baseOfR + 177), 0x0101);
    EXPECT_EQ(registers.at(baseOfR + 178), 1178);
}

TEST_F(PartsOnALine, ARecipeIsMovedInParts)
{
    open(32, 32);
    // The driver leaves a recipe's requests the kind of the one before.
    session->watch({words("R_W", 280)});
    ASSERT_TRUE(waitUntil([this]() { return allAreGood(); }));
    session->watch({});
    counts.clear();
    const RecipeLayout layout = layOutRecipe({doubleWords("R_D", 0, 260)});
    RecipeWords data(layout.bufferWords);
    for (std::size_t word = 0; word < data.size(); ++word)
        data.at(word) = static_cast<std::uint16_t>(5000 + word);
    bool ended = false;
    session->transferRecipe(layout, RecipeDirection::download, data,
                            [&](const Result& result, const RecipeWords&) {
                                EXPECT_TRUE(result.accepted) << result.reason;
                                ended = true;
                            });
    ASSERT_TRUE(waitUntil([&]() { return ended; }));
    for (int word = 0; word < 260; ++word)
        ASSERT_EQ(registers.at(baseOfR + word), 5000 + word);
    EXPECT_THAT(counts, Each(Le(32)));
    for (const int count : counts)
        EXPECT_TRUE(count == 1 || count % 2 == 0) << "no part ends inside a value, but " << count;

    RecipeWords uploaded;
    session->transferRecipe(layout, RecipeDirection::upload, {},
                            [&](const Result&, const RecipeWords& words_) { uploaded = words_; });
    ASSERT_TRUE(waitUntil([&]() { return !uploaded.empty(); }));
    EXPECT_EQ(uploaded, data);
}

TEST_F(PartsOnALine, AfterOtherSettingsNoFurtherPartOfAWriteGoesOut)
{
    open(40, 40);
    QObject::connect(session.get(), &Session::transmissionBegan, session.get(),
                     [this](const Transmission&) {
                         if (outcomes.empty())
                             session->setSettings({2, 4});
                     });
    session->write({words("R_W", 100, 100), std::vector<unsigned char>(200, 1)}, outcome(1));
    ASSERT_TRUE(waitForOutcomes(1));
    session->readOnce(words("R_W", 0), outcome(2));
    ASSERT_TRUE(waitForOutcomes(2));
    EXPECT_EQ(outcomes.at(1), "the settings were changed");
    EXPECT_THAT(counts, ElementsAre(40, 1));
    EXPECT_EQ(registers.at(baseOfR + 140), 1140);
}

TEST_F(PartsOnALine, AtTheEndOfASessionThePartOnTheLineIsTheLast)
{
    open(40, 40);
    bool isOver = false;
    QObject::connect(session.get(), &Session::transmissionBegan, session.get(),
                     [&](const Transmission&) { session->finish([&isOver]() { isOver = true; }); });
    session->write({words("R_W", 100, 100), std::vector<unsigned char>(200, 1)}, outcome(1));
    ASSERT_TRUE(waitUntil([&isOver]() { return isOver; }));
    EXPECT_THAT(counts, ElementsAre(40));
    session->close();
    ASSERT_TRUE(waitForOutcomes(1));
    EXPECT_EQ(outcomes.at(1), "the line was closed; R_W:100..139 was taken");
    EXPECT_EQ(registers.at(baseOfR + 140), 1140);
}

TEST_F(PartsOnALine, EachFrameOnTheLineIsToldOnce)
{
    open(60, 60);
    std::vector<int> began;
    std::vector<int> ended;
    QObject::connect(session.get(), &Session::transmissionBegan, session.get(),
                     [&](const Transmission& told) { began.push_back(told.request.length); });
    QObject::connect(session.get(), &Session::transmissionEnded, session.get(),
                     [&](const Transmission& told) {
                         ended.push_back(told.request.length);
                         EXPECT_EQ(told.isPart, told.request.length > 1);
                         EXPECT_FALSE(told.description.empty());
                     });
    session->readOnce(words("R_W", 0, 70), outcome(1));
    session->readOnce(words("R_W", 0), outcome(2));
    ASSERT_TRUE(waitForOutcomes(2));
    session->tellAll();
    EXPECT_THAT(began, ElementsAre(60, 10, 1));
    EXPECT_EQ(ended, began);
}

TEST_F(PartsOnALine, ALatePartIsNotTakenForTheNextOfTheSameLength)
{
    // Each reply comes when the next request is there already; then the controller catches up.
    std::deque<QByteArray> due;
    int late = 6;
    sendReply = [&](const QByteArray& bytes) {
        due.push_back(bytes);
        --late;
        while (due.size() > (late > 0 ? 1 : 0)) {
            slave.send(due.front());
            due.pop_front();
        }
    };
    int seen = 0;
    QObject::connect(session.get(), &Session::changed, session.get(), [&](const ViewChanges& told) {
        for (const ViewChange& change : told) {
            if (!change.isValue)
                continue;
            ++seen;
            EXPECT_EQ(number(change.view), 1000 + change.view.address.first);
        }
    });
    line.timeout = milliseconds(20);
    line.isTimeoutFixed = true;
    open(60, 60);
    session->watch({words("R_W", 0, 120)});
    ASSERT_TRUE(waitUntil([&]() { return late < 0 && allAreGood(); }));
    session->tellAll();
    EXPECT_EQ(seen, 120);
}

} // namespace

} // namespace dov417
