#include "panel/desk/column_widths.h"

#include <QCoreApplication>
#include <QHeaderView>
#include <QStandardItemModel>
#include <gmock/gmock.h>

#include "panel/values/lamp_delegate.h"

namespace dov417 {
namespace {

TEST(ColumnWidths, AreOfSoManyLettersAndNeverLessThanTheHead)
{
    QStandardItemModel model(1, 3);
    model.setHorizontalHeaderLabels({"A head of many letters", "B", "C"});
    QTableView table;
    table.setModel(&model);
    const int untouched = table.columnWidth(2);
    setColumnLetters(table, {2, 30});
    EXPECT_EQ(table.columnWidth(0), table.horizontalHeader()->sectionSizeHint(0));
    EXPECT_EQ(table.columnWidth(1), table.fontMetrics().averageCharWidth() * 30);
    EXPECT_EQ(table.columnWidth(2), untouched);
}

TEST(ColumnWidths, LeaveTheRestToTheLastColumnThatIsSeen)
{
    QStandardItemModel model(1, 4);
    model.setHorizontalHeaderLabels({"A", "B", "C", "A head of many letters"});
    QTableView table;
    table.setModel(&model);
    table.resize(600, 200);
    QHeaderView& head = *table.horizontalHeader();
    const auto heads = [&head]() { return head.length(); };
    setColumnLetters(table, {10, 10, 10});
    const int narrow = table.columnWidth(2);
    table.setColumnHidden(3, true);
    fillWithLast(head);
    table.show();
    EXPECT_EQ(heads(), table.viewport()->width());
    EXPECT_GT(table.columnWidth(2), narrow);
    table.setColumnHidden(3, false);
    EXPECT_EQ(table.columnWidth(2), narrow);
    EXPECT_EQ(heads(), table.viewport()->width());
    const int last = table.columnWidth(3);
    table.setColumnHidden(3, true);
    QCoreApplication::processEvents();
    table.setColumnHidden(2, true);
    QCoreApplication::processEvents();
    EXPECT_EQ(heads(), table.viewport()->width());
    table.setColumnHidden(2, false);
    EXPECT_EQ(heads(), table.viewport()->width());
    table.setColumnHidden(3, false);
    EXPECT_EQ(table.columnWidth(2), narrow);
    EXPECT_EQ(table.columnWidth(3), last);
    table.setColumnWidth(0, 120);
    EXPECT_EQ(heads(), table.viewport()->width());
    table.resize(300, 200);
    EXPECT_EQ(table.columnWidth(3), head.sectionSizeHint(3));
    EXPECT_GT(heads(), table.viewport()->width());
    table.resize(900, 200);
    EXPECT_EQ(heads(), table.viewport()->width());
}

TEST(LampNames, StandInTwoLinesWhereOneIsTooShort)
{
    const QFontMetrics metrics{QFont()};
    const auto widthOf = [&](const char* text) { return metrics.horizontalAdvance(text); };
    EXPECT_EQ(lampNameParts("lid", metrics, widthOf("lid")), QStringList("lid"));
    EXPECT_EQ(lampNameParts("hand.switch", metrics, widthOf("switch")),
              QStringList({"hand.", "switch"}));
    EXPECT_EQ(lampNameParts("a.very.long.name", metrics, widthOf("a.very.")),
              QStringList({"a.very.", "long.name"}));
    EXPECT_EQ(lampNameParts("emergencystop", metrics, widthOf("stop")),
              QStringList("emergencystop"));
}

TEST(LampNames, StandInTwoLinesThatEndAnywhereWhereNothingIsCutOffThen)
{
    const QFontMetrics metrics{QFont()};
    const QString name = "stop.emergencies";
    const int width = metrics.horizontalAdvance("emergencie");
    const QStringList halves = lampNameParts(name, metrics, width);
    EXPECT_EQ(halves.join(QString()), name);
    ASSERT_EQ(halves.size(), 2);
    for (const QString& half : halves)
        EXPECT_LE(metrics.horizontalAdvance(half), width);
}

} // namespace
} // namespace dov417
