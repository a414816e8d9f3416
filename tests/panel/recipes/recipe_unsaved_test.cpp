// The recipe's buffer outlives a panel that is ended before it was saved.
#include <QDir>
#include <QFileDialog>
#include <QTreeWidget>

#include "panel/project/recovery_dialog.h"
#include "panel/recipes/recipes_page.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int recipesPage = 8;

class AnUnsavedRecipe : public ProjectWorld {
protected:
    AnUnsavedRecipe()
        : page(window.findChild<RecipesPage*>()), table(page->findChild<QTableView*>("recipe"))
    {
        written("one.json", R"({"speed": 50.0, "width": 6})");
        writeProject(R"("register": "R_W", "address": 100, "scale": 0.1, "unit": "m/min")");
        openProject();
    }
    // With what the tag "speed" is.
    void writeProject(const std::string& speed) const
    {
        written("a.json", R"({"version": 1, "panel": {"recipes": {"file": ")" +
                              path("one.json").toStdString() + R"("}}, "tags": [
          {"name": "speed", )" +
                              speed + R"(},
          {"name": "width", "register": "R_W", "address": 101}]})");
    }
    void openProject()
    {
        ASSERT_TRUE(window.actions().open(path("a.json")));
        ASSERT_TRUE(waitUntil([this]() { return !buffer().empty() && buffer().back() == "6"; }));
        window.showPage(recipesPage);
        ASSERT_TRUE(page->isVisible());
    }
    std::vector<std::string> column(RecipeModel::Column which) const
    {
        QCoreApplication::processEvents();
        return shownIn(*table, which);
    }
    std::vector<std::string> buffer() const
    {
        return column(RecipeModel::buffer);
    }
    std::string file() const
    {
        return page->findChild<QLabel*>("recipeFile")->text().toStdString();
    }
    // Types into the buffer's cell.
    void edit(int row, const char* text)
    {
        table->setFocus();
        table->setCurrentIndex(table->model()->index(row, RecipeModel::buffer));
        QTest::keyClick(table, Qt::Key_F2);
        QWidget* const editor = QApplication::focusWidget();
        ASSERT_TRUE(editor && editor != table);
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        ASSERT_TRUE(waitUntil([this]() { return table->hasFocus(); }));
    }
    QStringList copies() const
    {
        QStringList names;
        for (const QString& place : {folder.path(), path("data/dov417/unsaved")})
            for (const QString& name :
                 QDir(place).entryList({".*.unsaved-????????"}, QDir::Files | QDir::Hidden))
                names.append(QDir(place).filePath(name));
        return names;
    }
    bool isKept() const
    {
        return waitUntil([this]() { return copies().size() == 1; });
    }
    bool isDropped() const
    {
        return waitUntil([this]() { return copies().isEmpty(); });
    }
    // The panel ends as for SIGTERM and is started again: what it kept is another's by then.
    void endAndBeginAnew()
    {
        window.leave();
        EXPECT_FALSE(window.isVisible());
        ASSERT_EQ(copies().size(), 1);
        const std::string text = textOf(copies().front());
        const bool isProjectToo = window.document().isModified();
        whenAsked<QMessageBox>(&window, [this, isProjectToo](QMessageBox& box) {
            EXPECT_THAT(box.text().toStdString(), HasSubstr("The recipe in the buffer"));
            if (isProjectToo)
                answerWith(&window, QMessageBox::Discard, "has changes");
            QTest::mouseClick(box.button(QMessageBox::Discard), Qt::LeftButton);
        });
        ASSERT_TRUE(window.close());
        ASSERT_TRUE(isDropped());
        window.document().begin({}, LineSetup());
        ASSERT_EQ(buffer(), std::vector<std::string>());
        written(".a.json.unsaved-0123abcd", text);
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    void takeUp()
    {
        whenAsked<RecoveryDialog>(&window, [](RecoveryDialog& dialog) {
            auto* const list = dialog.findChild<QTreeWidget*>("unsaved");
            ASSERT_EQ(list->topLevelItemCount(), 1);
            EXPECT_THAT(list->topLevelItem(0)->text(3).toStdString(),
                        HasSubstr("the recipe in the buffer, of "));
            QTest::mouseClick(dialog.findChild<QPushButton*>("takeUp"), Qt::LeftButton);
        });
        ASSERT_TRUE(window.actions().open(path("a.json")));
        EXPECT_THAT(message(), HasSubstr("This is what was not saved; save it to keep it."));
        window.showPage(recipesPage);
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    RecipesPage* page;
    QTableView* table;
};

TEST_F(AnUnsavedRecipe, IsKeptInAPauseAndNoLongerOnceItIsSavedOrTakenBack)
{
    EXPECT_THAT(copies(), IsEmpty());
    edit(1, "7");
    EXPECT_TRUE(isKept());
    EXPECT_FALSE(window.document().isModified());
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(isDropped());
    edit(1, "8");
    EXPECT_TRUE(isKept());
    EXPECT_TRUE(page->saveFile(path("one.json")));
    EXPECT_TRUE(isDropped());
    edit(1, "9");
    EXPECT_TRUE(isKept());
    table->selectAll();
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_THAT(buffer(), ElementsAre("", ""));
    EXPECT_TRUE(isDropped()) << "it is empty, which nobody misses";
}

TEST_F(AnUnsavedRecipe, StaysKeptWhenTheProjectAloneIsSaved)
{
    edit(1, "7");
    add("R_W:300");
    EXPECT_TRUE(window.document().isModified());
    press("saveProject");
    EXPECT_FALSE(window.document().isModified());
    EXPECT_THAT(textOf(path("a.json")), Not(HasSubstr("unsaved")));
    window.actions().keepUnsaved();
    ASSERT_EQ(copies().size(), 1);
    EXPECT_THAT(textOf(copies().front()), HasSubstr("unsavedOfPages"));
    EXPECT_TRUE(page->saveFile(path("one.json")));
    EXPECT_TRUE(isDropped());
}

TEST_F(AnUnsavedRecipe, IsTakenUpAsOneStepThatIsNotSaved)
{
    edit(0, "77.5");
    edit(1, "8");
    endAndBeginAnew();
    takeUp();
    EXPECT_THAT(buffer(), ElementsAre("77.5 m/min", "8"));
    EXPECT_THAT(column(RecipeModel::file), ElementsAre("\u2260 50 m/min", "\u2260 6"));
    EXPECT_THAT(file(), HasSubstr("It is not saved."));
    EXPECT_FALSE(copies().isEmpty());
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_THAT(buffer(), ElementsAre("50 m/min", "6"));
    EXPECT_FALSE(page->ownHistory()->canUndo());
    QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_THAT(buffer(), ElementsAre("77.5 m/min", "8"));
    answerWith(&window, QMessageBox::Save, "Save it in one.json?");
    EXPECT_TRUE(page->mayForget());
    EXPECT_THAT(textOf(path("one.json")), HasSubstr("77.5"));
    EXPECT_THAT(textOf(path("one.json")), HasSubstr("\"width\": 8"));
}

TEST_F(AnUnsavedRecipe, LeavesOutOfTheBufferWhatWasTakenOutOfIt)
{
    edit(0, "77.5");
    table->setCurrentIndex(table->model()->index(1, RecipeModel::buffer));
    QTest::keyClick(table, Qt::Key_Delete);
    ASSERT_THAT(buffer(), ElementsAre("77.5 m/min", ""));
    endAndBeginAnew();
    takeUp();
    EXPECT_THAT(buffer(), ElementsAre("77.5 m/min", ""));
}

TEST_F(AnUnsavedRecipe, HasValuesThatNobodyWatchesAgain)
{
    written("far.json", R"({"R_W:300@bcd": 4, "R_D:400@float": 1.5, "speed": 50, "width": 6})");
    ASSERT_TRUE(page->loadFile(path("far.json")));
    edit(2, "5");
    edit(1, "9");
    desk.removeItems({1}); // and the project is not saved either
    ASSERT_THAT(file(), HasSubstr("1 more of tags that are not watched"));
    endAndBeginAnew();
    takeUp();
    EXPECT_THAT(column(RecipeModel::address),
                ElementsAre("1/R_W:100", "1/R_W:300", "1/R_D:400", "1/R_W:101"));
    EXPECT_THAT(buffer(), ElementsAre("50 m/min", "5", "1.5", "9"));
    EXPECT_THAT(message(), HasSubstr("stands in rows of its addresses: width."));
}

// What is called so now is somewhere else.
TEST_F(AnUnsavedRecipe, ComesBackUnderTheAddressThatItWasEditedForAndNoOther)
{
    edit(0, "77.5");
    endAndBeginAnew();
    // The copy's own project names the place that it was edited for.
    std::string text = textOf(copies().front());
    const std::string before = R"("address": "100",)";
    ASSERT_THAT(text, HasSubstr(before)) << text;
    text.replace(text.find(before), before.size(), R"("address": "200",)");
    written(".a.json.unsaved-0123abcd", text);
    takeUp();
    EXPECT_THAT(column(RecipeModel::address), ElementsAre("1/R_W:200", "1/R_W:101", "1/R_W:100"));
    EXPECT_THAT(buffer(), ElementsAre("", "6", "775"));
    EXPECT_THAT(message(), HasSubstr("stands in rows of its addresses: speed."));
    EXPECT_TRUE(page->saveFile(path("two.json")));
    EXPECT_THAT(textOf(path("two.json")), HasSubstr("\"1/R_W:100\": 775"));
    EXPECT_THAT(textOf(path("two.json")), Not(HasSubstr("speed")));
}

TEST_F(AnUnsavedRecipe, ComesBackByItsAddressWhereItsTagMeansAnotherNumber)
{
    edit(0, "77.5");
    endAndBeginAnew();
    std::string text = textOf(copies().front());
    const std::string before = R"("scale": 0.1,)";
    ASSERT_THAT(text, HasSubstr(before)) << text;
    text.replace(text.find(before), before.size(), R"("scale": 0.01,)");
    written(".a.json.unsaved-0123abcd", text);
    takeUp();
    EXPECT_THAT(column(RecipeModel::name), ElementsAre("speed", "width", "1/R_W:100"));
    EXPECT_THAT(buffer(), ElementsAre("", "6", "775"));
}

TEST_F(AnUnsavedRecipe, TellsWhatCannotBeHadBackAndTakesTheRest)
{
    edit(0, "77.5");
    endAndBeginAnew();
    std::string text = textOf(copies().front());
    const std::string before = R"("1/R_W:101")";
    ASSERT_THAT(text, HasSubstr(before)) << text;
    text.replace(text.find(before), before.size(), R"("1/R_W:99999")");
    written(".a.json.unsaved-0123abcd", text);
    takeUp();
    EXPECT_THAT(buffer(), ElementsAre("77.5 m/min", ""));
    EXPECT_THAT(message(), HasSubstr("Not taken up: "));
    EXPECT_THAT(message(), HasSubstr("R_W:99999"));
}

TEST_F(AnUnsavedRecipe, IsNotSavedOverAFileThatAnotherProgramHasWritten)
{
    edit(0, "77.5");
    const std::string theirs = R"({"speed": 1.5, "width": 2})";
    written("one.json", theirs);
    whenAsked<QMessageBox>(&window, [this](QMessageBox& box) {
        EXPECT_THAT(box.text().toStdString(), HasSubstr("Save it in one.json?"));
        answerWith(&window, QMessageBox::No, "was written by another program");
        QTest::mouseClick(box.button(QMessageBox::Save), Qt::LeftButton);
    });
    EXPECT_FALSE(page->mayForget());
    EXPECT_EQ(textOf(path("one.json")), theirs);
    EXPECT_THAT(file(), HasSubstr("It is not saved."));
}

} // namespace

} // namespace dov417
