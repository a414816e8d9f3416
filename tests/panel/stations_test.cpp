// What stations are called: in their dialog, in the project, and on the pages.
#include <QComboBox>
#include <QLineEdit>
#include <QTableView>

#include "panel/frames/wire_view.h"
#include "panel/health/health_model.h"
#include "panel/project/stations_dialog.h"
#include "panel/values/values_model.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class TheStations : public ProjectWorld {
protected:
    // Not with its keys: they would be held down as long as the dialog is there.
    void editWith(const std::function<void(StationsDialog&)>& todo)
    {
        whenAsked<StationsDialog>(&window, [todo](StationsDialog& dialog) {
            dialog.activateWindow();
            EXPECT_TRUE(waitUntil([&]() { return QApplication::activeWindow() == &dialog; }));
            todo(dialog);
            if (!dialog.isVisible())
                return;
            ADD_FAILURE() << "nothing has closed it";
            dialog.reject();
        });
        press("stations");
    }
    static QTableView* tableOf(const StationsDialog& dialog)
    {
        return dialog.findChild<QTableView*>("stations");
    }
    // The cell's that is edited: one before may be there until the event loop has its turn.
    static QLineEdit* newest(const QTableView& table)
    {
        const QList<QLineEdit*> fields = table.findChildren<QLineEdit*>();
        return fields.isEmpty() ? nullptr : fields.constLast();
    }
    // As a person types it into a cell.
    static void type(const StationsDialog& dialog, int row, int column, const QString& text)
    {
        QTableView* const table = tableOf(dialog);
        table->setFocus();
        table->setCurrentIndex(table->model()->index(row, column));
        QTest::keyClick(table, Qt::Key_F2);
        auto* const field = newest(*table);
        ASSERT_TRUE(field);
        field->selectAll();
        QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
        QCoreApplication::processEvents(); // what was typed is taken from the event loop
    }
    static std::string cell(const StationsDialog& dialog, int row, int column)
    {
        return tableOf(dialog)->model()->index(row, column).data().toString().toStdString();
    }
    static bool mayKeep(const StationsDialog& dialog)
    {
        return dialog.findChild<QPushButton*>("keepStations")->isEnabled();
    }
    static void click(const StationsDialog& dialog, const char* button)
    {
        QTest::mouseClick(dialog.findChild<QPushButton*>(QLatin1String(button)), Qt::LeftButton);
    }
    void name(int station, const char* text)
    {
        std::vector<ProjectStation> stations = window.document().stations();
        ProjectStation named;
        named.number = station;
        named.name = text;
        stations.push_back(named);
        window.document().setStations(stations);
    }
    // Beside the rows of the page of values.
    std::vector<std::string> groups()
    {
        window.showPage(1);
        const QAbstractItemModel& model = *window.findChild<QTableView*>("values")->model();
        std::vector<std::string> texts;
        for (int row = 0; row < model.rowCount(); ++row)
            texts.push_back(model.headerData(row, Qt::Vertical).toString().toStdString());
        return texts;
    }
    void groupByStation() const
    {
        window.findChild<QComboBox*>("grouping")->setCurrentIndex(1);
    }
};

TEST_F(TheStations, AreNamedWithKeysAndCalledSoBesideTheirValues)
{
    add("3/R_W:1");
    groupByStation();
    EXPECT_THAT(groups(), ElementsAre("station 3"));
    editWith([](StationsDialog& dialog) {
        EXPECT_EQ(cell(dialog, 0, StationsModel::number), "3") << "it is watched";
        type(dialog, 0, StationsModel::name, "filler");
        ASSERT_TRUE(dialog.isVisible()) << "Enter ended what was typed, and no more";
        click(dialog, "keepStations");
    });
    EXPECT_THAT(groups(), ElementsAre("3 filler"));
    ASSERT_TRUE(window.actions().saveIn(path("machine.json")));
    EXPECT_EQ(jsonOf(path("machine.json")).at("stations").dump(),
              R"([{"number":3,"name":"filler"}])");
    press("undo");
    EXPECT_THAT(groups(), ElementsAre("station 3"));
    EXPECT_TRUE(window.document().isModified());
    press("redo");
    EXPECT_THAT(groups(), ElementsAre("3 filler"));
    ASSERT_TRUE(window.actions().begin({}, LineSetup()));
    add("3/R_W:1");
    groupByStation();
    EXPECT_THAT(groups(), ElementsAre("station 3")) << "another project";
    answerWith(&window, QMessageBox::Discard, "not saved");
    ASSERT_TRUE(window.actions().open(path("machine.json")));
    EXPECT_THAT(groups(), ElementsAre("3 filler"));
}

TEST_F(TheStations, AreReachedWithKeys)
{
    bool wasThere = false;
    whenAsked<StationsDialog>(&window, [&wasThere](StationsDialog& dialog) {
        wasThere = true;
        dialog.reject();
    });
    QTest::keyClick(&window, Qt::Key_T, Qt::ControlModifier);
    EXPECT_TRUE(wasThere);
}

TEST_F(TheStations, AreRefusedBesideTheirRow)
{
    name(2, "press");
    name(3, "oven");
    editWith([](StationsDialog& dialog) {
        const auto wrong = [&dialog](int row) { return cell(dialog, row, StationsModel::verdict); };
        EXPECT_TRUE(mayKeep(dialog));
        type(dialog, 1, StationsModel::number, "2");
        EXPECT_THAT(wrong(1), HasSubstr("2 is already a station's"));
        EXPECT_EQ(wrong(0), "");
        EXPECT_FALSE(mayKeep(dialog));
        type(dialog, 1, StationsModel::number, "300");
        EXPECT_THAT(wrong(1), HasSubstr("number: a whole number from 1 to 247"));
        type(dialog, 1, StationsModel::number, "");
        EXPECT_THAT(wrong(1), HasSubstr("a station needs its number"));
        type(dialog, 1, StationsModel::number, "4");
        EXPECT_EQ(wrong(1), "");
        type(dialog, 0, StationsModel::maxRegisters, "1");
        EXPECT_THAT(wrong(0), HasSubstr("max-registers: a whole number from 2"));
        EXPECT_FALSE(mayKeep(dialog));
        type(dialog, 0, StationsModel::maxRegisters, "many");
        EXPECT_FALSE(mayKeep(dialog));
        type(dialog, 0, StationsModel::maxRegisters, "60");
        EXPECT_TRUE(mayKeep(dialog));
        click(dialog, "keepStations");
    });
    EXPECT_EQ(desk.stationNames(), (StationNames{{2, "press"}, {4, "oven"}}));
    EXPECT_EQ(window.document().line().stationMaxRegisters, (std::map<int, int>{{2, 60}}));
    EXPECT_EQ(desk.lineSetup().stationMaxRegisters, (std::map<int, int>{{2, 60}}))
        << "plans are made for it";
    press("undo");
    EXPECT_EQ(desk.stationNames(), (StationNames{{2, "press"}, {3, "oven"}}));
    EXPECT_TRUE(desk.lineSetup().stationMaxRegisters.empty());
}

TEST_F(TheStations, AreAddedAndTakenAway)
{
    name(2, "press");
    name(3, "oven");
    editWith([](StationsDialog& dialog) {
        tableOf(dialog)->setFocus();
        tableOf(dialog)->setCurrentIndex(tableOf(dialog)->model()->index(0, 1));
        EXPECT_EQ(QApplication::focusWidget(), tableOf(dialog));
        QTest::keyClick(tableOf(dialog), Qt::Key_Delete);
        EXPECT_EQ(tableOf(dialog)->model()->rowCount(), 1);
        click(dialog, "addStation");
        auto* const field = newest(*tableOf(dialog));
        ASSERT_TRUE(field) << "its number can be typed at once";
        QTest::keyClicks(field, "9");
        QTest::keyClick(field, Qt::Key_Return);
        QCoreApplication::processEvents();
        type(dialog, 1, StationsModel::name, "pump");
        click(dialog, "keepStations");
    });
    EXPECT_EQ(desk.stationNames(), (StationNames{{3, "oven"}, {9, "pump"}}));
}

TEST_F(TheStations, StayAsTheyWereWithoutAWordOrWithCancel)
{
    add("3/R_W:1");
    const int edits = window.document().history().count();
    editWith([](StationsDialog& dialog) {
        click(dialog, "addStation");
        click(dialog, "keepStations");
    });
    EXPECT_EQ(window.document().history().count(), edits) << "nothing was said of any";
    editWith([](StationsDialog& dialog) {
        type(dialog, 0, StationsModel::name, "filler");
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    EXPECT_EQ(window.document().history().count(), edits);
    EXPECT_TRUE(desk.stationNames().empty());
}

TEST_F(TheStations, KeepWhatANewerProgramHasPutThere)
{
    const QString file = written("newer.json", R"({"version": 2, "stations": [
        {"number": 2, "name": "press", "floor": 3}, {"number": 7}]})");
    ASSERT_TRUE(window.actions().open(file));
    window.showPage(0);
    whenAsked<StationsDialog>(&window, [](StationsDialog& dialog) {
        EXPECT_TRUE(mayKeep(dialog));
        type(dialog, 0, StationsModel::name, "large press");
        click(dialog, "keepStations");
    });
    QTest::mouseClick(window.findChild<QPushButton*>("editStations"), Qt::LeftButton);
    press("saveProject");
    EXPECT_EQ(jsonOf(file).at("stations").dump(),
              R"([{"number":2,"name":"large press","floor":3},{"number":7}])");
}

TEST_F(TheStations, AreInTheOrderOfTheirNumbersWhateverTheyAreCalled)
{
    add("10/R_W:1");
    add("2/R_W:1");
    add("1/R_W:1");
    name(2, "zebra");
    name(10, "ant");
    groupByStation();
    EXPECT_THAT(groups(), ElementsAre("station 1", "2 zebra", "10 ant"));
}

TEST_F(TheStations, AreFoundByTheirName)
{
    add("3/R_W:1");
    add("4/R_W:1");
    name(3, "filler");
    window.showPage(1);
    auto* const table = window.findChild<QTableView*>("values");
    const QModelIndex address = table->model()->index(0, ValuesModel::address);
    EXPECT_EQ(address.data(Qt::ToolTipRole), "3 filler");
    EXPECT_EQ(address.data(Qt::AccessibleTextRole), "Address: 3/R_W:1, 3 filler");
    EXPECT_EQ(address.sibling(1, ValuesModel::address).data(Qt::AccessibleTextRole),
              "Address: 4/R_W:1");
    QTest::keyClicks(window.findChild<QLineEdit*>("search"), "FILL");
    EXPECT_EQ(table->model()->rowCount(), 1);
}

TEST_F(TheStations, AreCalledSoAmongTheCountersAndBesideTheirLane)
{
    options.stations = {1, 2};
    watch({"R_W:100", "2/T:3"});
    name(2, "a filler of bottles");
    auto* const wire = window.findChild<WireView*>();
    const double named = wire->xOf(wire->from());
    press("undo");
    EXPECT_LT(wire->xOf(wire->from()), named) << "there is room for the name";
    press("redo");
    for (int page = 0; page < static_cast<int>(window.pages().size()); ++page)
        if (window.pages().at(static_cast<std::size_t>(page))->findChild<QWidget*>("advice"))
            window.showPage(page);
    open();
    const auto names = [this]() {
        std::vector<std::string> texts;
        for (const QTableView* const table : window.findChildren<QTableView*>())
            if (const auto* const model = qobject_cast<const HealthModel*>(table->model()))
                for (int row = 0; row < model->rowCount(); ++row)
                    texts.push_back(
                        model->index(row, HealthModel::name).data().toString().toStdString());
        return texts;
    };
    // Two stations, two requests, and what is remarked of them.
    EXPECT_TRUE(waitUntil([&]() { return names().size() >= 4; }));
    EXPECT_THAT(names(),
                AllOf(testing::Contains("station 1"), testing::Contains("2 a filler of bottles")));
    press("undo");
    EXPECT_THAT(names(), testing::Contains("station 2"));
}

TEST_F(TheStations, AreNamedOnThePlan)
{
    add("3/R_W:1");
    name(3, "filler");
    auto* const map = window.findChild<QTableView*>("planMap");
    for (int page = 0; page < static_cast<int>(window.pages().size()); ++page)
        if (window.pages().at(static_cast<std::size_t>(page))->findChild<QWidget*>("planMap"))
            window.showPage(page);
    ASSERT_TRUE(waitUntil([map]() { return map->model()->rowCount() > 0; }));
    EXPECT_EQ(map->model()->headerData(0, Qt::Vertical, Qt::ToolTipRole), "3 filler");
    EXPECT_THAT(map->model()->index(0, 1).data(Qt::AccessibleTextRole).toString().toStdString(),
                HasSubstr("3/R_W:1 of 3 filler: watched"));
}

TEST(AStationsName, IsCutShortWhereItIsLong)
{
    const StationNames names = {{3, "filler"}, {4, "the second\nlargest press of the whole plant"}};
    EXPECT_EQ(stationText(names, 1), "station 1");
    EXPECT_EQ(stationText(names, 3), "3 filler");
    EXPECT_EQ(stationText(names, 4), "4 the second largest pres\u2026");
}

} // namespace

} // namespace dov417
