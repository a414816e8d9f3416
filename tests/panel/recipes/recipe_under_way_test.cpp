// A recipe that is on its way to the controller: how far it has come, and a window that is closed
// meanwhile.
#include <QProgressBar>
#include <QPushButton>

#include "panel/recipes/recipes_page.h"
#include "project_world.h"

namespace dov417 {

namespace {

class ARecipeUnderWay : public ProjectWorld {
protected:
    void begin()
    {
        options.baudLimit = true; // so that there is a middle
        options.line = parseRtuFormat("19200,8,EVEN,1");
        std::string values = "1";
        for (int i = 1; i < 1000; ++i)
            values += ", 1";
        written("recipe.json", "{\"R_W:1000..1999\": [" + values + "]}");
        watch({"R_W:1000..1999"});
        open();
        unlock();
        window.showPage(8);
        page = window.findChild<RecipesPage*>();
        ASSERT_TRUE(page->loadFile(path("recipe.json")));
        answerWith(&window, QMessageBox::Yes, "Write 1000 value(s)");
        QTest::mouseClick(page->findChild<QPushButton*>("download"), Qt::LeftButton);
        ASSERT_TRUE(desk.recipeIsUnderWay());
    }

    RecipesPage* page = nullptr;
};

TEST_F(ARecipeUnderWay, SaysHowFarItHasComeAndIsAskedAboutBeforeTheWindowIsClosed)
{
    begin();
    const auto* const progress = page->findChild<QProgressBar*>("recipeProgress");
    EXPECT_TRUE(progress->isVisible());
    ASSERT_TRUE(waitUntil([progress]() { return progress->value() > 0; }));
    EXPECT_EQ(progress->maximum(), 1000);
    const int before = progress->value();
    ASSERT_LT(before, 1000);
    ASSERT_TRUE(waitUntil([&]() { return progress->value() > before; }));
    answerWith(&window, QMessageBox::No, "1000 value(s) are being written.");
    EXPECT_FALSE(window.close());
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(desk.recipeIsUnderWay());
    ASSERT_TRUE(waitUntil([this]() { return !desk.recipeIsUnderWay(); }));
    EXPECT_FALSE(progress->isVisible());
    EXPECT_EQ(held("R_W", 1999), 1) << "it went on";
}

} // namespace

} // namespace dov417
