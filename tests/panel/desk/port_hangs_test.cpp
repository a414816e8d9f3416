// A port that hangs holds up the line's thread: nothing that was ordered meanwhile goes out when it
// goes on, minutes later and with nobody there.
#include <QPushButton>
#include <QToolButton>
#include <sys/stat.h>

#include "complaint.h"
#include "made_views.h"
#include "panel/recipes/recipes_page.h"
#include "panel/values/values_model.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

// What starts the own controller waits for a pipe that nobody writes to, and the line's thread for
// it. What that would tell of an open line is made up.
class APortThatHangs : public ProjectWorld {
protected:
    APortThatHangs()
    {
        options.loadFile = path("pipe").toStdString();
        EXPECT_EQ(mkfifo(options.loadFile.c_str(), 0600), 0);
        setup.simulated = true;
        watch({"R_W:100"});
        desk.open(setup, options);
        LineBatch batch;
        batch.line = desk.lineNumber();
        batch.state.phase = LinePhase::open;
        batch.state.isSimulated = true;
        batch.state.isUnlocked = true;
        batch.values = {goodView(address(), 3)};
        batch.values.front().value = {3, 0};
        batch.made = batch.values.front().lastGood;
        while (batch.generation < 100 && !desk.book().find(address())) {
            ++batch.generation; // whichever is meant now
            desk.apply(batch);
        }
        EXPECT_TRUE(allAre(ValueState::good));
    }
    Address address() const
    {
        return desk.tags().values.front().address;
    }
    // As a person does, on the page of values.
    void type(const char* text)
    {
        window.showPage(1);
        auto* const table = window.pages().at(1)->findChild<QTableView*>("values");
        const QModelIndex index = table->model()->index(0, ValuesModel::value);
        table->setFocus();
        table->setCurrentIndex(index);
        QTest::keyClick(table, Qt::Key_F2);
        QWidget* const editor = QApplication::focusWidget();
        ASSERT_TRUE(editor && editor != table);
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::processEvents();
    }
    void hang()
    {
        ASSERT_TRUE(waitUntil([this]() { return desk.book().isSilent(); }));
    }
    // The controller begins with 3.
    void goOn()
    {
        QFile file(path("pipe"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(R"({"1": {"R_W": {"100": [3]}}})");
        file.close();
        ASSERT_TRUE(waitUntil([this]() { return !desk.book().isSilent(); }));
    }
    std::string sentence() const
    {
        return window.findChild<QLabel*>("lineSentence")->text().toStdString();
    }
};

TEST_F(APortThatHangs, RefusesWritesAndDoesNotLetThemOutWhenItGoesOn)
{
    type("7");
    ASSERT_EQ(desk.writes().size(), 1U) << "nobody has noticed yet";
    hang();
    EXPECT_THAT(sentence(), HasSubstr("and nothing is written. Pull its plug; where that does not "
                                      "help, end this program."));
    type("8");
    EXPECT_EQ(desk.writes().size(), 1U);
    EXPECT_THAT(message(), HasSubstr("the port hangs, and nothing is asked of it; pull its plug, "
                                     "or end this program"));
    EXPECT_FALSE(desk.writes().front().hasEnded);
    goOn();
    ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_FALSE(desk.writes().front().result.accepted);
    EXPECT_EQ(desk.writes().front().result.reason, "the port hung; nothing was written");
    const long long cycles = desk.state().cycles;
    ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 3; }));
    type("9");
    ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_TRUE(desk.writes().back().result.accepted) << desk.writes().back().result.reason;
    EXPECT_EQ(held("R_W", 100), 9);
}

TEST_F(APortThatHangs, LeavesTheControllerAsItWas)
{
    type("7");
    hang();
    type("8");
    goOn();
    ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    const long long cycles = desk.state().cycles;
    ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 3; }));
    EXPECT_EQ(held("R_W", 100), 3);
}

TEST_F(APortThatHangs, TakesNoRecipe)
{
    auto* const page = window.findChild<RecipesPage*>();
    written("one.json", R"({"R_W:100": 5})");
    ASSERT_TRUE(page->loadFile(path("one.json")));
    hang();
    window.showPage(8);
    ASSERT_TRUE(page->isVisible());
    answerWith(&window, QMessageBox::Yes, "Write 1 value(s)");
    QTest::mouseClick(page->findChild<QPushButton*>("download"), Qt::LeftButton);
    EXPECT_THAT(message(), StartsWith("the port hangs"));
    EXPECT_FALSE(desk.recipeIsUnderWay());
    QTest::mouseClick(page->findChild<QPushButton*>("read"), Qt::LeftButton);
    EXPECT_FALSE(desk.recipeIsUnderWay());
    goOn();
    ASSERT_TRUE(waitUntil([this]() { return desk.state().cycles > 3; }));
    EXPECT_EQ(held("R_W", 100), 3);
}

TEST_F(APortThatHangs, IsClosedAndAnotherOpenedAsSoonAsItGoesOnWhichIsSaid)
{
    hang();
    window.showPage(0);
    QTest::mouseClick(window.findChild<QPushButton*>("close"), Qt::LeftButton);
    EXPECT_THAT(message(), StartsWith("The line is closed as soon as its port goes on."));
    EXPECT_THAT(sentence(), StartsWith("The simulated controller does not let go"));
    LineSetup other;
    other.port = path("other").toStdString();
    desk.open(other);
    EXPECT_THAT(sentence(), StartsWith("The simulated controller does not let go"))
        << "the other port does not hang";
    goOn();
    EXPECT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::refused; }));
    EXPECT_THAT(sentence(), HasSubstr(other.port));
}

TEST_F(APortThatHangs, CannotBeUnlocked)
{
    auto* const lock = window.findChild<QToolButton*>("lock");
    desk.setUnlocked(false);
    LineBatch batch;
    batch.line = desk.lineNumber();
    batch.state.phase = LinePhase::open;
    desk.apply(batch);
    EXPECT_TRUE(lock->isEnabled());
    hang();
    EXPECT_FALSE(lock->isEnabled());
    desk.setUnlocked(true); // a question that was open before
    goOn();
    const long long cycles = desk.state().cycles;
    ASSERT_TRUE(waitUntil([&]() { return desk.state().cycles > cycles + 3; }));
    EXPECT_FALSE(desk.state().isUnlocked);
}

// The line's thread alone, and orders that it takes too late.
class LateOrders : public PanelWorld {
protected:
    LateOrders()
    {
        QObject::connect(&worker, &LineWorker::batchReady, &worker, [this](const LineBatch& batch) {
            state = batch.state;
            for (const WriteOutcome& outcome : batch.outcomes)
                outcomes[outcome.number] =
                    outcome.result.accepted ? "taken" : outcome.result.reason;
            QTimer::singleShot(0, &worker, &LineWorker::batchSeen);
        });
        controller = std::make_unique<ControllerProcess>(options);
        LineOrder order;
        order.line = order.generation = 1;
        order.setup.port = controller->port();
        order.watched = {registerAt(100)};
        worker.open(order);
        EXPECT_TRUE(waitUntil([this]() { return state.cycles > 0; }));
    }
    void unlock(Clock::time_point asked)
    {
        worker.setUnlocked(1, true, asked);
        EXPECT_TRUE(waitUntil([this, before = state.cycles]() { return state.cycles > before; }));
    }
    std::string write(int value, Clock::time_point asked)
    {
        const long long number = value;
        worker.write({number, 1, registerAt(100), {static_cast<unsigned char>(value), 0}, asked});
        EXPECT_TRUE(waitUntil([&]() { return outcomes.count(number) > 0; }));
        return outcomes[number];
    }

    const Clock::time_point longAgo = Clock::now() - 2 * LineWorker::orderPatience;
    LineWorker worker{library};
    LineState state;
    std::map<long long, std::string> outcomes;
};

TEST_F(LateOrders, AreRefused)
{
    std::vector<std::string> problems;
    QObject::connect(&worker.recipes(), &RecipeWorker::told, &worker,
                     [&problems](const RecipeNews& news) {
                         if (news.hasEnded)
                             problems = news.problems;
                     });
    unlock(longAgo);
    EXPECT_FALSE(state.isUnlocked);
    unlock(Clock::now());
    EXPECT_TRUE(state.isUnlocked);
    EXPECT_EQ(write(7, longAgo), "the port hung; nothing was written");
    RecipeOrder recipe;
    recipe.line = 1;
    recipe.kind = RecipeKind::download;
    recipe.entries.resize(1);
    recipe.entries.front().item.address = registerAt(100);
    recipe.entries.front().data = {8, 0};
    recipe.asked = longAgo;
    worker.moveRecipe(recipe);
    EXPECT_THAT(problems, testing::ElementsAre("the port hung; nothing was written"));
    EXPECT_EQ(write(9, Clock::now()), "taken");
    worker.close();
    EXPECT_EQ(held("R_W", 100), 9);
}

// The window may have said so less than their patience after they were given.
TEST_F(LateOrders, AreThoseThatWereGivenBeforeTheWindowSaidThatNothingIsWritten)
{
    unlock(Clock::now());
    const Clock::time_point asked = Clock::now();
    worker.tellHang(Clock::now());
    EXPECT_EQ(write(7, asked), "the port hung; nothing was written");
    EXPECT_EQ(write(9, Clock::now()), "taken");
    worker.close();
    EXPECT_EQ(held("R_W", 100), 9);
}

TEST_F(LateOrders, EndWhatWasUnderWayBeforeAndLockTheLine)
{
    unlock(Clock::now());
    stopController(true);
    worker.write({7, 1, registerAt(100), {7, 0}, Clock::now()});
    worker.endHang(1, Clock::now());
    worker.endHang(2, longAgo);
    EXPECT_TRUE(outcomes.empty()) << "it did not hang, or another line did";
    worker.endHang(1, longAgo);
    EXPECT_TRUE(waitUntil([this]() { return outcomes.count(7) > 0; }));
    EXPECT_EQ(outcomes[7], "the port hung; whether the controller has taken what was on its way is "
                           "not known");
    EXPECT_TRUE(waitUntil([this]() { return !state.isUnlocked; }));
    stopController(false);
    worker.close();
}

} // namespace

} // namespace dov417
