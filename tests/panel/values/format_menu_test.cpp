// A tag's format, chosen from the menu of its row with keys.
#include <QTableView>

#include "menu_choosing.h"
#include "panel/values/values_page.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;

class TheFormatMenu : public ProjectWorld {
protected:
    TheFormatMenu()
    {
        window.showPage(1);
        table = window.findChild<QTableView*>("values");
    }
    std::vector<std::string> values() const
    {
        return shownIn(*table, ValuesModel::value);
    }
    void choose(int row, const char* format)
    {
        table->setFocus();
        table->selectRow(row);
        chooseByKeys(*table, {"Format", QLatin1String(format)});
    }
    OrderedJson saved()
    {
        window.document().save(path("machine.json"));
        return jsonOf(path("machine.json"));
    }

    QTableView* table = nullptr;
};

TEST_F(TheFormatMenu, ChangesHowAValueIsShownAndKept)
{
    options.set = {"R_W:100=255", "R_W:200=65535"};
    watch({"R_W:100", "R_W:200"});
    open();
    ASSERT_THAT(values(), ElementsAre("255", "65535"));
    choose(1, "signed");
    EXPECT_THAT(values(), ElementsAre("255", "-1"));
    choose(0, "hex");
    EXPECT_THAT(values(), ElementsAre("0x00FF", "-1"));
    EXPECT_TRUE(allAre(ValueState::good)) << "the same addresses are watched";
    const OrderedJson project = saved();
    EXPECT_EQ(project.at("tags").at(0).at("format"), "hex");
    EXPECT_EQ(project.at("tags").at(1).at("format"), "signed");
    press("undo");
    EXPECT_THAT(values(), ElementsAre("255", "-1"));
    press("redo");
    ASSERT_TRUE(window.actions().open(path("machine.json")));
    EXPECT_THAT(shown(), ElementsAre("1/R_W:100 1/R_W:100 hex", "1/R_W:200 1/R_W:200 signed"));
}

TEST_F(TheFormatMenu, IsOfAllValuesOfATag)
{
    options.set = {"R_W:100=10", "R_W:101=11", "R_W:300=12"};
    watch({"R_W:100..101", "R_W:300"});
    open();
    choose(1, "hex");
    EXPECT_THAT(values(), ElementsAre("0x000A", "0x000B", "12"));
}

TEST_F(TheFormatMenu, OffersWhatFitsEveryRowThatIsChosen)
{
    watch({"R_W:100", "R_D:200", "M_bit:1.0"});
    table->selectRow(1);
    EXPECT_TRUE(offeredIn(*table, "Format").contains("float"));
    table->selectRow(2);
    EXPECT_TRUE(offeredIn(*table, "Format").contains("bool"));
    EXPECT_FALSE(offeredIn(*table, "Format").contains("float"));
    table->selectionModel()->select(
        QItemSelection(table->model()->index(0, 0), table->model()->index(1, 0)),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    const QStringList ofBoth = offeredIn(*table, "Format");
    EXPECT_TRUE(ofBoth.contains("hex"));
    EXPECT_FALSE(ofBoth.contains("float")) << "one word is no float";
}

TEST_F(TheFormatMenu, LeavesTheOwnFormatOfATagWithAScaleInTheProject)
{
    options.set = {"R_W:100=215"};
    controller = std::make_unique<ControllerProcess>(options);
    window.document().open(
        written("machine.json", R"({"version": 1, "line": {"port": ")" + controller->port() +
                                    R"("}, "tags": [{"name": "oven", "register": "R_W",
                                    "address": "100", "scale": 0.1, "unit": "K"}]})"));
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    ASSERT_THAT(values(), ElementsAre("21.5 K"));
    choose(0, "hex");
    EXPECT_THAT(values(), ElementsAre("0x00D7")) << "what is scaled is a number";
    const OrderedJson project = saved();
    EXPECT_EQ(project.at("tags").at(0).at("scale"), 0.1);
    EXPECT_FALSE(project.at("tags").at(0).contains("format"));
    EXPECT_EQ(project.at("panel").at("formats").at("oven"), "hex");
    choose(0, "unsigned");
    EXPECT_THAT(values(), ElementsAre("21.5 K"));
}

} // namespace

} // namespace dov417
