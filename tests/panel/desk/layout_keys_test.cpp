#include "panel/desk/layout_keys.h"

#include <QHeaderView>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTableView>
#include <QTest>
#include <gtest/gtest.h>

namespace dov417 {

namespace {

constexpr auto columnKeys = Qt::ControlModifier | Qt::ShiftModifier;
constexpr auto partingKeys = Qt::AltModifier | Qt::ShiftModifier;

class TheLayoutKeys : public testing::Test {
protected:
    TheLayoutKeys()
    {
        window.resize(600, 400);
        window.addWidget(beside);
        beside->addWidget(&table);
        beside->addWidget(&other);
        window.addWidget(&below);
        table.setModel(&model);
        table.setCurrentIndex(model.index(0, 1));
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        table.setFocus();
    }

    const LayoutKeys keys;
    QStandardItemModel model{2, 3};
    QSplitter window{Qt::Vertical};
    QSplitter* const beside = new QSplitter(Qt::Horizontal);
    QTableView& table = *new QTableView;
    QTableView& other = *new QTableView;
    QTableView& below = *new QTableView;
};

TEST_F(TheLayoutKeys, MakeTheColumnOfTheChosenCellWiderAndNarrower)
{
    const int width = table.columnWidth(1);
    const int before = table.columnWidth(0);
    QTest::keyClick(&table, Qt::Key_Right, columnKeys);
    EXPECT_GT(table.columnWidth(1), width);
    QTest::keyClick(&table, Qt::Key_Left, columnKeys);
    EXPECT_EQ(table.columnWidth(1), width);
    for (int i = 0; i < 100; ++i)
        QTest::keyClick(&table, Qt::Key_Left, columnKeys);
    EXPECT_EQ(table.columnWidth(1), table.horizontalHeader()->minimumSectionSize());
    EXPECT_EQ(table.columnWidth(0), before);
    EXPECT_EQ(table.currentIndex(), model.index(0, 1));
}

TEST_F(TheLayoutKeys, MoveTheNearestPartingThatWay)
{
    const QList<int> sizes = beside->sizes();
    const QList<int> heights = window.sizes();
    QTest::keyClick(&table, Qt::Key_Right, partingKeys);
    EXPECT_GT(beside->sizes().front(), sizes.front());
    EXPECT_EQ(window.sizes(), heights);
    QTest::keyClick(&table, Qt::Key_Down, partingKeys);
    EXPECT_GT(window.sizes().front(), heights.front());
    other.setModel(&model);
    other.setFocus(); // the last part: what parts it from the one before
    QTest::keyClick(&other, Qt::Key_Left, partingKeys);
    EXPECT_EQ(beside->sizes(), sizes);
    for (int i = 0; i < 100; ++i)
        QTest::keyClick(&other, Qt::Key_Left, partingKeys);
    EXPECT_GT(beside->sizes().front(), 0) << "it is hidden, and no key brings it back";
}

TEST_F(TheLayoutKeys, LeaveOtherKeysToTheTable)
{
    const int width = table.columnWidth(1);
    const QList<int> sizes = beside->sizes();
    QTest::keyClick(&table, Qt::Key_Right);
    EXPECT_EQ(table.currentIndex(), model.index(0, 2));
    QTest::keyClick(&table, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&table, Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(table.columnWidth(1), width);
    EXPECT_EQ(beside->sizes(), sizes);
}

} // namespace

} // namespace dov417
