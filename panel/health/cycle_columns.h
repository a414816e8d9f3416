// Cycle times as the columns of a histogram. Pure.
#ifndef DOV417_PANEL_CYCLE_COLUMNS_H
#define DOV417_PANEL_CYCLE_COLUMNS_H

#include <vector>

#include "link/link_statistics.h"

namespace dov417 {

struct CycleColumn {
    Micros from{0};
    Micros to{0};
    long long cycles = 0;
};

struct CycleColumns {
    std::vector<CycleColumn> columns; // one beside the other, from the shortest cycle on
    long long longer = 0;             // cycles beyond the last column
};

// A few cycles that took very long, as after a time-out, do not press all others into one column:
// they are counted beside them.
CycleColumns columnsOf(const Durations& cycles, int maxColumns);

} // namespace dov417

#endif
