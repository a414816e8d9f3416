// What a person drags in the window, and the order of rows, in a project.
#include <QHeaderView>
#include <QSplitter>
#include <QTableView>

#include "panel/values/values_model.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class TheArrangement : public ProjectWorld {
protected:
    TheArrangement() : table(window.findChild<QTableView*>("values"))
    {
        add("R_W:3");
        add("R_W:1");
        add("R_W:2");
        for (int page = 0; page < static_cast<int>(window.pages().size()); ++page) {
            window.showPage(page); // each is laid out
            QCoreApplication::processEvents();
        }
    }
    std::vector<std::string> addresses() const
    {
        return shownIn(*table, ValuesModel::address);
    }
    QSplitter& splitter(const char* name) const
    {
        return *window.findChild<QSplitter*>(QLatin1String(name));
    }
    OrderedJson savedWindow() const
    {
        return jsonOf(path("machine.json")).at("panel").at("window");
    }
    std::string complaintAbout(const std::string& member)
    {
        const QString file =
            written("wrong.json", R"({"version": 1, "panel": {"window": {)" + member + "}}}");
        return complaint([&]() { window.document().open(file); });
    }

    QTableView* table;
};

TEST_F(TheArrangement, OfColumnsOrderAndPartsIsKeptInTheProject)
{
    window.showPage(1);
    QCoreApplication::processEvents();
    table->sortByColumn(ValuesModel::address, Qt::DescendingOrder);
    table->setColumnWidth(ValuesModel::name, 321);
    window.findChild<QTableView*>("writes")->setColumnWidth(1, 123);
    std::map<std::string, QList<int>> wanted;
    for (const char* const name :
         {"valuesSplit", "trendsSplit", "lineSplit", "planSplit", "planMapSplit"}) {
        QList<int> sizes = splitter(name).sizes();
        sizes[0] -= 37;
        sizes[1] += 37;
        splitter(name).setSizes(sizes);
        wanted[name] = splitter(name).sizes();
    }
    EXPECT_TRUE(window.isWindowModified()) << "of the values that were added";
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));

    table->sortByColumn(ValuesModel::address, Qt::AscendingOrder);
    table->setColumnWidth(ValuesModel::name, 99);
    window.findChild<QTableView*>("writes")->setColumnWidth(1, 99);
    for (const auto& [name, sizes] : wanted)
        splitter(name.c_str()).setSizes({sizes.at(0) + 60, sizes.at(1) - 60});
    EXPECT_FALSE(window.isWindowModified()) << "that is no edit";

    ASSERT_TRUE(window.actions().open(path("machine.json")));
    QCoreApplication::processEvents();
    EXPECT_THAT(addresses(), ElementsAre("1/R_W:3", "1/R_W:2", "1/R_W:1"));
    EXPECT_EQ(table->horizontalHeader()->sortIndicatorSection(), ValuesModel::address);
    EXPECT_EQ(table->horizontalHeader()->sortIndicatorOrder(), Qt::DescendingOrder);
    EXPECT_EQ(table->columnWidth(ValuesModel::name), 321);
    EXPECT_EQ(window.findChild<QTableView*>("writes")->columnWidth(1), 123);
    for (const auto& [name, sizes] : wanted)
        EXPECT_EQ(splitter(name.c_str()).sizes(), sizes) << name;
}

TEST_F(TheArrangement, OfAProjectThatNamesNoOrderIsAsTheValuesWereAdded)
{
    table->sortByColumn(ValuesModel::address, Qt::AscendingOrder);
    table->setColumnWidth(ValuesModel::name, 321);
    const QString file = written("machine.json", R"({"version": 1, "tags": [
        {"name": "b", "register": "R_W", "address": 5},
        {"name": "a", "register": "R_W", "address": 4}]})");
    window.document().open(file);
    window.showPage(1);
    EXPECT_THAT(addresses(), ElementsAre("1/R_W:5", "1/R_W:4"));
    EXPECT_EQ(table->columnWidth(ValuesModel::name), 321) << "nobody asked for another one";
    window.document().save(path("machine.json"));
    EXPECT_EQ(savedWindow().at("values-order").at("column"), 0);
}

TEST_F(TheArrangement, LeavesWhatANewerProgramKeepsThere)
{
    const QString file = written("machine.json", R"({"version": 1, "panel": {"window": {
        "values-columns": [200, 150, 100, 100, 90, 80, 70, 60], "values-order": {"column": 2},
        "line-split": [1, 2, 3], "frames-columns": [4, 5], "dock": {"left": true}}}})");
    window.document().open(file);
    EXPECT_EQ(table->columnWidth(ValuesModel::name), 200);
    window.document().save(file);
    EXPECT_EQ(savedWindow().at("frames-columns"), OrderedJson::parse("[4, 5]"));
    EXPECT_EQ(savedWindow().at("dock").at("left"), true);
    EXPECT_EQ(savedWindow().at("values-order").at("column"), 2);
}

TEST_F(TheArrangement, IsRefusedWithItsPlaceWhereItIsNone)
{
    EXPECT_THAT(complaintAbout(R"("values-columns": [200, -1])"),
                HasSubstr("panel.window.values-columns: a list of whole numbers from 0 to 32767"));
    EXPECT_THAT(complaintAbout(R"("plan-split": "half")"), HasSubstr("panel.window.plan-split: "));
    EXPECT_THAT(complaintAbout(R"("plan-split": [1.5, 2])"), HasSubstr("panel.window.plan-split"));
    EXPECT_THAT(complaintAbout(R"("values-order": 3)"),
                HasSubstr("panel.window.values-order: a column from 0 to 6 is needed"));
    EXPECT_THAT(complaintAbout(R"("values-order": {"column": 7})"), HasSubstr("values-order"));
    EXPECT_THAT(complaintAbout(R"("values-order": {"column": 1, "falling": 1})"),
                HasSubstr("values-order"));
    EXPECT_THAT(addresses(), ElementsAre("1/R_W:3", "1/R_W:1", "1/R_W:2")) << "nothing is other";
}

} // namespace

} // namespace dov417
