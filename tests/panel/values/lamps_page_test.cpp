#include "panel/values/lamps_page.h"

#include <QApplication>
#include <QMessageBox>
#include <QTest>

#include "answering.h"
#include "held_key.h"
#include "panel_world.h"

namespace dov417 {

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class TheLampsPage : public PanelWorld {
protected:
    void show()
    {
        page = std::make_unique<LampsPage>(desk);
        QObject::connect(page.get(), &PanelPage::told, page.get(),
                         [this](const QString& text) { told = text.toStdString(); });
        page->resize(1200, 600);
        page->show();
        table = page->findChild<QTableView*>("lamps");
        page->findChild<QCheckBox*>("asks")->setChecked(false);
    }
    std::string lamp(int row, int bit) const
    {
        return table->model()
            ->index(row, bit)
            .data(Qt::AccessibleTextRole)
            .toString()
            .toStdString();
    }
    bool areAllGood(int row) const
    {
        for (int bit = 0; bit < 16; ++bit)
            if (lamp(row, bit).find("\u2713 good") == std::string::npos)
                return false;
        return true;
    }
    void click(int row, int bit) const
    {
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier,
                          table->visualRect(table->model()->index(row, bit)).center());
    }

    std::unique_ptr<LampsPage> page;
    QTableView* table = nullptr;
    std::string told;
};

TEST_F(TheLampsPage, ShowsBitsWordByWordUnderTheirOwnPlace)
{
    options.set = {"M_bit:1.3=1", "M_bit:2.15=1"};
    watch({"M_bit:2.15", "M_bit:1.2..1.4", "R_W:5"});
    show();
    EXPECT_EQ(lamp(0, 3), "1/M_bit:1.3 (1/M_bit:1.3): not known, ? never read");
    open();
    ASSERT_EQ(table->model()->rowCount(), 2);
    EXPECT_EQ(lamp(0, 3), "1/M_bit:1.3 (1/M_bit:1.3): on, \u2713 good");
    EXPECT_EQ(lamp(0, 2), "1/M_bit:1.2 (1/M_bit:1.2): off, \u2713 good");
    EXPECT_EQ(lamp(1, 15), "1/M_bit:2.15 (1/M_bit:2.15): on, \u2713 good");
    EXPECT_EQ(lamp(0, 5), "");
    EXPECT_EQ(table->model()->headerData(1, Qt::Vertical).toString(), "1/M_bit:2");
    controller.reset();
    EXPECT_TRUE(waitUntil([this]() { return lamp(0, 3).find("old") != std::string::npos; }));
}

TEST_F(TheLampsPage, ShowsTheNameThatATagGivesALampAtThatLampAlone)
{
    const std::string tags = folder.filePath("tags.csv").toStdString();
    std::ofstream(tags) << "name,register,address,count\n"
                           "pump.runs,M_bit,1.3,1\n"
                           "valve,M_bit,1.5,2\n";
    ItemSource source;
    source.tags = tags;
    options.set = {"M_bit:1.3=1", "M_bit:1.6=1"};
    std::vector<Item> items = Items(library, source).tagged(Access::read);
    items.push_back(Items(library, ItemSource()).find("M_bit:1.4", Access::read));
    desk.setItems(items);
    show();
    open();
    const auto shown = [this](int bit) {
        return table->model()->index(0, bit).data().toString().toStdString();
    };
    EXPECT_EQ(shown(3), "pump.runs");
    EXPECT_EQ(shown(4), "") << "no tag names it";
    EXPECT_EQ(shown(5), "[0]");
    EXPECT_EQ(shown(6), "[1]");
    EXPECT_EQ(table->model()->headerData(0, Qt::Vertical).toString(), "valve\n1/M_bit:1");
    EXPECT_EQ(lamp(0, 3), "pump.runs (1/M_bit:1.3): on, \u2713 good");
    EXPECT_EQ(lamp(0, 5), "valve[0] (1/M_bit:1.5): off, \u2713 good");
    EXPECT_EQ(lamp(0, 6), "valve[1] (1/M_bit:1.6): on, \u2713 good");
    // Below its ring, where one without a name has nothing.
    const auto hasText = [this](int bit) {
        QRect below = table->visualRect(table->model()->index(0, bit));
        below.setTop(below.top() + below.height() / 2);
        const QImage picture = table->viewport()->grab(below.adjusted(1, 0, -1, -1)).toImage();
        const QColor ground = picture.pixelColor(0, 0);
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixelColor(x, y) != ground)
                    return true;
        return false;
    };
    EXPECT_TRUE(hasText(3));
    EXPECT_FALSE(hasText(4));
    EXPECT_TRUE(hasText(6));
}

TEST_F(TheLampsPage, TellsOfEachRowOnceWhichLampsMayHaveChanged)
{
    watch({"M_bit:1.0..1.15", "M_bit:2.0..2.15"});
    show();
    std::vector<std::string> changed;
    QObject::connect(table->model(), &QAbstractItemModel::dataChanged, page.get(),
                     [&changed](const QModelIndex& from, const QModelIndex& to) {
                         changed.push_back(std::to_string(from.row()) + ": " +
                                           std::to_string(from.column()) + ".." +
                                           std::to_string(to.column()));
                     });
    const auto bit = [this](std::size_t place) { return desk.tags().values.at(place).address; };
    emit desk.valuesChanged({bit(3), bit(1), bit(6), bit(16 + 15), bit(0)});
    EXPECT_THAT(changed, testing::ElementsAre("0: 1..6", "1: 15..15", "0: 0..0"));
}

TEST_F(TheLampsPage, WritesTheBitThatIsClickedAndNoOther)
{
    options.set = {"M_W:1=0x0001"};
    watch({"M_bit:1.0..1.15"});
    show();
    open();
    unlock();
    click(0, 9);
    EXPECT_THAT(lamp(0, 9), HasSubstr("off, \u270e being written"));
    EXPECT_THAT(lamp(0, 8), HasSubstr("off, \u2713 good"));
    EXPECT_TRUE(
        waitUntil([this]() { return lamp(0, 9).find("on, \u2713 good") != std::string::npos; }));
    table->setCurrentIndex(table->model()->index(0, 0));
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_TRUE(
        waitUntil([this]() { return lamp(0, 0).find("off, \u2713 good") != std::string::npos; }));
    EXPECT_EQ(held("M_W", 1), 0x0200);
}

TEST_F(TheLampsPage, WritesNothingWhileItIsLockedOrNotKnown)
{
    watch({"M_bit:1.0"});
    show();
    click(0, 0);
    EXPECT_THAT(told, HasSubstr("locked"));
    open();
    told.clear();
    click(0, 0);
    EXPECT_THAT(told, HasSubstr("locked"));
    unlock();
    stopController(true);
    ASSERT_TRUE(waitUntil([this]() { return allAre(ValueState::old); }));
    click(0, 0);
    EXPECT_THAT(told, HasSubstr("not known at present"));
    stopController(false);
    controller.reset();
    ASSERT_TRUE(waitUntil([this]() { return desk.state().phase == LinePhase::away; }));
    click(0, 0);
    EXPECT_EQ(told, "1/M_bit:1.0: the port is away");
    EXPECT_THAT(desk.writes(), IsEmpty());
}

TEST_F(TheLampsPage, AsksWhereItIsToAsk)
{
    watch({"M_bit:1.0"});
    show();
    page->findChild<QCheckBox*>("asks")->setChecked(true);
    open();
    unlock();
    for (const auto button : {QMessageBox::No, QMessageBox::Yes}) {
        QTimer::singleShot(0, page.get(), [button]() {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_TRUE(box);
            EXPECT_THAT(box->text().toStdString(), HasSubstr("Write 1 (on) to 1/M_bit:1.0"));
            QTest::mouseClick(box->button(button), Qt::LeftButton);
        });
        click(0, 0);
        EXPECT_EQ(desk.writes().size(), button == QMessageBox::Yes ? 1U : 0U);
    }
}

TEST_F(TheLampsPage, WritesOnceHoweverLongAKeyIsHeld)
{
    options.set = {"M_W:1=0x0000"};
    watch({"M_bit:1.0..1.15"});
    show();
    open();
    unlock();
    table->setCurrentIndex(table->model()->index(0, 4));
    std::size_t writes = 0;
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        QTest::keyPress(table, key);
        ++writes;
        for (int i = 0; i < 3; ++i) { // each as soon as the one before could have been written
            ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded() && areAllGood(0); }));
            repeatKey(*table, key, 1);
            EXPECT_EQ(desk.writes().size(), writes);
        }
        QTest::keyRelease(table, key);
    }
    ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_EQ(held("M_W", 1), 0x0010) << "three times the other state";
}

TEST_F(TheLampsPage, TakesNoKeyThatIsStillHeldForAnAnswer)
{
    watch({"M_bit:1.0"});
    show();
    page->findChild<QCheckBox*>("asks")->setChecked(true);
    open();
    unlock();
    table->setCurrentIndex(table->model()->index(0, 0));
    int asked = 0;
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) {
        whenAsked<QMessageBox>(page.get(), [&asked, key](QMessageBox& box) {
            ++asked;
            repeatKey(*box.focusWidget(), key);
            repeatKey(box, key);
            EXPECT_TRUE(box.isVisible()) << "it is read once the key is let go";
            QTest::keyClick(box.focusWidget(), key);
        });
        QTest::keyPress(table, key);
        EXPECT_THAT(desk.writes(), IsEmpty()) << "whoever just hits a key has said no";
    }
    EXPECT_EQ(asked, 2);
    answerWith(page.get(), QMessageBox::Yes, "Write 1 (on)");
    QTest::keyClick(table, Qt::Key_Space);
    EXPECT_EQ(desk.writes().size(), 1U);
    ASSERT_TRUE(waitUntil([this]() { return allWritesHaveEnded(); }));
    EXPECT_EQ(held("M_W", 1), 0x0001);
}

TEST_F(TheLampsPage, AsksOnAFreshComputerAndAsItsUserChoseFromThenOn)
{
    const auto asksAnew = [this]() {
        const LampsPage another(desk);
        return another.findChild<QCheckBox*>("asks")->isChecked();
    };
    EXPECT_TRUE(asksAnew());
    show();
    auto* const asks = page->findChild<QCheckBox*>("asks");
    EXPECT_FALSE(asksAnew());
    asks->setFocus();
    QTest::keyClick(asks, Qt::Key_Space);
    EXPECT_TRUE(asks->isChecked());
    EXPECT_TRUE(asksAnew());
}

// Whoever made it may not be whoever stands at the machine.
TEST_F(TheLampsPage, IsToldByNoProjectWhetherToAsk)
{
    show();
    EXPECT_EQ(page->settingsName(), "");
    page->prepared({{"asks", true}})();
    EXPECT_FALSE(page->findChild<QCheckBox*>("asks")->isChecked());
}

} // namespace

} // namespace dov417
