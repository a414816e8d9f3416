#include "panel/values/values_page.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>

#include "panel/desk/add_bar.h"
#include "panel/values/write_dialog.h"
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class TheValuesPage : public PanelWorld {
protected:
    void show()
    {
        page = std::make_unique<ValuesPage>(desk);
        QObject::connect(page.get(), &PanelPage::told, page.get(),
                         [this](const QString& text) { told = text.toStdString(); });
        page->resize(1200, 700);
        page->show();
        table = page->findChild<QTableView*>("values");
        page->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(page.get()));
    }
    std::string cell(int row, ValuesModel::Column column) const
    {
        return table->model()->index(row, column).data().toString().toStdString();
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> texts;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            texts.push_back(cell(row, ValuesModel::address));
        return texts;
    }
    template <typename Widget>
    Widget* part(const char* name) const
    {
        return page->findChild<Widget*>(name);
    }
    // Opens the field in the value's cell and types.
    void typeInPlace(int row, const char* text) const
    {
        const QModelIndex index = table->model()->index(row, ValuesModel::value);
        table->setCurrentIndex(index);
        table->edit(index);
        QWidget* const editor = QApplication::focusWidget();
        ASSERT_TRUE(editor && editor != table);
        QTest::keyClicks(editor, text);
    }
    // The cell takes what was typed in its own time.
    static void enter()
    {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCoreApplication::processEvents();
    }

    std::unique_ptr<ValuesPage> page;
    QTableView* table = nullptr;
    std::string told;
};

TEST_F(TheValuesPage, ShowsEachValueWithItsState)
{
    options.set = {"R_W:100=7", "R_D:200=70000"};
    watch({"R_W:100", "R_D:200"});
    show();
    EXPECT_EQ(cell(0, ValuesModel::value), "?");
    EXPECT_EQ(cell(0, ValuesModel::state), "? never read");
    EXPECT_EQ(cell(0, ValuesModel::age), "never");
    open();
    EXPECT_EQ(cell(0, ValuesModel::address), "1/R_W:100");
    EXPECT_EQ(cell(0, ValuesModel::value), "7");
    EXPECT_EQ(cell(0, ValuesModel::state), "\u2713 good");
    EXPECT_EQ(cell(1, ValuesModel::value), "70000");
    controller.reset();
    EXPECT_TRUE(waitUntil([this]() { return cell(0, ValuesModel::state) == "\u25f7 old"; }));
    EXPECT_EQ(cell(0, ValuesModel::value), "7");
}

// Thousands take long, and nobody sees them.
TEST_F(TheValuesPage, MakesItsRowsOnceItIsLookedAt)
{
    watch({"R_W:1..9"});
    show();
    EXPECT_EQ(names().size(), 9U);
    page->hide();
    EXPECT_EQ(names().size(), 9U) << "they are as they were";
    watch({"R_W:20..24"});
    EXPECT_THAT(names(), testing::IsEmpty());
    emit desk.valuesChanged({desk.tags().values.front().address});
    page->show();
    EXPECT_THAT(names(), ElementsAre("1/R_W:20", "1/R_W:21", "1/R_W:22", "1/R_W:23", "1/R_W:24"));
    watch({"R_W:30"});
    EXPECT_THAT(names(), ElementsAre("1/R_W:30"));
}

TEST_F(TheValuesPage, CountsEachChangeOfAValue)
{
    options.set = {"R_W:100=7"};
    watch({"R_W:100", "R_W:101"});
    show();
    EXPECT_EQ(cell(0, ValuesModel::changes), "") << "nothing is known of it";
    open();
    unlock();
    EXPECT_EQ(cell(0, ValuesModel::changes), "0") << "it was read, and has not changed";
    int changes = 0;
    for (const char* const text : {"8", "9", "7"}) {
        desk.write(desk.tags().values.front(), text);
        ASSERT_TRUE(waitUntil([&]() {
            return allWritesHaveEnded() && allAre(ValueState::good) &&
                   cell(0, ValuesModel::value) == text;
        }));
        EXPECT_EQ(cell(0, ValuesModel::changes), std::to_string(++changes));
    }
    desk.write(desk.tags().values.front(), "7");
    ASSERT_TRUE(waitUntil([&]() { return allWritesHaveEnded() && allAre(ValueState::good); }));
    EXPECT_EQ(cell(0, ValuesModel::changes), "3") << "it was 7";
    EXPECT_EQ(cell(1, ValuesModel::changes), "0");
}

TEST_F(TheValuesPage, JudgesAnAddressWhileItIsTyped)
{
    show();
    auto* const field = part<QLineEdit>("address");
    auto* const add = part<QPushButton>("add");
    auto* const verdict = part<QLabel>("verdict");
    QTest::keyClicks(field, "R_W:4000");
    EXPECT_FALSE(add->isEnabled());
    EXPECT_THAT(verdict->text().toStdString(), StartsWith("\u2717 R_W:4000: "));
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_TRUE(desk.tags().items.empty());
    QTest::keyClick(field, Qt::Key_Backspace);
    EXPECT_TRUE(add->isEnabled());
    EXPECT_EQ(verdict->text().toStdString(), "\u2713 1/R_W:400, 1 value(s)");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_THAT(names(), ElementsAre("1/R_W:400"));
    EXPECT_EQ(field->text(), QString());
}

TEST_F(TheValuesPage, ShowsWhatWasAddedBehindTheOthers)
{
    watch({"R_W:0..99"});
    show();
    EXPECT_FALSE(table->currentIndex().isValid());
    QTest::keyClicks(part<QLineEdit>("address"), "2/R_W:5");
    QTest::keyClick(part<QLineEdit>("address"), Qt::Key_Return);
    EXPECT_EQ(table->currentIndex().row(), 100);
    EXPECT_TRUE(
        table->viewport()->rect().contains(table->visualRect(table->currentIndex()).center()));
}

TEST_F(TheValuesPage, TakesWhatIsTypedAsSoonAsTheDialogToWriteIsThere)
{
    watch({"R_W:100"});
    show();
    open();
    unlock();
    WriteDialog dialog(desk, desk.tags().values, page.get());
    dialog.show();
    dialog.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    ASSERT_TRUE(dialog.focusWidget());
    QTest::keyClicks(dialog.focusWidget(), "17");
    QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
    EXPECT_EQ(desk.writes().size(), 1U);
    ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_EQ(held("R_W", 100), 17);
}

TEST_F(TheValuesPage, SaysWhatIsKnownOfAValueAsLongAsTheDialogToWriteIsOpen)
{
    options.set = {"R_W:100=7"};
    watch({"R_W:100"});
    show();
    WriteDialog dialog(desk, desk.tags().values, page.get());
    const auto said = [&dialog](const char* name) {
        return dialog.findChild<QLabel*>(name)->text().toStdString();
    };
    EXPECT_EQ(said("now"), "?");
    EXPECT_EQ(said("standing"), "? never read");
    open();
    unlock();
    EXPECT_EQ(said("now"), "7");
    EXPECT_EQ(said("standing"), "\u2713 good");
    desk.write(desk.tags().values.front(), "8");
    EXPECT_EQ(said("standing"), "\u270e being written");
    EXPECT_TRUE(waitUntil([&]() { return said("now") == "8"; }));
    EXPECT_TRUE(waitUntil([&]() { return said("standing") == "\u2713 good"; }));
    controller.reset();
    EXPECT_TRUE(waitUntil([&]() { return said("standing") == "\u25f7 old"; }));
    EXPECT_EQ(said("now"), "8");
}

TEST_F(TheValuesPage, AddsASeriesAndWhatIsPasted)
{
    show();
    part<QSpinBox>("count")->setValue(3);
    part<QSpinBox>("step")->setValue(10);
    QTest::keyClicks(part<QLineEdit>("address"), "2/R_W:5");
    QTest::mouseClick(part<QPushButton>("add"), Qt::LeftButton);
    EXPECT_THAT(names(), ElementsAre("2/R_W:5", "2/R_W:15", "2/R_W:25"));
    table->setFocus();
    QApplication::clipboard()->setText("oven\tT:1\nbelt\tT:2\n");
    QTest::keyClick(table, Qt::Key_V, Qt::ControlModifier);
    EXPECT_THAT(names(), ElementsAre("2/R_W:5", "2/R_W:15", "2/R_W:25", "1/T:1", "1/T:2"));
    std::vector<int> chosen;
    for (const QModelIndex& each : table->selectionModel()->selectedRows())
        chosen.push_back(each.row());
    EXPECT_THAT(chosen, ElementsAre(3, 4)) << "what was added is shown";
    QApplication::clipboard()->setText("C:1\nnonsense\n");
    QTest::keyClick(table, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(names().size(), 5U);
    EXPECT_THAT(told, StartsWith("Nothing was added: what is pasted:2"));
    EXPECT_THAT(told, HasSubstr("a name and an address, or the columns of a tag file"));
    EXPECT_THAT(told, Not(HasSubstr("--tags")));
    QApplication::clipboard()->setText("a\tC:1\nb\tC:2\tuint16\n");
    QTest::keyClick(table, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(names().size(), 5U);
    EXPECT_THAT(told, StartsWith("Nothing was added: what is pasted:1"));
}

TEST_F(TheValuesPage, WritesInPlaceAndTellsWhatBecameOfIt)
{
    watch({"R_W:100", "R_W:101"});
    show();
    open();
    unlock();
    stopController(true);
    typeInPlace(1, "1234");
    enter();
    EXPECT_EQ(cell(1, ValuesModel::state), "\u270e being written");
    EXPECT_EQ(cell(1, ValuesModel::value), "0") << "the controller has not said so yet";
    stopController(false);
    EXPECT_TRUE(waitUntil([this]() { return cell(1, ValuesModel::state) == "\u2713 good"; }));
    EXPECT_EQ(cell(1, ValuesModel::value), "1234");
    EXPECT_EQ(cell(0, ValuesModel::value), "0");
    const QAbstractItemModel* const writes = part<QTableView>("writes")->model();
    ASSERT_EQ(writes->rowCount(), 1);
    EXPECT_EQ(writes->index(0, 2).data().toString(), "1/R_W:101");
    EXPECT_THAT(writes->index(0, 4).data().toString().toStdString(), HasSubstr("taken"));
    EXPECT_EQ(held("R_W", 101), 1234);
}

TEST_F(TheValuesPage, WritesNothingThatNobodyTyped)
{
    // 12.345, which is shown with one decimal, and a text.
    const int low = 0x851F;
    const int high = 0x4145;
    options.set = {"R_W:100=" + std::to_string(low), "R_W:101=" + std::to_string(high),
                   "R_W:110=16706"};
    const Items find(library, ItemSource());
    Item level = find.find("R_D:100@float", Access::read);
    level.format.scaling.decimals = 1;
    desk.setItems({level, find.find("R_W:110..111@text", Access::read)});
    show();
    open();
    unlock();
    EXPECT_EQ(cell(0, ValuesModel::value), "12.3");
    EXPECT_EQ(cell(1, ValuesModel::value), "\"AB\"");
    for (const int row : {0, 1}) {
        typeInPlace(row, "");
        enter();
    }
    EXPECT_TRUE(desk.writes().empty());
    typeInPlace(1, "");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backspace); // all of it is chosen
    enter();
    EXPECT_TRUE(desk.writes().empty());
    EXPECT_THAT(told, HasSubstr("nothing is typed; an empty text is written \"\""));
    desk.end();
    controller.reset();
    std::ifstream file(options.dumpFile);
    const nlohmann::json words = nlohmann::json::parse(file).at("1").at("R_W");
    EXPECT_EQ(words.at("100"), nlohmann::json({low, high}));
    EXPECT_EQ(words.at("110"), nlohmann::json({16706}));
}

TEST_F(TheValuesPage, WritesNothingOfATextThatWasNotRead)
{
    options.set = {"R_W:110=16706"};
    watch({"R_W:110..111@text"});
    show();
    open();
    unlock();
    stopController(true);
    desk.removeItems({0});
    watch({"R_W:110..111@text"});
    ASSERT_EQ(cell(0, ValuesModel::value), "?");
    typeInPlace(0, "");
    enter();
    EXPECT_TRUE(desk.writes().empty());
    stopController(false);
    EXPECT_TRUE(waitUntil([this]() { return cell(0, ValuesModel::value) == "\"AB\""; }));
    EXPECT_EQ(held("R_W", 110), 16706);
}

TEST_F(TheValuesPage, WritesNothingWhereOneLeavesTheField)
{
    watch({"R_W:100"});
    show();
    open();
    unlock();
    typeInPlace(0, "55");
    part<QLineEdit>("search")->setFocus();
    QCoreApplication::processEvents();
    typeInPlace(0, "66");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCoreApplication::processEvents();
    typeInPlace(0, "77");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QCoreApplication::processEvents();
    EXPECT_TRUE(desk.writes().empty());
    EXPECT_EQ(held("R_W", 100), 0);
}

TEST_F(TheValuesPage, KeepsWhatIsTypedWhileTheValueChanges)
{
    options.frozen = false;
    watch({"R_W:0"});
    show();
    open();
    unlock();
    typeInPlace(0, "4");
    const std::string before = cell(0, ValuesModel::value);
    EXPECT_TRUE(waitUntil([&]() { return cell(0, ValuesModel::value) != before; }));
    EXPECT_EQ(static_cast<QLineEdit*>(QApplication::focusWidget())->text(), "4");
}

TEST_F(TheValuesPage, IsLockedUntilItIsUnlocked)
{
    watch({"R_W:100"});
    show();
    open();
    const QModelIndex index = table->model()->index(0, ValuesModel::value);
    EXPECT_FALSE(table->model()->flags(index) & Qt::ItemIsEditable);
    EXPECT_THAT(complaint([&]() { desk.write(desk.tags().values.front(), "1"); }),
                HasSubstr("locked"));
    table->selectRow(0);
    EXPECT_FALSE(part<QPushButton>("write")->isEnabled());
    unlock();
    EXPECT_TRUE(part<QPushButton>("write")->isEnabled());
}

TEST_F(TheValuesPage, SaysWhyAWriteFailed)
{
    setup.timeoutMs = 50;
    watch({"R_W:100"});
    show();
    open();
    unlock();
    stopController(true);
    typeInPlace(0, "5");
    enter();
    EXPECT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    stopController(false);
    EXPECT_THAT(cell(0, ValuesModel::state), StartsWith("\u2717 write failed"));
    EXPECT_THAT(cell(0, ValuesModel::state), HasSubstr("no byte came"));
    EXPECT_EQ(cell(0, ValuesModel::value), "0");
}

TEST_F(TheValuesPage, RefusesWhatWillNotDoBeforeItIsSent)
{
    watch({"R_W:100"});
    show();
    open();
    unlock();
    typeInPlace(0, "70000");
    enter();
    EXPECT_THAT(told, HasSubstr("70000"));
    EXPECT_TRUE(desk.writes().empty());
}

TEST_F(TheValuesPage, ShowsOnlyWhatIsSearchedForAndGroups)
{
    watch({"2/R_W:1", "1/R_W:1", "1/T:1", "2/R_W:0"});
    show();
    QTest::keyClicks(part<QLineEdit>("search"), "r_w");
    EXPECT_THAT(names(), ElementsAre("2/R_W:1", "1/R_W:1", "2/R_W:0"));
    table->sortByColumn(ValuesModel::address, Qt::AscendingOrder);
    EXPECT_THAT(names(), ElementsAre("1/R_W:1", "2/R_W:0", "2/R_W:1"));
    part<QLineEdit>("search")->clear();
    part<QComboBox>("grouping")->setCurrentIndex(2);
    EXPECT_THAT(names(), ElementsAre("1/R_W:1", "2/R_W:0", "2/R_W:1", "1/T:1"));
    EXPECT_EQ(table->model()->headerData(3, Qt::Vertical).toString(), "area T");
    part<QLineEdit>("search")->setText("t:");
    EXPECT_THAT(names(), ElementsAre("1/T:1"));
    watch({"3/T:7", "1/R_W:1"});
    EXPECT_THAT(names(), ElementsAre("3/T:7")) << "looked for among what is watched now";
}

TEST_F(TheValuesPage, ShowsEachValueInItsOwnRowWhateverIsRemoved)
{
    for (int i = 0; i < 10; ++i)
        options.set.push_back("R_W:" + std::to_string(100 + i) + "=" + std::to_string(i));
    watch({"R_W:109", "R_W:100..108"});
    show();
    open();
    table->sortByColumn(ValuesModel::value, Qt::DescendingOrder);
    table->selectRow(9);
    EXPECT_EQ(cell(0, ValuesModel::address), "1/R_W:109");
    table->selectRow(0);
    QTest::mouseClick(part<QPushButton>("remove"), Qt::LeftButton);
    ASSERT_EQ(names().size(), 9U);
    EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    for (int row = 0; row < 9; ++row)
        EXPECT_EQ(cell(row, ValuesModel::address), "1/R_W:10" + cell(row, ValuesModel::value));
}

} // namespace

} // namespace dov417
