// The order of the rows: by the head's click, by the menu with keys, and back to as they were
// added.
#include <QHeaderView>
#include <QTableView>

#include "made_views.h"
#include "menu_choosing.h"
#include "panel/values/values_page.h"
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;

class TheOrderOfValues : public PanelWorld {
protected:
    TheOrderOfValues()
    {
        page.resize(1200, 700);
        page.show();
        page.activateWindow();
        table = page.findChild<QTableView*>("values");
        EXPECT_TRUE(QTest::qWaitForWindowActive(&page));
    }
    std::vector<std::string> column(ValuesModel::Column which) const
    {
        return shownIn(*table, which);
    }
    std::vector<std::string> addresses() const
    {
        return column(ValuesModel::address);
    }
    void order(const char* which)
    {
        table->setFocus();
        chooseByKeys(*table, {"Order of the rows", QLatin1String(which)});
    }
    void click(ValuesModel::Column which) const
    {
        const QHeaderView& head = *table->horizontalHeader();
        QTest::mouseClick(head.viewport(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(head.sectionViewportPosition(which) + head.sectionSize(which) / 2,
                                 head.height() / 2));
    }
    void watch(const std::vector<std::string>& texts)
    {
        std::vector<Item> items;
        for (const std::string& text : texts)
            items.push_back(Items(library, ItemSource()).find(text, Access::read));
        recorded.setItems(items);
    }
    // As the line would tell it, without one.
    void tell(const std::vector<View>& views)
    {
        LineBatch batch = batchOf(0, views);
        for (View& view : batch.values)
            view.value = {view.value.front(), 0};
        recorded.play(batch);
    }
    static View readBefore(const Address& address, std::chrono::seconds age)
    {
        View view = goodView(address, 1);
        view.lastGood = Clock::now() - age;
        return view;
    }

    PanelDesk recorded{library, PanelDesk::Source::recording};
    ValuesPage page{recorded};
    QTableView* table = nullptr;
};

TEST_F(TheOrderOfValues, IsByNameAsTheMenuSays)
{
    std::vector<Item> items;
    for (const auto& [address, name] :
         {std::pair{"R_W:3", "belt"}, std::pair{"R_W:1", "oven"}, std::pair{"R_W:2", "air"}}) {
        Item item = Items(library, ItemSource()).find(address, Access::read);
        item.name = name;
        items.push_back(item);
    }
    recorded.setItems(items);
    order("Name, rising");
    EXPECT_THAT(column(ValuesModel::name), ElementsAre("air", "belt", "oven"));
    order("Name, falling");
    EXPECT_THAT(column(ValuesModel::name), ElementsAre("oven", "belt", "air"));
    EXPECT_EQ(table->horizontalHeader()->sortIndicatorSection(), ValuesModel::name);
    order("As they were added");
    EXPECT_THAT(column(ValuesModel::name), ElementsAre("belt", "oven", "air"));
    EXPECT_EQ(table->horizontalHeader()->sortIndicatorSection(), -1);
    click(ValuesModel::name);
    EXPECT_THAT(column(ValuesModel::name), ElementsAre("air", "belt", "oven"));
}

TEST_F(TheOrderOfValues, IsByStateWithWhatWasNeverReadFirst)
{
    watch({"R_W:1", "R_W:2", "R_W:3"});
    View old = goodView(registerAt(1), 1);
    old.isOld = true;
    tell({old, goodView(registerAt(2), 2)});
    order("State, rising");
    EXPECT_THAT(addresses(), ElementsAre("1/R_W:3", "1/R_W:2", "1/R_W:1"));
    EXPECT_THAT(column(ValuesModel::state),
                ElementsAre("? never read", "\u2713 good", "\u25f7 old"));
    order("State, falling");
    EXPECT_THAT(addresses(), ElementsAre("1/R_W:1", "1/R_W:2", "1/R_W:3"));
}

TEST_F(TheOrderOfValues, IsByAgeWithWhatWasNeverReadFirst)
{
    using std::chrono::seconds;
    watch({"R_W:1", "R_W:2", "R_W:3", "R_W:4"});
    tell({readBefore(registerAt(1), seconds(60)), readBefore(registerAt(2), seconds(5)),
          readBefore(registerAt(4), seconds(600))});
    order("Age, rising");
    EXPECT_THAT(addresses(), ElementsAre("1/R_W:3", "1/R_W:2", "1/R_W:1", "1/R_W:4"));
    click(ValuesModel::age);
    EXPECT_THAT(addresses(), ElementsAre("1/R_W:4", "1/R_W:1", "1/R_W:2", "1/R_W:3"));
}

TEST_F(TheOrderOfValues, StaysWhileValuesChange)
{
    watch({"R_W:1", "R_W:2"});
    tell({goodView(registerAt(1), 9), goodView(registerAt(2), 5)});
    order("Value, rising");
    ASSERT_THAT(addresses(), ElementsAre("1/R_W:2", "1/R_W:1"));
    tell({goodView(registerAt(1), 1, 1)});
    EXPECT_THAT(addresses(), ElementsAre("1/R_W:2", "1/R_W:1"));
    EXPECT_THAT(column(ValuesModel::value), ElementsAre("5", "1"));
}

TEST_F(TheOrderOfValues, IsAsTheyWereAddedWithinGroupsAndAfterThem)
{
    auto* const grouping = page.findChild<QComboBox*>("grouping");
    watch({"2/R_W:9", "1/T:1", "1/R_W:8", "2/R_W:3", "1/R_W:4"});
    grouping->setFocus();
    QTest::keyClick(grouping, Qt::Key_Down);
    EXPECT_THAT(addresses(), ElementsAre("1/T:1", "1/R_W:8", "1/R_W:4", "2/R_W:9", "2/R_W:3"));
    order("Address, rising");
    order("As they were added");
    EXPECT_THAT(addresses(), ElementsAre("1/T:1", "1/R_W:8", "1/R_W:4", "2/R_W:9", "2/R_W:3"));
    QTest::keyClick(grouping, Qt::Key_Up);
    EXPECT_THAT(addresses(), ElementsAre("2/R_W:9", "1/T:1", "1/R_W:8", "2/R_W:3", "1/R_W:4"));
    order("Address, rising");
    QTest::keyClick(grouping, Qt::Key_Down);
    QTest::keyClick(grouping, Qt::Key_Up);
    EXPECT_THAT(addresses(), ElementsAre("1/R_W:4", "1/R_W:8", "1/T:1", "2/R_W:3", "2/R_W:9"))
        << "what was asked for stays";
    order("As they were added");
    EXPECT_THAT(addresses(), ElementsAre("2/R_W:9", "1/T:1", "1/R_W:8", "2/R_W:3", "1/R_W:4"));
    watch({"2/R_W:9", "1/T:1"});
    EXPECT_THAT(addresses(), ElementsAre("2/R_W:9", "1/T:1"));
}

} // namespace

} // namespace dov417
