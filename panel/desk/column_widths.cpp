#include "panel/desk/column_widths.h"

#include <QHeaderView>
#include <algorithm>

namespace dov417 {

void setColumnLetters(QTableView& table, const std::vector<int>& letters)
{
    const int letter = table.fontMetrics().averageCharWidth();
    int column = 0;
    for (const int each : letters) {
        const int head = table.horizontalHeader()->sectionSizeHint(column);
        table.setColumnWidth(column++, std::max(letter * each, head));
    }
}

} // namespace dov417
