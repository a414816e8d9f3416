#include "panel/desk/row_table.h"

#include <QHeaderView>

#include "panel/desk/lined_delegate.h"

namespace dov417 {

void showRows(QTableView& table, int room)
{
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setTabKeyNavigation(false);
    table.setWordWrap(false);
    table.setShowGrid(false);
    table.setItemDelegate(new LinedDelegate(&table));
    table.verticalHeader()->hide();
    table.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table.verticalHeader()->setDefaultSectionSize(table.fontMetrics().height() + room);
}

} // namespace dov417
