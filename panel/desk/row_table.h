// How tables look whose rows are things: chosen row by row, all of one height, left with Tab.
#ifndef DOV417_PANEL_ROW_TABLE_H
#define DOV417_PANEL_ROW_TABLE_H

#include <QTableView>

namespace dov417 {

// Rows that are edited in place need more room around their text.
constexpr int roomInRow = 6;
constexpr int roomInEditedRow = 8;

void showRows(QTableView& table, int room);

} // namespace dov417

#endif
