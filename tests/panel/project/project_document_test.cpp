#include "panel/project/project_document.h"

#include <QComboBox>
#include <QListWidget>
#include <QProcess>
#include <QTableView>

#include "panel/project/line_dialog.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class TheProject : public ProjectWorld {
protected:
    QComboBox* grouping() const
    {
        return window.findChild<QComboBox*>("grouping");
    }
    void expectRefused(const char* name, const std::string& text, const std::string& place)
    {
        const QString file = written(name, text);
        EXPECT_FALSE(window.actions().open(file));
        EXPECT_THAT(message(), HasSubstr(file.toStdString() + ":" + place));
    }
};

TEST_F(TheProject, OpensWhatItHasSaved)
{
    add("R_W:100");
    add("2/R_D:200@float");
    add("R_D:600@int64");
    add("M_bit:1.0..1.3");
    add("R_W:10..15@text");
    grouping()->setCurrentIndex(1);
    LineSetup line;
    line.port = "/dev/there-is-none";
    line.timeoutMs = 300;
    window.document().setLine(line);
    const std::vector<std::string> before = shown();
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    EXPECT_FALSE(window.document().isModified());
    window.document().begin({}, LineSetup());
    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_EQ(grouping()->currentIndex(), 0);
    ASSERT_TRUE(window.actions().open(path("machine.json")));
    EXPECT_EQ(shown(), before);
    EXPECT_EQ(grouping()->currentIndex(), 1);
    EXPECT_EQ(window.document().line().timeoutMs, 300);
    EXPECT_EQ(desk.state().port, "/dev/there-is-none");
    EXPECT_FALSE(window.document().isModified());
}

TEST_F(TheProject, IsTakenByTheToolAsThePanelSavesIt)
{
    LineSetup line;
    line.simulated = true;
    line.line = "115200,8,NONE,1";
    window.document().begin({}, line);
    add("R_W:100");
    add("2/M_bit:1.5");
    grouping()->setCurrentIndex(2);
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    QProcess tool;
    tool.start(QStringLiteral(DOV417_TOOL),
               {"watch", "--project", path("machine.json"), "--cycles", "1", "--json"});
    ASSERT_TRUE(tool.waitForFinished());
    const std::string out = tool.readAllStandardOutput().toStdString();
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
    EXPECT_THAT(out, HasSubstr("\"R_W.100\""));
    EXPECT_THAT(out, HasSubstr("\"2/M_bit.1.5\""));
}

TEST_F(TheProject, KeepsWhatANewerProgramHasPutThere)
{
    const QString file = written("newer.json", R"({
      "version": 2,
      "line": {"port": "/dev/there-is-none", "colour": "red"},
      "stations": [{"number": 2, "name": "press", "max-registers": 60, "floor": 3}],
      "tags": [{"name": "oven", "register": "R_W", "address": 5, "sound": "ping"}],
      "panel": {"values": {"grouping": "area", "depth": 4}, "clock": {"hands": 2}},
      "robot": [1, 2]})");
    ASSERT_TRUE(window.actions().open(file));
    EXPECT_THAT(message(), HasSubstr("newer program"));
    EXPECT_EQ(window.document().line().stationMaxRegisters.at(2), 60);
    add("R_W:6");
    grouping()->setCurrentIndex(1);
    press("saveProject");
    const OrderedJson saved = jsonOf(file);
    EXPECT_EQ(saved.at("version"), 2);
    EXPECT_EQ(saved.at("line").at("colour"), "red");
    EXPECT_EQ(saved.at("stations")[0].at("floor"), 3);
    EXPECT_EQ(saved.at("tags")[0].at("sound"), "ping");
    EXPECT_EQ(saved.at("tags")[0].at("address"), "5");
    EXPECT_EQ(saved.at("tags")[1].at("name"), "R_W.6");
    EXPECT_EQ(saved.at("panel").at("values").at("grouping"), "station");
    EXPECT_EQ(saved.at("panel").at("values").at("depth"), 4);
    EXPECT_EQ(saved.at("panel").at("clock").at("hands"), 2);
    EXPECT_EQ(saved.at("robot"), OrderedJson::array({1, 2}));
}

TEST_F(TheProject, TellsWhatItsTagFileSaysInVain)
{
    written("tags.csv", "name,register,address,Owner\noven,R_W,5,Meyer\n");
    ASSERT_TRUE(
        window.actions().open(written("p.json", R"({"version": 1, "tagFile": "tags.csv"})")));
    EXPECT_THAT(message(), HasSubstr("tags.csv:1: no columns of a tag, and not looked at: 4 "
                                     "(Owner)"));
}

TEST_F(TheProject, LeavesAlonePagesThatANewerProgramDescribesOtherwise)
{
    const QString file = written("newer.json", R"({
      "version": 2, "panel": {"values": 7, "trends": ["a"], "plan": "fast", "window": 3}})");
    ASSERT_TRUE(window.actions().open(file));
    EXPECT_EQ(grouping()->currentIndex(), 0);
    add("R_W:6");
    press("saveProject");
    const OrderedJson panel = jsonOf(file).at("panel");
    EXPECT_EQ(panel.at("values"), 7);
    EXPECT_EQ(panel.at("trends"), OrderedJson::array({"a"}));
    EXPECT_EQ(panel.at("plan"), "fast");
}

TEST_F(TheProject, RefusesABrokenFileWithItsPlaceAndChangesNothing)
{
    watch({"R_W:100"});
    open();
    grouping()->setCurrentIndex(2);
    ASSERT_TRUE(window.actions().saveIn(path("good.json")));
    expectRefused("no-json.json", "{\"version\": 1,\n \"line\": }", "2:10: ");
    expectRefused("line.json", "{\"version\": 1,\n \"line\": {\"timeout\": 0}}",
                  "2:22: line.timeout: ");
    expectRefused("tag.json",
                  "{\"version\": 1, \"tags\": [\n"
                  "{\"name\": \"a\", \"register\": \"R_W\", \"address\": 9999}]}",
                  "2:45: tags[0].address: ");
    expectRefused("page.json", "{\"version\": 1,\n\"panel\": {\"values\": {\"grouping\": 7}}}",
                  "2:34: panel.values.grouping: there are none, station, area");
    expectRefused("window.json", "{\"version\": 1,\n\"panel\": {\"window\": {\"width\": \"x\"}}}",
                  "2:31: panel.window.width: ");
    expectRefused("plan.json",
                  "{\"version\": 1,\n\"panel\": {\"plan\": {\"responseTime\": \"long\"}}}",
                  "2:36: panel.plan.responseTime: ");
    expectRefused("recipes.json", "{\"version\": 1,\n\"panel\": {\"recipes\": {\"file\": 7}}}",
                  "2:31: panel.recipes.file: ");
    expectRefused("panel.json", "{\"version\": 1,\n\"panel\": []}", "2:10: panel: ");
    expectRefused("formats.json",
                  "{\"version\": 1, \"tags\": [{\"name\": \"a\", \"register\": \"R_W\", "
                  "\"address\": 9}],\n\"panel\": {\"formats\": {\"a\": \"double\"}}}",
                  "2:28: panel.formats.a: ");
    EXPECT_EQ(window.document().file(), path("good.json"));
    EXPECT_THAT(shown(), ElementsAre("1/R_W:100 1/R_W:100 unsigned"));
    EXPECT_EQ(grouping()->currentIndex(), 2);
    EXPECT_FALSE(window.document().isModified());
    EXPECT_EQ(desk.state().port, controller->port());
    EXPECT_TRUE(allAre(ValueState::good));
}

TEST_F(TheProject, KeepsItsTagFileUntilATagIsEdited)
{
    written("tags.csv", "name,register,address,scale,unit\noven,R_W,100,0.1,K\nlamp,M_bit,1.5,,\n");
    const QString file = written("machine.json", R"({"version": 1, "tagFile": "tags.csv"})");
    ASSERT_TRUE(window.actions().open(file));
    std::vector<Item> items = desk.tags().items;
    items[0].format.notation = Notation::hex;
    items[0].format.scaling = Scaling();
    desk.setItems(items);
    ASSERT_TRUE(window.actions().saveIn(file));
    EXPECT_EQ(jsonOf(file).at("tagFile"), "tags.csv");
    EXPECT_EQ(jsonOf(file).at("panel").at("formats").at("oven"), "hex");
    EXPECT_TRUE(QDir(folder.path()).mkdir("deeper"));
    ASSERT_TRUE(window.actions().saveIn(path("deeper/moved.json")));
    EXPECT_EQ(jsonOf(path("deeper/moved.json")).at("tagFile"), "../tags.csv");
    ASSERT_TRUE(window.actions().open(path("deeper/moved.json")));
    EXPECT_THAT(shown(), ElementsAre("oven 1/R_W:100 hex", "lamp 1/M_bit:1.5 unsigned"));
    desk.removeItems({1});
    ASSERT_TRUE(window.actions().saveIn(file));
    EXPECT_FALSE(jsonOf(file).contains("tagFile"));
    EXPECT_EQ(jsonOf(file).at("tags")[0].at("scale"), 0.1);
    EXPECT_EQ(jsonOf(file).at("panel").at("formats").at("oven"), "hex");
    EXPECT_THAT(textOf(path("tags.csv")), HasSubstr("lamp"));
}

TEST_F(TheProject, UndoesAndDoesAgainWhatWasEdited)
{
    add("R_W:100");
    add("R_W:101");
    grouping()->setCurrentIndex(1);
    grouping()->setCurrentIndex(2);
    LineSetup line;
    line.timeoutMs = 300;
    window.document().setLine(line);
    press("undo");
    EXPECT_FALSE(window.document().line().timeoutMs);
    press("undo"); // both steps of one widget
    EXPECT_EQ(grouping()->currentIndex(), 0);
    press("undo");
    EXPECT_THAT(shown(), ElementsAre("1/R_W:100 1/R_W:100 unsigned"));
    press("undo");
    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_FALSE(window.document().isModified());
    EXPECT_FALSE(window.findChild<QAction*>("undo")->isEnabled());
    for (int i = 0; i < 4; ++i)
        press("redo");
    EXPECT_EQ(shown().size(), 2U);
    EXPECT_EQ(grouping()->currentIndex(), 2);
    EXPECT_EQ(window.document().line().timeoutMs, 300);
    EXPECT_FALSE(window.findChild<QAction*>("redo")->isEnabled());
}

TEST_F(TheProject, NeverUndoesAWrite)
{
    watch({"R_W:100"});
    open();
    unlock();
    add("R_W:101");
    desk.write(desk.tags().values.front(), "1234");
    EXPECT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    const auto writes = desk.writes().size();
    press("undo");
    EXPECT_THAT(shown(), ElementsAre("1/R_W:100 1/R_W:100 unsigned"));
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    EXPECT_EQ(desk.writes().size(), writes);
    EXPECT_EQ(held("R_W", 100), 1234);
}

TEST_F(TheProject, KnowsNothingOfWhatTheOneBeforeHasRead)
{
    options.set = {"R_W:100=215"};
    watch({"R_W:100", "M_bit:1.3"});
    open();
    unlock();
    const Address word = desk.tags().values.front().address;
    const Address bit = desk.tags().values.back().address;
    stopController(true);
    desk.write(desk.tags().values.front(), "7");
    EXPECT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    ASSERT_EQ(desk.book().standing(word).state, ValueState::failed);
    stopController(false);
    EXPECT_TRUE(waitUntil([&]() { return !desk.book().standing(word).isOld; }));
    const QString other = written("other.json", R"({"version": 1, "tags": [
      {"name": "oven", "register": "R_W", "address": 100, "scale": 0.1, "unit": "K"},
      {"name": "lamp", "register": "M_bit", "address": "1.3"}]})");
    answerWith(&window, QMessageBox::Discard, "not saved");
    ASSERT_TRUE(window.actions().open(other));
    const auto isForgotten = [&](const char* when) {
        for (const Address& each : {word, bit}) {
            EXPECT_EQ(desk.book().find(each), nullptr) << when;
            EXPECT_EQ(desk.book().standing(each).state, ValueState::neverRead) << when;
            EXPECT_EQ(desk.book().standing(each).reason, "") << when;
        }
        EXPECT_FALSE(desk.hasLine()) << when;
        EXPECT_EQ(desk.statistics(), nullptr) << when;
        EXPECT_THAT(desk.writes(), IsEmpty()) << when;
        EXPECT_EQ(window.findChild<QTableView*>("frames")->model()->rowCount(), 0) << when;
    };
    isForgotten("at once");
    int told = 0;
    QObject::connect(&desk, &PanelDesk::stateChanged, &window, [&told]() { ++told; });
    EXPECT_TRUE(waitUntil([&told]() { return told >= 2; }));
    isForgotten("after what was still to be told of the line before");
    add("R_W:101");
    press("undo");
    EXPECT_EQ(shown().size(), 2U);
}

TEST_F(TheProject, KeepsWhatIsKnownWhileItIsEdited)
{
    options.set = {"R_W:100=215"};
    watch({"R_W:100"});
    open();
    const Address word = desk.tags().values.front().address;
    add("R_W:101");
    press("undo");
    EXPECT_NE(desk.book().find(word), nullptr);
    press("redo");
    EXPECT_NE(desk.book().find(word), nullptr);
    answerWith(&window, QMessageBox::Cancel, "not saved");
    press("newProject");
    EXPECT_NE(desk.book().find(word), nullptr);
    answerWith(&window, QMessageBox::Discard, "not saved");
    press("newProject");
    add("R_W:100");
    EXPECT_EQ(desk.book().find(word), nullptr);
    desk.end();
}

TEST_F(TheProject, NamesItsFileAndMarksWhatIsNotSaved)
{
    EXPECT_THAT(window.windowTitle().toStdString(), StartsWith("untitled[*]"));
    EXPECT_FALSE(window.isWindowModified());
    add("R_W:100");
    EXPECT_TRUE(window.isWindowModified());
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    EXPECT_THAT(window.windowTitle().toStdString(), StartsWith("machine.json[*]"));
    EXPECT_FALSE(window.isWindowModified());
    press("undo");
    EXPECT_TRUE(window.isWindowModified());
    press("redo");
    EXPECT_FALSE(window.isWindowModified());
}

TEST_F(TheProject, AsksBeforeWhatIsNotSavedIsLost)
{
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    add("R_W:100");
    answerWith(&window, QMessageBox::Cancel, "machine.json has changes that are not saved");
    EXPECT_FALSE(window.close());
    EXPECT_THAT(textOf(path("machine.json")), Not(HasSubstr("R_W")));
    answerWith(&window, QMessageBox::Cancel, "not saved");
    press("newProject");
    EXPECT_EQ(shown().size(), 1U);
    answerWith(&window, QMessageBox::Save, "not saved");
    EXPECT_TRUE(window.close());
    EXPECT_THAT(textOf(path("machine.json")), HasSubstr("R_W.100"));
    window.show();
    add("R_W:101");
    answerWith(&window, QMessageBox::Discard, "not saved");
    EXPECT_TRUE(window.close());
    EXPECT_THAT(textOf(path("machine.json")), Not(HasSubstr("R_W.101")));
}

TEST_F(TheProject, SavesOverAnothersChangesOnlyWhenTold)
{
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    written("machine.json", R"({"version": 1, "line": {"timeout": 5}})");
    add("R_W:100");
    answerWith(&window, QMessageBox::No, "written by another program");
    press("saveProject");
    EXPECT_THAT(textOf(path("machine.json")), HasSubstr("timeout"));
    EXPECT_TRUE(window.document().isModified());
    answerWith(&window, QMessageBox::Yes, "written by another program");
    press("saveProject");
    EXPECT_THAT(textOf(path("machine.json")), HasSubstr("R_W.100"));
}

TEST_F(TheProject, LosesNothingWhereItCannotBeSaved)
{
    add("R_W:100");
    EXPECT_FALSE(window.actions().saveIn(path("no-folder/machine.json")));
    EXPECT_THAT(message(), HasSubstr("could not be saved"));
    EXPECT_TRUE(window.document().isModified());
    EXPECT_EQ(window.document().file(), QString());
}

TEST_F(TheProject, HasTheSettingsOfItsLineFromTheirDialog)
{
    whenAsked<LineDialog>(&window, [](LineDialog& dialog) {
        QTest::keyClicks(dialog.findChild<QLineEdit*>("timeout"), "30");
        QTest::keyClicks(dialog.findChild<QLineEdit*>("max-registers"), "1");
        auto* const keep = dialog.findChild<QPushButton*>("keepLine");
        EXPECT_FALSE(keep->isEnabled());
        EXPECT_THAT(dialog.findChild<QLabel*>("lineVerdict")->text().toStdString(),
                    HasSubstr("max-registers: a whole number from 2"));
        QTest::keyClicks(dialog.findChild<QLineEdit*>("max-registers"), "6");
        QTest::mouseClick(dialog.findChild<QCheckBox*>("no-function-8"), Qt::LeftButton);
        QTest::mouseClick(keep, Qt::LeftButton);
    });
    press("lineSettings");
    EXPECT_EQ(window.document().line().timeoutMs, 30);
    EXPECT_EQ(window.document().line().maxRegisters, 16);
    EXPECT_FALSE(window.document().line().mayMark);
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    EXPECT_EQ(jsonOf(path("machine.json")).at("line").at("max-registers"), 16);
}

// What the program was started with, and the dialog has no field for.
TEST(TheSettingsOfALine, KeepWhatTheirDialogDoesNotShow)
{
    LineSetup setup;
    setup.log = "night.log";
    setup.baud = "9600";
    setup.direction.isWanted = true;
    setup.stationMaxRegisters = {{2, 32}};
    LineDialog dialog(setup, nullptr);
    dialog.findChild<QLineEdit*>("timeout")->setText("30");
    EXPECT_EQ(dialog.setup().timeoutMs, 30);
    EXPECT_EQ(dialog.setup().log, "night.log");
    EXPECT_EQ(dialog.setup().baud, "9600");
    EXPECT_TRUE(dialog.setup().direction.isWanted);
    EXPECT_EQ(dialog.setup().stationMaxRegisters.at(2), 32);
    dialog.findChild<QLineEdit*>("timeout")->clear();
    EXPECT_FALSE(dialog.setup().timeoutMs);
}

TEST_F(TheProject, HasTheMergeGapThatWasChosenForItsLine)
{
    add("R_W:100");
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    desk.setGap(7);
    EXPECT_TRUE(window.document().isModified());
    EXPECT_EQ(window.document().line().gap, 7);
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    EXPECT_EQ(jsonOf(path("machine.json")).at("line").at("gap"), 7);
}

// The page of the plan makes its plans for what the desk has.
TEST_F(TheProject, HasItsLinePlannedForWhileNoneIsOpen)
{
    ASSERT_TRUE(window.actions().open(
        written("machine.json", R"({"version": 1, "line": {"gap": 5, "max-registers": 60},
                            "stations": [{"number": 2, "max-registers": 30}]})")));
    EXPECT_EQ(desk.lineSetup().gap, 5);
    EXPECT_EQ(desk.lineSetup().maxRegisters, 60);
    EXPECT_EQ(desk.lineSetup().stationMaxRegisters, (std::map<int, int>{{2, 30}}));
    LineSetup line = window.document().line();
    line.gap = 9;
    line.line = "9600,8,NONE,1";
    window.document().setLine(line);
    EXPECT_EQ(desk.lineSetup().gap, 9);
    press("undo");
    EXPECT_EQ(desk.lineSetup().gap, 5);
    EXPECT_EQ(desk.lineSetup().line, "");
    press("redo");
    EXPECT_EQ(desk.lineSetup().gap, 9);
    EXPECT_EQ(desk.lineSetup().line, "9600,8,NONE,1");
    EXPECT_FALSE(window.findChild<QAction*>("redo")->isEnabled()) << "following is no edit";
}

TEST_F(TheProject, LeavesTheLineAsItIsThatIsOpenWhenASettingIsUndone)
{
    watch({"R_W:100"});
    open();
    LineSetup line = window.document().line();
    line.gap = 9;
    window.document().setLine(line);
    EXPECT_FALSE(desk.lineSetup().gap);
    press("undo");
    EXPECT_FALSE(desk.lineSetup().gap);
    EXPECT_EQ(desk.lineSetup().port, controller->port());
}

TEST_F(TheProject, OpensARecentOneFromTheStartPage)
{
    add("R_W:100");
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    window.document().begin({}, LineSetup());
    window.showPage(0);
    auto* const recent = window.findChild<QListWidget*>("recent");
    ASSERT_EQ(recent->count(), 1);
    recent->setCurrentRow(0);
    QTest::keyClick(recent, Qt::Key_Return);
    EXPECT_THAT(shown(), ElementsAre("1/R_W:100 1/R_W:100 unsigned"));
}

} // namespace

} // namespace dov417
