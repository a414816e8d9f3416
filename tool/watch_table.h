// The table of `watch` at the width that the terminal has.
#ifndef DOV417_TOOL_WATCH_TABLE_H
#define DOV417_TOOL_WATCH_TABLE_H

#include "tool/view_table.h"

namespace dov417 {

// The heading and a line for each row. What does not fit is left out: the changes, then the
// previous value, then addresses beside names, then the middle of long names.
std::vector<std::string> watchTable(std::vector<Row> rows, std::size_t columns);

} // namespace dov417

#endif
