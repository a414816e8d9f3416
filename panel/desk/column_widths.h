// How wide the columns of a table begin.
#ifndef DOV417_PANEL_COLUMN_WIDTHS_H
#define DOV417_PANEL_COLUMN_WIDTHS_H

#include <QTableView>
#include <vector>

namespace dov417 {

// From the first one on, in letters; wider where its head needs that.
void setColumnLetters(QTableView& table, const std::vector<int>& letters);

} // namespace dov417

#endif
