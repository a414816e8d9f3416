// Several values at once, through the dialog that the page opens; what became of it is read from
// the controller.
#include "panel/values/write_dialog.h"

#include <QTableView>

#include "panel/values/values_page.h"
#include "project_world.h"

namespace dov417 {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class TheWriteDialog : public ProjectWorld {
protected:
    // Opened by the page's button for these rows.
    WriteDialog& openedFor(int first, int last)
    {
        window.showPage(1);
        auto* const table = window.findChild<QTableView*>("values");
        table->selectionModel()->select(
            QItemSelection(table->model()->index(first, 0), table->model()->index(last, 0)),
            QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        auto* const button = window.findChild<ValuesPage*>()->findChild<QPushButton*>("write");
        QTest::mouseClick(button, Qt::LeftButton);
        dialog = qobject_cast<WriteDialog*>(QApplication::activeModalWidget());
        EXPECT_TRUE(dialog && QTest::qWaitForWindowActive(dialog));
        return *dialog;
    }
    QLineEdit& field(int place) const
    {
        return *dialog->findChildren<QLineEdit*>().at(place);
    }
    QPushButton& writeButton() const
    {
        for (QPushButton* const each : dialog->findChildren<QPushButton*>())
            if (each->text() == QLatin1String("&Write"))
                return *each;
        throw Failure("there is no button to write");
    }
    std::vector<std::string> textsWith(const char* words) const
    {
        std::vector<std::string> texts;
        for (const QLabel* const label : dialog->findChildren<QLabel*>())
            if (label->text().contains(QString::fromUtf8(words)))
                texts.push_back(label->text().toStdString());
        return texts;
    }
    std::vector<std::string> textsOf(const char* name) const
    {
        std::vector<std::string> texts;
        for (const QLabel* const label : dialog->findChildren<QLabel*>(QLatin1String(name)))
            texts.push_back(label->text().toStdString());
        return texts;
    }
    void type(int place, const char* text) const
    {
        field(place).selectAll();
        QTest::keyClick(&field(place), Qt::Key_Delete);
        QTest::keyClicks(&field(place), text);
    }

    QPointer<WriteDialog> dialog;
};

TEST_F(TheWriteDialog, WritesWhatIsTypedAndLeavesEmptyFieldsAlone)
{
    options.set = {"R_W:100=1", "R_W:101=2", "R_W:102=3", "R_W:103=4"};
    watch({"R_W:100", "R_W:101", "R_W:102", "R_W:103"});
    open();
    unlock();
    openedFor(0, 2);
    EXPECT_THAT(textsOf("now"), ElementsAre("1", "2", "3"));
    EXPECT_FALSE(writeButton().isEnabled()) << "nothing is typed yet";
    type(0, "1000");
    type(2, "3000");
    QTest::keyClick(&field(2), Qt::Key_Return);
    ASSERT_EQ(desk.writes().size(), 2U);
    ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_EQ(desk.writes().at(0).address, "1/R_W:100");
    EXPECT_EQ(desk.writes().at(1).address, "1/R_W:102");
    EXPECT_TRUE(waitUntil([this]() {
        return desk.book().find(desk.tags().values.at(2).address)->value.at(0) == (3000 & 0xFF);
    }));
    ASSERT_EQ(held("R_W", 100), 1000);
    std::ifstream file(options.dumpFile);
    const std::string dump((std::istreambuf_iterator<char>(file)),
                           std::istreambuf_iterator<char>());
    EXPECT_EQ(nlohmann::json::parse(dump).at("1").at("R_W").at("100"),
              nlohmann::json::parse("[1000, 2, 3000, 4]"));
}

TEST_F(TheWriteDialog, SendsNothingBeforeAllThatIsTypedWillDo)
{
    options.set = {"R_W:100=1", "R_W:101=2"};
    watch({"R_W:100", "R_W:101"});
    open();
    unlock();
    openedFor(0, 1);
    EXPECT_THAT(textsWith("allowed: "), ElementsAre("allowed: 0 to 65535", "allowed: 0 to 65535"));
    type(0, "7");
    EXPECT_TRUE(writeButton().isEnabled());
    type(1, "70000");
    EXPECT_THAT(textsWith("\u2717"), ElementsAre(HasSubstr("70000")));
    EXPECT_FALSE(writeButton().isEnabled());
    QTest::keyClick(&field(0), Qt::Key_Return);
    QTest::mouseClick(&writeButton(), Qt::LeftButton);
    EXPECT_THAT(desk.writes(), IsEmpty()) << "not the one that would do either";
    EXPECT_TRUE(dialog && dialog->isVisible());
    type(1, "70");
    EXPECT_THAT(textsWith("\u2717"), IsEmpty());
    QTest::mouseClick(&writeButton(), Qt::LeftButton);
    ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_EQ(desk.writes().size(), 2U);
    EXPECT_EQ(held("R_W", 101), 70);
}

TEST_F(TheWriteDialog, SaysTheLimitsOfATagInItsUnitAndHoldsToThem)
{
    options.set = {"R_W:100=215"};
    controller = std::make_unique<ControllerProcess>(options);
    window.document().open(written("machine.json", R"({"version": 1, "line": {"port": ")" +
                                                       controller->port() +
                                                       R"("}, "tags": [
      {"name": "oven", "register": "R_W", "address": "100", "scale": 0.1, "unit": "K",
       "min": 10, "max": 90},
      {"name": "cold", "register": "R_W", "address": "101", "format": "signed", "max": 5},
      {"name": "lamp", "register": "M_bit", "address": "1.0"},
      {"name": "level", "register": "R_D", "address": "200", "format": "float", "min": 0.5}]})"));
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    unlock();
    openedFor(0, 3);
    EXPECT_THAT(textsWith("allowed: "), ElementsAre("allowed: 10 to 90 K", "allowed: -32768 to 5",
                                                    "allowed: 0 or 1", "allowed: from 0.5"));
    type(0, "95");
    EXPECT_THAT(textsWith("\u2717"), ElementsAre(StartsWith("\u2717 ")));
    EXPECT_FALSE(writeButton().isEnabled());
    type(0, "85.5");
    EXPECT_TRUE(writeButton().isEnabled());
    type(1, "6");
    EXPECT_FALSE(writeButton().isEnabled());
    type(1, "-7");
    type(2, "1");
    EXPECT_TRUE(writeButton().isEnabled());
    QTest::mouseClick(&writeButton(), Qt::LeftButton);
    ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_EQ(desk.writes().size(), 3U);
    EXPECT_EQ(held("R_W", 100), 855);
}

TEST_F(TheWriteDialog, WritesNothingWhereItIsCancelled)
{
    options.set = {"R_W:100=1"};
    watch({"R_W:100"});
    open();
    unlock();
    openedFor(0, 0);
    type(0, "55");
    QTest::keyClick(&field(0), Qt::Key_Escape);
    EXPECT_THAT(desk.writes(), IsEmpty());
    EXPECT_EQ(held("R_W", 100), 1);
}

} // namespace

} // namespace dov417
