#include "panel/desk/line_thread.h"

#include <QTemporaryDir>
#include <algorithm>
#include <fstream>
#include <sstream>
#include <utility>

#include "line/crc16.h"
#include "loaded_library.h"
#include "made_views.h"
#include "panel/desk/value_book.h"
#include "pty_slave.h"

namespace dov417 {

namespace {

std::string fileText(const QString& name)
{
    std::ifstream file(name.toStdString());
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

// R_W:100 of a controller's dump, which leaves out what is 0.
int heldBy(const std::string& dump)
{
    const std::size_t at = dump.find("\"100\": [");
    return at == std::string::npos ? 0 : std::stoi(dump.substr(at + 8));
}

class LineInAThread : public LoadedLibrary {
protected:
    LineInAThread()
    {
        options.frozen = true;
        options.dumpFile = folder.filePath("dump").toStdString();
        QObject::connect(&line, &LineThread::batchCame, &line, [this](const LineBatch& batch) {
            EXPECT_EQ(QThread::currentThread(), line.thread());
            book.apply(batch);
            state = batch.state;
            for (const WriteOutcome& outcome : batch.outcomes)
                outcomes[outcome.number] =
                    outcome.result.accepted ? "taken" : outcome.result.reason;
            frames += batch.passed.size();
            generations.insert(batch.generation);
        });
    }
    void open(const std::vector<Address>& addresses)
    {
        controller = std::make_unique<ControllerProcess>(options);
        LineSetup setup;
        setup.port = controller->port();
        line.open(setup, addresses);
        book.watch(line.generation(), addresses);
    }
    int value(const Address& address) const
    {
        const View* const view = book.find(address);
        return view ? view->value.at(0) : -1;
    }
    // What the controller holds in the end.
    std::string dump()
    {
        line.end();
        controller.reset();
        return fileText(folder.filePath("dump"));
    }

    QTemporaryDir folder;
    simulator::SimulationOptions options;
    std::unique_ptr<ControllerProcess> controller;
    LineThread line{library};
    ValueBook book;
    LineState state;
    std::map<long long, std::string> outcomes;
    std::set<int> generations;
    std::size_t frames = 0;
};

TEST_F(LineInAThread, TellsValuesFramesAndItsState)
{
    options.set = {"R_W:100=7"};
    open({registerAt(100), registerAt(101)});
    EXPECT_TRUE(waitUntil([this]() { return value(registerAt(100)) == 7 && state.cycles > 2; }));
    EXPECT_EQ(value(registerAt(101)), 0);
    EXPECT_EQ(book.standing(registerAt(100)).state, ValueState::good);
    EXPECT_EQ(state.phase, LinePhase::open);
    EXPECT_EQ(state.port, controller->port());
    EXPECT_FALSE(state.isUnlocked);
    EXPECT_GE(frames, 2U);
}

// However soon it is read again: what was read before and put elsewhere is in doubt.
TEST_F(LineInAThread, CountsHowOftenRepliesTurnedOutToComeTwice)
{
    PtySlave slave;
    bool sendsACopy = false;
    slave.arrived = [&](const QByteArray& request) {
        if (request.at(1) == 8) {
            slave.send(request);
            return;
        }
        const int registers = request.at(5);
        const auto reply = [](int count) {
            const QByteArray head = QByteArray("\x01\x03") + static_cast<char>(2 * count);
            return withCrc(head + QByteArray(2 * count, 0));
        };
        if (std::exchange(sendsACopy, false))
            slave.send(reply(3 - registers));
        slave.send(reply(registers));
    };
    const std::vector<Address> watched = {registerAt(10), registerAt(200), registerAt(201)};
    LineSetup setup;
    setup.port = slave.port().toStdString();
    line.open(setup, watched);
    book.watch(line.generation(), watched);
    const auto areGood = [&]() {
        return std::all_of(watched.begin(), watched.end(), [this](const Address& each) {
            return book.standing(each).state == ValueState::good;
        });
    };
    ASSERT_TRUE(waitUntil(areGood));
    EXPECT_EQ(state.doubts, 0);
    sendsACopy = true;
    EXPECT_TRUE(waitUntil([&]() { return state.doubts == 1 && areGood(); }));
    line.close();
    EXPECT_TRUE(waitUntil([&]() { return state.phase == LinePhase::closed; }));
    EXPECT_EQ(state.doubts, 1) << "it may not have been told before";
    line.open(setup, watched);
    book.watch(line.generation(), watched);
    EXPECT_TRUE(waitUntil([&]() { return state.phase == LinePhase::open && areGood(); }));
    EXPECT_EQ(state.doubts, 0) << "another line begins anew";
}

TEST_F(LineInAThread, WritesOnceItIsUnlocked)
{
    open({registerAt(100)});
    const long long locked = line.write(registerAt(100), {11, 0});
    line.setUnlocked(true);
    const long long unlocked = line.write(registerAt(100), {22, 0});
    EXPECT_TRUE(waitUntil([this]() { return outcomes.size() == 2; }));
    EXPECT_EQ(outcomes[locked], "writing is locked on this line");
    EXPECT_EQ(outcomes[unlocked], "taken");
    EXPECT_TRUE(waitUntil([this]() { return value(registerAt(100)) == 22; }));
    EXPECT_EQ(heldBy(dump()), 22);
}

TEST_F(LineInAThread, WritesNothingThatWasMeantForAnotherLine)
{
    open({registerAt(100)});
    line.setUnlocked(true);
    ASSERT_TRUE(waitUntil([this]() { return state.isUnlocked; }));
    const long long number = line.write(registerAt(100), {33, 0});
    const auto first = std::move(controller);
    options.dumpFile = folder.filePath("second").toStdString();
    open({registerAt(100)});
    const long long locked = line.write(registerAt(100), {44, 0});
    EXPECT_TRUE(waitUntil([this]() { return outcomes.size() == 2 && state.cycles > 1; }));
    EXPECT_NE(outcomes[number], ""); // in time or not
    EXPECT_EQ(outcomes[locked], "writing is locked on this line");
    EXPECT_EQ(value(registerAt(100)), 0);
    line.end();
    controller.reset();
    const std::string second = fileText(folder.filePath("second"));
    ASSERT_THAT(second, testing::StartsWith("{"));
    EXPECT_EQ(heldBy(second), 0);
}

TEST_F(LineInAThread, MovesNoRecipeThatWasMeantForAnotherLineOrIsLocked)
{
    std::map<long long, std::string> ends;
    QObject::connect(&line, &LineThread::recipeTold, &line, [&ends](const RecipeNews& news) {
        if (news.hasEnded)
            ends[news.number] = news.problems.empty() ? "moved" : news.problems.front();
    });
    RecipeEntry entry;
    entry.item.address = registerAt(100);
    entry.data = {33, 0};
    open({registerAt(100)});
    const auto first = std::move(controller);
    options.dumpFile = folder.filePath("second").toStdString();
    open({registerAt(100)});
    line.setUnlocked(true);
    const long long other = line.moveRecipe(line.line() - 1, RecipeKind::download, {entry});
    line.setUnlocked(false);
    const long long locked = line.moveRecipe(line.line(), RecipeKind::download, {entry});
    const long long read = line.moveRecipe(line.line(), RecipeKind::read, {entry});
    EXPECT_TRUE(waitUntil([&ends]() { return ends.size() == 3; }));
    EXPECT_EQ(ends[other], "another line was opened meanwhile");
    EXPECT_EQ(ends[locked], "writing is locked on this line");
    EXPECT_EQ(ends[read], "moved");
    line.end();
    controller.reset();
    EXPECT_EQ(heldBy(fileText(folder.filePath("second"))), 0);
}

TEST_F(LineInAThread, ShowsNoValueUnderAnotherAddressWhateverIsWatchedMeanwhile)
{
    for (int i = 0; i < 8; ++i)
        options.set.push_back("R_W:" + std::to_string(100 + i) + "=" + std::to_string(i + 1));
    open({registerAt(100)});
    ASSERT_TRUE(waitUntil([this]() { return state.cycles > 0; }));
    for (int round = 0; round < 40; ++round) {
        std::vector<Address> addresses;
        for (int i = 0; i < 8; ++i)
            if ((round + i) % 3 != 0)
                addresses.push_back(registerAt(100 + (i * 5 + round) % 8));
        line.watch(addresses);
        book.watch(line.generation(), addresses);
        const auto before = generations.size();
        EXPECT_TRUE(waitUntil([&]() { return generations.size() > before; }));
        for (int i = 0; i < 8; ++i)
            EXPECT_THAT(value(registerAt(100 + i)), testing::AnyOf(-1, i + 1)) << round;
    }
    EXPECT_TRUE(waitUntil([this]() {
        int known = 0;
        for (int i = 0; i < 8; ++i)
            known += value(registerAt(100 + i)) == i + 1 ? 1 : 0;
        return known >= 5;
    }));
}

TEST_F(LineInAThread, SaysWhyAPortCannotBeHad)
{
    LineSetup setup;
    setup.port = "/dev/there-is-none";
    line.open(setup, {registerAt(0)});
    EXPECT_TRUE(waitUntil([this]() { return state.phase == LinePhase::refused; }));
    EXPECT_THAT(state.reason, testing::HasSubstr("/dev/there-is-none"));
}

TEST_F(LineInAThread, MakesValuesOldWhenTheControllerGoes)
{
    open({registerAt(100)});
    ASSERT_TRUE(
        waitUntil([this]() { return book.standing(registerAt(100)).state == ValueState::good; }));
    controller.reset();
    EXPECT_TRUE(
        waitUntil([this]() { return book.standing(registerAt(100)).state == ValueState::old; }));
    EXPECT_EQ(value(registerAt(100)), 0);
}

TEST_F(LineInAThread, MakesValuesOldWhenItIsClosedWhateverIsWatchedMeanwhile)
{
    open({registerAt(100), registerAt(200)});
    ASSERT_TRUE(
        waitUntil([this]() { return book.standing(registerAt(100)).state == ValueState::good; }));
    line.close();
    line.watch({registerAt(100)});
    book.watch(line.generation(), {registerAt(100)});
    EXPECT_TRUE(
        waitUntil([this]() { return book.standing(registerAt(100)).state == ValueState::old; }));
}

// The window's side is left out: nobody says that a batch was seen.
// The next program on the line would hear it, and a write that is out would have no outcome.
TEST_F(LineInAThread, WaitsForTheReplyThatIsOutWhenItIsEnded)
{
    options.set = {"R_W:100=7"};
    options.responseTimeMs = 300; // a request is out at almost any time
    controller = std::make_unique<ControllerProcess>(options);
    LineSetup setup;
    setup.port = controller->port();
    setup.log = folder.filePath("log").toStdString();
    line.open(setup, {registerAt(100)});
    book.watch(line.generation(), {registerAt(100)});
    ASSERT_TRUE(waitUntil([this]() { return value(registerAt(100)) == 7 && state.cycles > 0; }));
    EXPECT_TRUE(line.end());
    const QString log = QString::fromStdString(fileText(folder.filePath("log")));
    EXPECT_GT(log.count(QStringLiteral(" TX ")), 1);
    EXPECT_EQ(log.count(QStringLiteral(" TX ")), log.count(QStringLiteral(" RX ")))
        << log.toStdString();
}

TEST_F(LoadedLibrary, APanelLineTellsTheNextBatchOnlyOnceTheLastWasSeen)
{
    LineWorker worker(library);
    std::vector<LineBatch> batches;
    QObject::connect(&worker, &LineWorker::batchReady, &worker,
                     [&batches](const LineBatch& batch) { batches.push_back(batch); });
    LineOrder order;
    order.line = order.generation = 1;
    order.setup.simulated = true;
    order.watched = {registerAt(0)};
    worker.open(order);
    QTimer pulses;
    int ticks = 0;
    QObject::connect(&pulses, &QTimer::timeout, &pulses, [&ticks]() { ++ticks; });
    pulses.start(LineWorker::screenPause);
    ASSERT_TRUE(waitUntil([&ticks]() { return ticks >= 15; }));
    EXPECT_EQ(batches.size(), 1U);
    worker.batchSeen();
    ASSERT_TRUE(waitUntil([&batches]() { return batches.size() >= 2; }));
    EXPECT_GT(batches.at(1).passed.size(), 4U);
    EXPECT_GT(batches.at(1).state.cycles, 1);
    EXPECT_EQ(batches.at(1).values.back().address, registerAt(0));
}

// Another line is opened again and again just when the counters of one are about to be told.
TEST_F(LoadedLibrary, APanelLineTellsNoCountersOfTheLineBefore)
{
    constexpr int lines = 6;
    LineWorker worker(library);
    LineOrder order;
    std::set<std::string> ofOthers;
    QObject::connect(&worker, &LineWorker::batchReady, &worker, [&](const LineBatch& batch) {
        if (batch.statistics)
            for (const auto& [name, counters] : batch.statistics->requests)
                if (batch.line == order.line && counters.station != order.line)
                    ofOthers.insert(name);
        QTimer::singleShot(0, &worker, &LineWorker::batchSeen);
    });
    const auto openNext = [&]() {
        order.generation = ++order.line;
        order.setup.simulated = true;
        order.watched = {registerAt(order.line)};
        order.watched.front().station = order.line;
        worker.open(order);
    };
    openNext();
    for (QTimer* const timer : worker.findChildren<QTimer*>())
        if (timer->intervalAsDuration() == LineWorker::pulse)
            QObject::connect(timer, &QTimer::timeout, &worker, [&, pulses = 0]() mutable {
                if (++pulses % 2 == 0) // counters are taken with each second one
                    openNext();
            });
    EXPECT_TRUE(waitUntil([&order]() { return order.line > lines; }));
    EXPECT_THAT(ofOthers, testing::IsEmpty());
}

} // namespace

} // namespace dov417
