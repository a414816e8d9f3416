// Every file that a person chooses: through its button, menu or keys and the dialog that these
// open, with the name typed into it. What came of it stands in the file.
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

#include "menu_choosing.h"
#include "panel/frames/recorded_log.h"
#include "panel/recipes/recipe_model.h"
#include "panel/trends/trend_notes_dialog.h"
#include "panel/trends/trend_stack.h"
#include "panel/trends/trend_values_dialog.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char* const ovenProject = R"({"version": 1, "tags": [
  {"name": "oven", "register": "R_W", "address": 5}]})";

class TheFileDialogs : public ProjectWorld {
protected:
    // The next dialog is one to open or to save, and this is typed into it.
    void whenAskedFor(QFileDialog::AcceptMode mode, const QString& name)
    {
        whenAsked<QFileDialog>(&window, [this, mode, name](QFileDialog& dialog) {
            ++asked;
            EXPECT_EQ(dialog.acceptMode(), mode);
            dialog.setDirectory(folder.path());
            auto* const field = dialog.findChild<QLineEdit*>("fileNameEdit");
            field->selectAll();
            QTest::keyClicks(field, name);
            QTest::keyClick(field, Qt::Key_Return);
            if (!dialog.isVisible())
                return;
            ADD_FAILURE() << "not taken: " << name.toStdString();
            dialog.reject();
        });
    }
    void whenAskedToSave(const char* name)
    {
        whenAskedFor(QFileDialog::AcceptSave, name);
    }
    void whenAskedToOpen(const char* name)
    {
        whenAskedFor(QFileDialog::AcceptOpen, name);
    }
    // Nobody chooses anything.
    void whenAskedGoBack()
    {
        whenAsked<QFileDialog>(&window, [this](QFileDialog& dialog) {
            ++asked;
            QTest::keyClick(&dialog, Qt::Key_Escape);
        });
    }
    // The window, or what was opened over it.
    const QWidget& front() const
    {
        const QWidget* const active = QApplication::activeWindow();
        return active ? *active : window;
    }
    // As it is called there, without its letter.
    QPushButton* button(const QString& words) const
    {
        for (auto* const each : front().findChildren<QPushButton*>())
            if (each->isVisible() && each->text().remove('&') == words)
                return each;
        ADD_FAILURE() << "there is no button " << words.toStdString();
        return nullptr;
    }
    void click(const QString& words) const
    {
        QTest::mouseClick(button(words), Qt::LeftButton);
    }
    void choose(const QString& menu, const QString& words) const
    {
        QTimer::singleShot(0, &front(), [words]() {
            auto* const popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_TRUE(popup) << "there is no menu";
            chooseFrom(*popup, {words});
        });
        click(menu);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier)
    {
        window.activateWindow(); // again, as after a dialog
        ASSERT_TRUE(waitUntil([this]() { return window.isActiveWindow(); }));
        QTest::keyClick(&window, key, modifiers);
    }
    void watchAndOpen()
    {
        options.set = {"R_W:100=1234"};
        watch({"R_W:100"});
        open();
    }
    // By keys: the row's menu sends it to the page of trends.
    void showInTrends()
    {
        press(Qt::Key_2);
        auto* const values = window.findChild<QTableView*>("values");
        values->selectRow(0);
        chooseByKeys(*values, {"Show in trends"});
        ASSERT_EQ(plots(), 1U);
        const auto* const readout = window.findChild<QTableView*>("trendReadout");
        ASSERT_TRUE(waitUntil([readout]() { return shownIn(*readout, 2).front() == "1234"; }));
        // What is saved is what is drawn.
        const auto* const plot = window.findChild<TrendStack*>()->plots().front();
        ASSERT_TRUE(waitUntil([plot]() { return plot->curves().front()->dataSize() > 0; }));
    }
    std::size_t plots() const
    {
        return window.findChild<TrendStack*>()->plots().size();
    }

    int asked = 0;
};

TEST_F(TheFileDialogs, OpenAProjectFromTheStartPage)
{
    written("machine.json", ovenProject);
    whenAskedGoBack();
    click("Open a project \u2026");
    EXPECT_EQ(window.document().file(), QString());
    whenAskedToOpen("machine.json");
    click("Open a project \u2026");
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(window.document().file(), path("machine.json"));
    EXPECT_THAT(shown(), ElementsAre("oven 1/R_W:5 unsigned"));
    EXPECT_TRUE(window.pages().at(1)->isVisible()) << "one sees what it has";
}

TEST_F(TheFileDialogs, OpenAProjectWithItsKeys)
{
    written("machine.json", ovenProject);
    written("broken.json", "{\"version\": 1,\n \"tags\": 7}");
    whenAskedToOpen("machine.json");
    press(Qt::Key_O);
    EXPECT_THAT(shown(), ElementsAre("oven 1/R_W:5 unsigned"));
    whenAskedToOpen("broken.json");
    press(Qt::Key_O);
    EXPECT_EQ(asked, 2);
    EXPECT_THAT(message(), StartsWith("Nothing was opened. " + path("broken.json").toStdString()));
    EXPECT_THAT(shown(), ElementsAre("oven 1/R_W:5 unsigned"));
}

TEST_F(TheFileDialogs, SaveAProjectUnderANameAndAsAnother)
{
    add("R_W:100");
    whenAskedGoBack();
    press(Qt::Key_S);
    EXPECT_TRUE(window.document().isModified());
    whenAskedToSave("machine"); // its ending comes by itself
    press(Qt::Key_S);
    EXPECT_EQ(jsonOf(path("machine.json")).at("tags").size(), 1U);
    add("R_W:101");
    press(Qt::Key_S);
    EXPECT_EQ(asked, 2) << "it has a name by now";
    const std::string first = textOf(path("machine.json"));
    EXPECT_EQ(OrderedJson::parse(first).at("tags").size(), 2U);
    add("R_W:102");
    whenAskedToSave("other.json");
    press(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(jsonOf(path("other.json")).at("tags").size(), 3U);
    EXPECT_EQ(textOf(path("machine.json")), first);
    EXPECT_EQ(window.document().file(), path("other.json"));
}

TEST_F(TheFileDialogs, AskBeforeTheySaveOverAnotherFile)
{
    written("machine.json", ovenProject);
    add("R_W:100");
    whenAsked<QFileDialog>(&window, [this](QFileDialog& dialog) {
        dialog.setDirectory(folder.path());
        auto* const field = dialog.findChild<QLineEdit*>("fileNameEdit");
        QTest::keyClicks(field, "machine");
        answerWith(&window, QMessageBox::No, "machine.json already exists");
        QTest::keyClick(field, Qt::Key_Return);
        EXPECT_TRUE(dialog.isVisible()) << "for another name";
        dialog.reject();
    });
    press(Qt::Key_S);
    EXPECT_EQ(textOf(path("machine.json")), ovenProject);
    EXPECT_TRUE(window.document().isModified());
}

TEST_F(TheFileDialogs, LoadAndSaveARecipe)
{
    written("machine.json", ovenProject);
    written("one.json", R"({"oven": 42})");
    ASSERT_TRUE(window.actions().open(path("machine.json")));
    press(Qt::Key_9);
    const auto* const recipe = window.findChild<QTableView*>("recipe");
    whenAskedToOpen("one.json");
    click("Load \u2026");
    EXPECT_THAT(shownIn(*recipe, RecipeModel::buffer), ElementsAre("42"));
    EXPECT_THAT(window.findChild<QLabel*>("recipeFile")->text().toStdString(),
                StartsWith("File: one.json."));
    whenAskedGoBack();
    click("Save \u2026");
    whenAskedToSave("two.json");
    click("Save \u2026");
    EXPECT_EQ(asked, 3);
    EXPECT_EQ(jsonOf(path("two.json")).at("oven"), 42);
    EXPECT_EQ(textOf(path("one.json")), R"({"oven": 42})");
}

TEST_F(TheFileDialogs, SaveALineLogAndOpenOne)
{
    watchAndOpen();
    press(Qt::Key_5);
    const auto* const frames = window.findChild<QTableView*>("frames");
    ASSERT_TRUE(waitUntil([frames]() { return frames->model()->rowCount() > 4; }));
    click("Stand still");
    const int rows = frames->model()->rowCount();
    whenAskedToSave("line.log");
    click("Save as a line log \u2026");
    const RecordedLog log = readRecordedLog(path("line.log").toStdString());
    EXPECT_EQ(log.entries.size(), static_cast<std::size_t>(rows));
    EXPECT_TRUE(log.wire);
    EXPECT_THAT(message(), HasSubstr("line.log is written"));
    whenAskedGoBack();
    click("Open a line log \u2026");
    EXPECT_FALSE(button("Stand still") == nullptr) << "it is the line still";
    written("other.log", "2026-01-31T12:00:00.000000+00:00 TX 01 03 05 64 00 01 C5 15 |\n");
    whenAskedToOpen("other.log");
    click("Open a line log \u2026");
    EXPECT_EQ(asked, 3);
    EXPECT_EQ(frames->model()->rowCount(), 1);
    EXPECT_THAT(window.findChild<QLabel*>("standing")->text().toStdString(),
                AllOf(HasSubstr("other.log"), HasSubstr("not the line")));
}

TEST_F(TheFileDialogs, SaveTrendsAsATableAndAsPictures)
{
    watchAndOpen();
    showInTrends();
    whenAskedGoBack();
    choose("Save", "Values as CSV \u2026");
    whenAskedToSave("values.csv");
    choose("Save", "Values as CSV \u2026");
    EXPECT_TRUE(waitUntil([this]() { return QFile::exists(path("values.csv")); }));
    EXPECT_THAT(textOf(path("values.csv")),
                AllOf(StartsWith("time,name,address,value,unit,state\n"),
                      HasSubstr(",1/R_W:100,1/R_W:100,1234,,good\n")));
    whenAskedToSave("plots.png");
    choose("Save", "Picture as PNG or SVG \u2026");
    const QImage picture(path("plots.png"));
    EXPECT_EQ(picture.width(), 2 * window.findChild<TrendPlot*>()->width());
    whenAskedToSave("plots.svg");
    choose("Save", "Picture as PNG or SVG \u2026");
    EXPECT_EQ(asked, 4);
    EXPECT_THAT(textOf(path("plots.svg")), AllOf(HasSubstr("<svg"), HasSubstr("1/R_W:100")));
}

TEST_F(TheFileDialogs, SaveTheNotesOfTrendsAsATable)
{
    watchAndOpen();
    showInTrends();
    whenAsked<QDialog>(&window, [](QDialog& dialog) {
        QTest::keyClicks(dialog.findChild<QLineEdit*>(), "valve opened");
        QTest::keyClick(&dialog, Qt::Key_Return);
    });
    choose("Notes", "New note at cursor A, else now \u2026 (N)");
    choose("Notes", "List of notes \u2026");
    auto* const list = window.findChild<TrendNotesDialog*>();
    ASSERT_TRUE(QTest::qWaitForWindowActive(list));
    whenAskedToSave("notes.csv");
    click("Save as CSV \u2026");
    list->close();
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(waitUntil([this]() { return QFile::exists(path("notes.csv")); }));
    EXPECT_THAT(textOf(path("notes.csv")),
                AllOf(HasSubstr(",,,,,note: valve opened\n"), Not(HasSubstr("1234"))));
}

TEST_F(TheFileDialogs, SaveAProjectWithAPlotMoreOrFewer)
{
    watchAndOpen();
    showInTrends();
    const auto savedPlots = [this]() {
        press(Qt::Key_S);
        return jsonOf(path("machine.json")).at("panel").at("trends").at("plots").size();
    };
    whenAskedToSave("machine.json");
    EXPECT_EQ(savedPlots(), 1U);
    choose("Plots", "New plot");
    window.findChild<TrendValuesDialog*>()->close(); // asks which values it is to show
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_EQ(savedPlots(), 2U);
    choose("Plots", "Remove the plot that was touched last");
    EXPECT_EQ(savedPlots(), 1U);
    EXPECT_THAT(textOf(path("machine.json")), HasSubstr("1/R_W:100")) << "the empty one went";
    press(Qt::Key_Z);
    EXPECT_EQ(savedPlots(), 2U);
    press(Qt::Key_Z);
    EXPECT_EQ(savedPlots(), 1U);
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(savedPlots(), 2U);
    EXPECT_EQ(asked, 1);
}

} // namespace

} // namespace dov417
