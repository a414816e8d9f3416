#include "panel/desk/column_widths.h"

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

} // namespace
} // namespace dov417
