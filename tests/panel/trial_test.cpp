// Whoever tries the panel without hardware finds something alive on every page.
#include <QPushButton>
#include <QTableView>

#include "panel/frames/wire_view.h"
#include "panel/pictures.h"
#include "panel/recipes/recipe_model.h"
#include "panel/trends/trend_stack.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::Contains;
using testing::HasSubstr;

class ATrial : public ProjectWorld {
protected:
    ATrial()
    {
        QTest::mouseClick(window.findChild<QPushButton*>("trial"), Qt::LeftButton);
    }
    void show(const char* title)
    {
        for (int i = 0; i < static_cast<int>(window.pages().size()); ++i)
            if (window.pages().at(static_cast<std::size_t>(i))->title() == QLatin1String(title))
                window.showPage(i);
    }
    QTableView& table(const char* name) const
    {
        return *window.findChild<QTableView*>(QLatin1String(name));
    }
    int rows(const char* name) const
    {
        return table(name).model()->rowCount();
    }
};

TEST_F(ATrial, HasValuesThatChangeAndLampsThatGoOn)
{
    show("Values");
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    EXPECT_EQ(rows("values"), static_cast<int>(desk.tags().values.size()));
    show("Lamps");
    EXPECT_EQ(rows("lamps"), 3);
    const auto isOn = [this](int bit) {
        const QModelIndex lamp = table("lamps").model()->index(0, bit);
        return lamp.data(Qt::AccessibleTextRole).toString().contains(QStringLiteral("on, \u2713"));
    };
    for (const int bit : {0, 1})
        EXPECT_TRUE(waitUntil([&]() { return isOn(bit); })) << "the light runs";
}

TEST_F(ATrial, HasCurvesOfMoreThanOnePoint)
{
    show("Trends");
    const auto* const stack = window.findChild<TrendStack*>();
    EXPECT_TRUE(waitUntil([stack]() {
        return !stack->plots().empty() &&
               std::all_of(stack->plots().front()->curves().begin(),
                           stack->plots().front()->curves().end(),
                           [](const TrendCurve* curve) { return curve->dataSize() > 1; });
    }));
    EXPECT_FALSE(stack->plots().front()->curves().empty());
}

TEST_F(ATrial, HasFramesInWordsAndToScale)
{
    show("Line");
    EXPECT_TRUE(waitUntil([this]() { return rows("frames") > 10; }));
    for (const char* const station : {"station 1: ", "station 2: ", "station 3: "})
        EXPECT_TRUE(waitUntil([&]() {
            return testing::Value(shownIn(table("frames"), 3), Contains(HasSubstr(station)));
        })) << station;
    show("Time on the wire");
    auto* const wire = window.findChild<WireView*>();
    wire->chooseNext(-1);
    EXPECT_THAT(window.findChild<QLabel*>("frame")->text().toStdString(), HasSubstr("station"));
    EXPECT_LT(wire->from(), wire->to());
}

TEST_F(ATrial, HasAPlanCountersAndARecipe)
{
    show("Plan");
    EXPECT_TRUE(waitUntil([this]() { return rows("planMap") > 0; }));
    EXPECT_GT(rows("planRequests"), 3);
    show("Health");
    EXPECT_TRUE(waitUntil([this]() { return rows("counters") > 3; }));
    show("Recipes");
    EXPECT_EQ(rows("recipe"), static_cast<int>(desk.tags().values.size()));
    EXPECT_TRUE(waitUntil([this]() {
        const std::vector<std::string> held = shownIn(table("recipe"), RecipeModel::controller);
        return std::find(held.begin(), held.end(), std::string()) == held.end();
    }));
}

TEST_F(ATrial, IsPhotographedWithARecipeThatWasRead)
{
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    takePictures(window, folder.filePath("pictures"), true);
    EXPECT_THAT(shownIn(table("recipe"), RecipeModel::outcome), Contains("\u2713 read"));
    EXPECT_TRUE(QFile::exists(folder.filePath("pictures/recipes-light.png")));
    EXPECT_TRUE(QFile::exists(folder.filePath("pictures/recipes-dark.png")));
}

} // namespace

} // namespace dov417
