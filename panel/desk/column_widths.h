// How wide the columns of a table begin, and the last one stays.
#ifndef DOV417_PANEL_COLUMN_WIDTHS_H
#define DOV417_PANEL_COLUMN_WIDTHS_H

#include <QHeaderView>
#include <QTableView>
#include <vector>

namespace dov417 {

// From the first one on, in letters; wider where its head needs that.
void setColumnLetters(QTableView& table, const std::vector<int>& letters);

// The last column that is seen has what the others leave, and what its head needs at least, where
// Qt's own stretching cuts the head off.
void fillWithLast(QHeaderView& header);

} // namespace dov417

#endif
