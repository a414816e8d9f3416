// The recipe's buffer beside the project: whose it is, what is taken back, and what is asked about.
#include <QFileDialog>
#include <QLineEdit>
#include <QTableView>

#include "panel/recipes/recipes_page.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ARecipeInAProject : public ProjectWorld {
protected:
    ARecipeInAProject()
    {
        page = window.findChild<RecipesPage*>();
        table = page->findChild<QTableView*>("recipe");
        written("one.json", R"({"R_W:100": 5, "R_W:101": 6})");
        written("a.json", R"({"version": 1, "panel": {"recipes": {"file": ")" +
                              path("one.json").toStdString() + R"("}}, "tags": [
          {"name": "speed", "register": "R_W", "address": 100},
          {"name": "width", "register": "R_W", "address": 101}]})");
        written("b.json", R"({"version": 1, "tags": [
          {"name": "speed", "register": "R_W", "address": 100},
          {"name": "width", "register": "R_W", "address": 101}]})");
    }
    void openFirst()
    {
        ASSERT_TRUE(window.actions().open(path("a.json")));
        ASSERT_TRUE(waitUntil([this]() { return page->ownHistory() && buffer().front() == "5"; }));
    }
    // While its page is not shown, what is watched comes with the next event where there is a
    // recipe, and else when it is shown.
    std::vector<std::string> column(RecipeModel::Column which) const
    {
        QCoreApplication::processEvents();
        return shownIn(*table, which);
    }
    std::vector<std::string> buffer() const
    {
        return column(RecipeModel::buffer);
    }
    void edit(int row, const char* text) const
    {
        EXPECT_TRUE(table->model()->setData(table->model()->index(row, RecipeModel::buffer), text));
    }
    std::string file() const
    {
        return page->findChild<QLabel*>("recipeFile")->text().toStdString();
    }
    void show(int place)
    {
        window.showPage(place);
    }
    void takeBack()
    {
        QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
    }
    void doAgain()
    {
        QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    }
    // Into a file that has to be chosen.
    void saveOnClosing(const char* name)
    {
        answerWith(&window, QMessageBox::Save, "The recipe in the buffer");
        whenAsked<QFileDialog>(&window, [this, name](QFileDialog& dialog) {
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(path(name));
            static_cast<QDialog&>(dialog).accept();
        });
        EXPECT_TRUE(page->mayForget());
    }
    void showRecipes()
    {
        window.showPage(
            static_cast<int>(std::find(window.pages().begin(), window.pages().end(), page) -
                             window.pages().begin()));
    }

    static constexpr int valuesPage = 1;
    RecipesPage* page = nullptr;
    QTableView* table = nullptr;
};

TEST_F(ARecipeInAProject, IsNotTheNextProjects)
{
    openFirst();
    EXPECT_THAT(file(), StartsWith("File: one.json."));
    ASSERT_TRUE(window.actions().open(path("b.json")));
    showRecipes();
    EXPECT_THAT(buffer(), ElementsAre("", ""));
    EXPECT_THAT(column(RecipeModel::file), ElementsAre("", ""));
    EXPECT_THAT(file(), StartsWith("No file. 0 value(s) in the buffer."));
    edit(0, "7");
    answerWith(&window, QMessageBox::Discard, "recipe");
    ASSERT_TRUE(window.actions().open(path("b.json")));
    EXPECT_THAT(buffer(), ElementsAre("", ""));
    edit(0, "7");
    answerWith(&window, QMessageBox::Discard, "recipe");
    press("newProject");
    add("R_W:100");
    EXPECT_THAT(buffer(), ElementsAre(""));
    EXPECT_FALSE(page->ownHistory()->canUndo());
}

TEST_F(ARecipeInAProject, IsReadFromTheFileAnewThoughTheNextProjectNamesTheSame)
{
    openFirst();
    edit(0, "7");
    answerWith(&window, QMessageBox::Discard, "recipe");
    openFirst();
    EXPECT_THAT(buffer(), ElementsAre("5", "6"));
    EXPECT_FALSE(window.document().isModified());
    EXPECT_FALSE(page->ownHistory()->canUndo());
}

TEST_F(ARecipeInAProject, HasStepsOfItsOwnThatAreTakenBackWhileItIsShown)
{
    openFirst();
    showRecipes();
    edit(0, "7");
    edit(1, "8");
    table->setFocus();
    table->selectAll();
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_THAT(buffer(), ElementsAre("", ""));
    takeBack();
    EXPECT_THAT(buffer(), ElementsAre("7", "8"));
    takeBack();
    EXPECT_THAT(buffer(), ElementsAre("7", "6"));
    EXPECT_EQ(table->currentIndex().row(), 1);
    takeBack();
    EXPECT_THAT(buffer(), ElementsAre("5", "6"));
    EXPECT_THAT(file(), Not(HasSubstr("It is not saved.")));
    EXPECT_FALSE(window.findChild<QAction*>("undo")->isEnabled());
    doAgain();
    doAgain();
    EXPECT_THAT(buffer(), ElementsAre("7", "8"));
    EXPECT_THAT(file(), HasSubstr("It is not saved."));
    EXPECT_FALSE(window.document().isModified()) << "the buffer is no part of the project";
}

TEST_F(ARecipeInAProject, HasItsBufferAgainAfterAnotherFileWasLoaded)
{
    ASSERT_TRUE(window.actions().open(path("b.json")));
    showRecipes();
    edit(0, "7");
    written("far.json", R"({"R_W:101": 9, "R_W:300": 4})");
    ASSERT_TRUE(page->loadFile(path("far.json")));
    EXPECT_THAT(buffer(), ElementsAre("", "9", "4"));
    ASSERT_TRUE(page->loadFile(path("one.json")));
    EXPECT_THAT(buffer(), ElementsAre("5", "6"));
    takeBack();
    EXPECT_THAT(buffer(), ElementsAre("", "9", "4"));
    EXPECT_THAT(column(RecipeModel::name), ElementsAre("speed", "width", "1/R_W:300"));
    EXPECT_THAT(file(), StartsWith("File: one.json.")) << "that is no step";
    EXPECT_THAT(file(), HasSubstr("It is not saved."));
    takeBack();
    EXPECT_THAT(buffer(), ElementsAre("7", ""));
    doAgain();
    doAgain();
    EXPECT_THAT(buffer(), ElementsAre("5", "6"));
    EXPECT_TRUE(window.document().isModified()) << "the project names another file now";
    EXPECT_FALSE(window.document().history().canUndo());
}

TEST_F(ARecipeInAProject, StaysAsItIsWhateverIsTakenBackElsewhere)
{
    ASSERT_TRUE(window.actions().open(path("b.json")));
    show(valuesPage);
    add("R_W:102");
    ASSERT_TRUE(page->loadFile(path("one.json")));
    edit(0, "7");
    takeBack();
    EXPECT_THAT(buffer(), ElementsAre("7", "6"));
    EXPECT_THAT(file(), StartsWith("File: one.json."));
    doAgain();
    EXPECT_THAT(buffer(), ElementsAre("7", "6", ""));
    EXPECT_EQ(window.document().image().content.pages.at("recipes").at("file"),
              path("one.json").toStdString());
    ASSERT_TRUE(window.actions().saveIn(path("b.json")));
    EXPECT_FALSE(window.document().isModified());
    EXPECT_EQ(jsonOf(path("b.json")).at("panel").at("recipes").at("file"),
              path("one.json").toStdString());
}

TEST_F(ARecipeInAProject, HasItsValuesAgainWhenTheyAreWatchedAgain)
{
    openFirst();
    edit(1, "8");
    show(valuesPage);
    desk.removeItems({1});
    EXPECT_THAT(buffer(), ElementsAre("5"));
    takeBack();
    EXPECT_THAT(buffer(), ElementsAre("5", "8"));
}

TEST_F(ARecipeInAProject, IsAskedAboutBeforeItIsLost)
{
    openFirst();
    edit(0, "7");
    answerWith(&window, QMessageBox::Cancel,
               "The recipe in the buffer, of 2 value(s), is not saved");
    EXPECT_FALSE(window.close());
    answerWith(&window, QMessageBox::Cancel, "The recipe in the buffer");
    press("newProject");
    EXPECT_THAT(buffer(), ElementsAre("7", "6"));
    answerWith(&window, QMessageBox::Save, "The recipe in the buffer");
    EXPECT_TRUE(window.close());
    EXPECT_THAT(textOf(path("one.json")), HasSubstr("7"));
    window.show();
    edit(0, "8");
    answerWith(&window, QMessageBox::Discard, "The recipe in the buffer");
    EXPECT_TRUE(window.close());
    EXPECT_THAT(textOf(path("one.json")), Not(HasSubstr("8")));
}

// The buffer is the first file's again, and the second one's own content is nowhere else.
TEST_F(ARecipeInAProject, IsNotSavedIntoAFileThatItIsNotOf)
{
    ASSERT_TRUE(window.actions().open(path("b.json")));
    showRecipes();
    written("two.json", R"({"R_W:100": 8, "R_W:101": 9})");
    ASSERT_TRUE(page->loadFile(path("one.json")));
    ASSERT_TRUE(page->loadFile(path("two.json")));
    takeBack();
    EXPECT_THAT(buffer(), ElementsAre("5", "6"));
    edit(0, "7");
    answerWith(&window, QMessageBox::Cancel,
               "It is not of two.json. Save it in a file of its own?");
    EXPECT_FALSE(page->mayForget());
    saveOnClosing("three.json");
    EXPECT_THAT(textOf(path("two.json")), Not(HasSubstr("7")));
    EXPECT_THAT(textOf(path("three.json")), HasSubstr("7"));
    EXPECT_THAT(textOf(path("one.json")), Not(HasSubstr("7")));
}

TEST_F(ARecipeInAProject, IsSavedIntoItsFileOnceItIsOfItAgain)
{
    ASSERT_TRUE(window.actions().open(path("b.json")));
    showRecipes();
    ASSERT_TRUE(page->loadFile(path("one.json")));
    takeBack();
    EXPECT_THAT(buffer(), ElementsAre("", ""));
    doAgain();
    EXPECT_THAT(buffer(), ElementsAre("5", "6"));
    edit(0, "7");
    edit(0, "8");
    takeBack();
    answerWith(&window, QMessageBox::Save, "Save it in one.json?");
    EXPECT_TRUE(page->mayForget());
    EXPECT_THAT(textOf(path("one.json")), HasSubstr("7"));
}

// Two files of the same values: going back past the second one's loading changes no value.
TEST_F(ARecipeInAProject, IsOfTheFileThatWasLoadedLastThoughItHoldsTheSame)
{
    ASSERT_TRUE(window.actions().open(path("b.json")));
    showRecipes();
    written("two.json", R"({"R_W:100": 7, "R_W:101": 6})");
    ASSERT_TRUE(page->loadFile(path("one.json")));
    edit(0, "7");
    ASSERT_TRUE(page->loadFile(path("two.json")));
    takeBack();
    takeBack();
    EXPECT_THAT(buffer(), ElementsAre("5", "6"));
    answerWith(&window, QMessageBox::Cancel, "It is not of two.json");
    EXPECT_FALSE(page->mayForget());
    window.activateWindow(); // again, as after the question
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    doAgain();
    doAgain();
    EXPECT_THAT(buffer(), ElementsAre("7", "6"));
    edit(0, "9");
    answerWith(&window, QMessageBox::Cancel, "Save it in two.json?");
    EXPECT_FALSE(page->mayForget());
}

TEST_F(ARecipeInAProject, IsAskedAboutThoughNobodyWatchesItsValuesAnyMore)
{
    openFirst();
    edit(0, "7");
    show(valuesPage);
    desk.removeItems({0, 1});
    showRecipes();
    EXPECT_THAT(file(), HasSubstr("2 more of tags that are not watched"));
    EXPECT_THAT(file(), HasSubstr("It is not saved."));
    answerWith(&window, QMessageBox::Cancel,
               "The recipe in the buffer, of 2 value(s), is not saved");
    EXPECT_FALSE(page->mayForget());
    EXPECT_TRUE(page->saveFile(path("one.json")));
    EXPECT_THAT(textOf(path("one.json")), HasSubstr("\"1/R_W:100\": 7"));
    EXPECT_TRUE(page->mayForget());
}

TEST_F(ARecipeInAProject, IsAskedAboutWhileItIsDownloadedButNotWhereNobodyMayAnswer)
{
    options.baudLimit = true;
    options.line = parseRtuFormat("9600,8,EVEN,1"); // so that it takes a while
    watch({"R_W:1000..1999"});
    std::string values = "1";
    for (int i = 1; i < 1000; ++i)
        values += ", 1";
    written("long.json", "{\"R_W:1000..1999\": [" + values + "]}");
    open();
    unlock();
    showRecipes();
    ASSERT_TRUE(page->loadFile(path("long.json")));
    answerWith(&window, QMessageBox::Yes, "Write 1000 value(s)");
    QTest::mouseClick(page->findChild<QPushButton*>("download"), Qt::LeftButton);
    ASSERT_TRUE(desk.recipeIsUnderWay());
    answerWith(&window, QMessageBox::No,
               "1000 value(s) are being written. What becomes of them is not known");
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(desk.recipeIsUnderWay());
    window.leave();
    EXPECT_FALSE(window.isVisible());
    EXPECT_TRUE(desk.end()) << "the line is left quiet";
}

} // namespace

} // namespace dov417
