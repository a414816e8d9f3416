#include "panel/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QMessageBox>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QTableView>
#include <QTest>
#include <sys/stat.h>

#include "answering.h"
#include "held_key.h"
#include "made_views.h"
#include "panel/desk/state_words.h"
#include "panel/project/line_dialog.h"
#include "panel/project/recent_projects.h"
#include "panel/start_page.h"
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

class TheWindow : public PanelWorld {
protected:
    TheWindow()
    {
        window.resize(1280, 800);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    template <typename Widget>
    Widget* part(const char* name) const
    {
        return window.findChild<Widget*>(name);
    }
    std::string sentence() const
    {
        return part<QLabel>("lineSentence")->text().toStdString();
    }
    void answer(QMessageBox::StandardButton button, const char* question)
    {
        answerWith(&window, button, question);
    }

    MainWindow window{desk};
};

TEST_F(TheWindow, ShowsMovingValuesWithoutHardwareAfterOneClick)
{
    EXPECT_EQ(sentence(), "No line is open. The start page opens one.");
    QTest::mouseClick(part<QPushButton>("trial"), Qt::LeftButton);
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    EXPECT_EQ(sentence(), "The simulated controller answers.");
    const auto changed = [this]() {
        long long changes = 0;
        for (const PanelValue& value : desk.tags().values)
            changes += desk.book().find(value.address)->changes;
        return changes;
    };
    EXPECT_TRUE(waitUntil([&]() { return changed() > 20; }));
    EXPECT_TRUE(desk.state().isUnlocked);
}

TEST_F(TheWindow, SaysWhereNobodyHasAnswered)
{
    options.faults = {"silence=100%"};
    controller = std::make_unique<ControllerProcess>(options);
    watch({"R_W:100"});
    setup.port = controller->port();
    desk.open(setup);
    const std::string nobody =
        controller->port() + ": nobody has answered yet; the line page shows what was asked.";
    EXPECT_TRUE(waitUntil([&]() { return sentence() == nobody; }));
}

TEST_F(TheWindow, OpensALineForReadingAndSaysOnEachPageThatItIsUnlocked)
{
    controller = std::make_unique<ControllerProcess>(options);
    watch({"R_W:100"});
    QTest::keyClicks(part<QLineEdit>("port"), QString::fromStdString(controller->port()));
    QTest::mouseClick(part<QPushButton>("open"), Qt::LeftButton);
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    EXPECT_EQ(sentence(), controller->port() + " answers.");
    auto* const lock = part<QToolButton>("lock");
    EXPECT_EQ(lock->text(), "Writing is locked");
    answer(QMessageBox::No, "changes values in the controller");
    QTest::mouseClick(lock, Qt::LeftButton);
    EXPECT_FALSE(lock->isChecked());
    int result = QMessageBox::NoButton;
    whenAsked<QMessageBox>(&window, [&](QMessageBox& box) {
        QObject::connect(&box, &QMessageBox::finished, &window, [&](int how) { result = how; });
        repeatKey(*box.focusWidget(), Qt::Key_Return);
        EXPECT_TRUE(box.isVisible()) << "of a key that is still held";
        QTest::keyClick(box.focusWidget(), Qt::Key_Return);
    });
    lock->setFocus();
    QTest::keyClick(lock, Qt::Key_Space);
    EXPECT_FALSE(lock->isChecked());
    EXPECT_EQ(result, QMessageBox::No);
    answer(QMessageBox::Yes, "changes values in the controller");
    QTest::mouseClick(lock, Qt::LeftButton);
    ASSERT_TRUE(waitUntil([this]() { return desk.state().isUnlocked; }));
    for (int page = 0; page < static_cast<int>(window.pages().size()); ++page) {
        window.showPage(page);
        EXPECT_TRUE(lock->isVisible());
        EXPECT_EQ(lock->text(), "\u26a0 Writing is unlocked");
    }
    QTest::mouseClick(lock, Qt::LeftButton);
    EXPECT_TRUE(waitUntil([this]() { return !desk.state().isUnlocked; }));
}

TEST_F(TheWindow, OpensAProjectAndRemembersIt)
{
    options.set = {"2/R_W:100=215"};
    options.stations = {2};
    controller = std::make_unique<ControllerProcess>(options);
    const std::string file = folder.filePath("machine.json").toStdString();
    std::ofstream(file) << R"({"version": 1, "line": {"port": ")" << controller->port()
                        << R"("}, "tags": [{"name": "oven", "station": 2, "register": "R_W",
                           "address": 100, "scale": 0.1, "unit": "K"}]})";
    window.document().open(QString::fromStdString(file));
    ASSERT_TRUE(
        waitUntil([this]() { return !desk.tags().values.empty() && allAre(ValueState::good); }));
    EXPECT_EQ(shownValue(desk.tags().values.front(), desk.book()), "21.5 K");
    EXPECT_FALSE(desk.state().isUnlocked);
    EXPECT_EQ(recentProjects().front(), QString::fromStdString(file));
}

TEST_F(TheWindow, OpensNothingOfABrokenProject)
{
    watch({"R_W:100"});
    open();
    const std::string file = folder.filePath("broken.json").toStdString();
    std::ofstream(file) << R"({"version": 1, "line": {"port": "/dev/ttyUSB0"},
  "tags": [{"name": "oven", "register": "R_W", "address": 9999}]})";
    EXPECT_THAT(complaint([&]() { window.document().open(QString::fromStdString(file)); }),
                StartsWith(file + ":2:"));
    EXPECT_EQ(desk.tags().values.front().label.address, "1/R_W:100");
    EXPECT_EQ(desk.state().port, controller->port());
    EXPECT_TRUE(allAre(ValueState::good));
}

TEST_F(TheWindow, SaysWhyALineCannotBeOpened)
{
    QTest::keyClicks(part<QLineEdit>("port"), "/dev/there-is-none");
    QTest::keyClick(part<QLineEdit>("port"), Qt::Key_Return);
    EXPECT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::refused; }));
    EXPECT_THAT(sentence(), StartsWith("The line could not be opened: "));
    EXPECT_FALSE(part<QToolButton>("lock")->isVisible());
    window.showPage(0);
    part<QComboBox>("wire")->setCurrentText("fast");
    QTest::mouseClick(part<QPushButton>("open"), Qt::LeftButton);
    EXPECT_THAT(part<QLabel>("portVerdict")->text().toStdString(), HasSubstr("fast"));
}

TEST_F(TheWindow, EndsWithoutAQuestionWhenItIsToThoughWritesAreUnderWay)
{
    setup.timeoutMs = 10000;
    watch({"R_W:100"});
    open();
    unlock();
    stopController(true);
    desk.write(desk.tags().values.front(), "7");
    ASSERT_EQ(desk.writesUnderWay(), 1U);
    answer(QMessageBox::No, "are being written");
    EXPECT_FALSE(window.close());
    window.leave(); // a question would stand here
    EXPECT_FALSE(window.isVisible());
    stopController(false);
}

TEST_F(TheWindow, EndsWhenItIsToThoughAQuestionIsOpen)
{
    watch({"R_W:100"});
    open();
    whenAsked<QMessageBox>(&window, [this](QMessageBox&) { window.leave(); });
    bool isAnswered = false;
    QTimer::singleShot(0, &window, [&]() {
        QTest::mouseClick(part<QToolButton>("lock"), Qt::LeftButton);
        isAnswered = true;
    });
    EXPECT_EQ(QApplication::exec(), 0);
    EXPECT_TRUE(isAnswered);
    EXPECT_FALSE(window.isVisible());
    EXPECT_FALSE(desk.state().isUnlocked);
}

// What starts the controller waits for a pipe that nobody writes to, and the line's thread for it.
TEST_F(TheWindow, GoesOnWhileTheLineHangsAndHoldsNoValueForGood)
{
    options.frozen = true;
    watch({"R_W:100"});
    open();
    const std::string pipe = folder.filePath("pipe").toStdString();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    simulator::SimulationOptions hanging;
    hanging.loadFile = pipe;
    LineSetup simulated;
    simulated.simulated = true;
    desk.open(simulated, hanging);
    EXPECT_EQ(desk.book().standing(desk.tags().values.front().address).state,
              ValueState::neverRead);
    EXPECT_TRUE(waitUntil([this]() { return desk.book().isSilent(); }));
    EXPECT_THAT(sentence(), HasSubstr("nothing is known of it at present"));
    QTest::keyClick(&window, Qt::Key_2, Qt::ControlModifier);
    EXPECT_TRUE(window.pages().at(1)->isVisible());
    QFile file(QString::fromStdString(pipe));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"1": {"R_W": {"100": [3]}}})");
    file.close();
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); })) << sentence();
    EXPECT_EQ(desk.book().find(desk.tags().values.front().address)->value.front(), 3);
    EXPECT_FALSE(desk.book().isSilent());
}

// What the line's thread would tell is made up here, as it hangs.
TEST_F(TheWindow, HoldsNoValueForGoodAfterASilenceBeforeItIsReadAgain)
{
    const std::string pipe = folder.filePath("pipe").toStdString();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    simulator::SimulationOptions hanging;
    hanging.loadFile = pipe;
    LineSetup simulated;
    simulated.simulated = true;
    watch({"R_W:100"});
    desk.open(simulated, hanging);
    const Address address = desk.tags().values.front().address;
    LineBatch batch;
    batch.line = desk.lineNumber();
    batch.state.phase = LinePhase::open;
    batch.values = {goodView(address, 7)};
    batch.values.front().value = {7, 0};
    batch.made = batch.values.front().lastGood;
    while (batch.generation < 100 && !desk.book().find(address)) {
        ++batch.generation; // whichever is meant now
        desk.apply(batch);
    }
    ASSERT_EQ(desk.book().standing(address).state, ValueState::good);
    EXPECT_TRUE(waitUntil([this]() { return desk.book().isSilent(); }));
    batch.values.clear();
    batch.made = Clock::now();
    desk.apply(batch);
    EXPECT_FALSE(desk.book().isSilent());
    EXPECT_EQ(desk.book().standing(address).state, ValueState::old);
    batch.values = {goodView(address, 7)};
    batch.values.front().value = {7, 0};
    batch.values.front().lastGood = batch.made + std::chrono::milliseconds(1);
    desk.apply(batch);
    EXPECT_EQ(desk.book().standing(address).state, ValueState::good);
    QFile file(QString::fromStdString(pipe));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{}"); // so that the thread ends
}

TEST_F(TheWindow, EndsWhenItIsToldToWhileAQuestionIsOpen)
{
    desk.addItems({Items(library, ItemSource()).find("R_W:100", Access::read)});
    bool hasEnded = false;
    QTimer::singleShot(0, &window, [this]() { window.close(); });
    whenAsked<QMessageBox>(&window, [this](QMessageBox&) { window.leave(); });
    QTimer::singleShot(std::chrono::seconds(20), &window, [&hasEnded]() {
        ADD_FAILURE() << "it waits for an answer";
        if (auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            box->reject();
        QApplication::quit();
        hasEnded = true;
    });
    QApplication::exec();
    EXPECT_FALSE(hasEnded);
    EXPECT_FALSE(QApplication::activeModalWidget());
}

TEST_F(TheWindow, ListsItsKeysWithF1)
{
    std::string keys;
    whenAsked<QDialog>(&window, [&keys](QDialog& box) {
        for (const QLabel* const each : box.findChildren<QLabel*>())
            keys += each->text().toStdString();
        EXPECT_LE(box.height(), 800);
        const auto* const area = box.findChild<QScrollArea*>();
        EXPECT_EQ(area->horizontalScrollBar()->maximum(), 0);
        EXPECT_EQ(area->verticalScrollBar()->maximum(), 0);
        box.reject();
    });
    QTest::keyClick(&window, Qt::Key_F1);
    for (const char* const each :
         {"<b>Ctrl+S</b>&nbsp;&nbsp;</td><td>Save<", "<b>Ctrl+Z</b>", "<b>Ctrl+T</b>",
          "<b>Ctrl+1</b>&nbsp;&nbsp;</td><td>Start<", "<b>Ctrl+0</b>", "<b>F1</b>", "<b>F2</b>",
          "<i>Trends</i>", "<b>Backspace</b>", "<td>cursors<", "<i>Time on the wire</i>",
          "<td>rulers, at the next edge", "<td>the column narrower, wider<"})
        EXPECT_THAT(keys, HasSubstr(each));
    EXPECT_THAT(keys, testing::Not(HasSubstr("&amp;"))) << "letters of the menus are no text";
}

TEST_F(TheWindow, AsksBeforeItIsClosedWithWritesUnderWay)
{
    watch({"R_W:100"});
    open();
    unlock();
    stopController(true);
    desk.write(desk.tags().values.front(), "5");
    answer(QMessageBox::No, "being written");
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(window.isVisible());
    stopController(false);
    EXPECT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    answer(QMessageBox::Discard, "not saved");
    EXPECT_TRUE(window.close());
    EXPECT_EQ(held("R_W", 100), 5);
}

TEST_F(TheWindow, AsksBeforeItsLineIsClosedOrOpenedAnewWithWritesUnderWay)
{
    watch({"R_W:100"});
    open();
    window.document().setLine(setup);
    unlock();
    stopController(true);
    desk.write(desk.tags().values.front(), "5");
    const int line = desk.lineNumber();
    answer(QMessageBox::No, "being written");
    QTest::mouseClick(part<QPushButton>("close"), Qt::LeftButton);
    whenAsked<LineDialog>(&window, [this](LineDialog& dialog) {
        answer(QMessageBox::No, "being written");
        dialog.findChild<QPushButton*>("keepAndOpenLine")->click();
    });
    window.actions().editLine();
    EXPECT_EQ(desk.lineNumber(), line);
    EXPECT_EQ(desk.writesUnderWay(), 1U);
    stopController(false);
    EXPECT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_TRUE(desk.hasLine());
    EXPECT_TRUE(desk.writes().front().result.accepted);
    EXPECT_EQ(held("R_W", 100), 5);
}

TEST_F(TheWindow, HoldsTheValuesOfAClosedLineForOldAndWritesNothingMore)
{
    watch({"R_W:100"});
    open();
    unlock();
    QTest::mouseClick(part<QPushButton>("close"), Qt::LeftButton);
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::old) && !desk.hasLine(); }));
    EXPECT_EQ(sentence(), "No line is open. The start page opens one.");
    EXPECT_THAT(complaint([this]() { desk.write(desk.tags().values.front(), "5"); }),
                HasSubstr("no line is open"));
    EXPECT_EQ(held("R_W", 100), 0);
}

TEST_F(TheWindow, ForgetsTheValuesOfTheLineBefore)
{
    options.set = {"R_W:100=7"};
    watch({"R_W:100"});
    open();
    const Address address = desk.tags().values.front().address;
    ASSERT_EQ(desk.book().find(address)->value.front(), 7);
    LineSetup nowhere;
    nowhere.port = "/dev/there-is-none";
    desk.open(nowhere);
    EXPECT_EQ(desk.book().find(address), nullptr);
    EXPECT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::refused; }));
    EXPECT_EQ(desk.book().find(address), nullptr);
}

TEST_F(TheWindow, IsReachedWithKeysAndNamedForThoseWhoDoNotSeeIt)
{
    for (int page = 0; page < static_cast<int>(window.pages().size()); ++page) {
        const int digit = (page + 1) % 10; // 0 is the tenth's
        QTest::keyClick(&window, static_cast<Qt::Key>(Qt::Key_0 + digit), Qt::ControlModifier);
        EXPECT_TRUE(window.pages().at(static_cast<std::size_t>(page))->isVisible()) << page;
    }
    for (const QWidget* const each : window.findChildren<QWidget*>()) {
        const bool isField = qobject_cast<const QAbstractItemView*>(each) ||
                             qobject_cast<const QSpinBox*>(each) ||
                             qobject_cast<const QComboBox*>(each);
        const bool isHidden = each->inherits("QComboBoxListView") ||
                              each->inherits("QTableCornerButton") || each->inherits("QHeaderView");
        if (!isField || isHidden)
            continue;
        const bool hasLabel = each->objectName() == "wire"; // of its form
        EXPECT_TRUE(hasLabel || !each->accessibleName().isEmpty())
            << each->metaObject()->className() << " " << each->objectName().toStdString();
        EXPECT_TRUE((each->focusPolicy() & Qt::TabFocus) != 0);
    }
}

} // namespace

} // namespace dov417
