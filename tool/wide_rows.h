// The rows of `watch --csv --wide`: a column a value, a row an interval.
#ifndef DOV417_TOOL_WIDE_ROWS_H
#define DOV417_TOOL_WIDE_ROWS_H

#include <string>
#include <vector>

#include "tool/view_table.h"

namespace dov417 {

class WideRows {
public:
    explicit WideRows(const std::vector<ViewLabel>& labels);

    // Names, with their units.
    std::vector<std::string> header() const;

    // The values of these views. Empty where a value is not good, and where the controller has not
    // confirmed it again since the last row: what is there was read for this row.
    std::vector<std::string> next(const std::vector<View>& views);

private:
    std::vector<ViewLabel> labels_;
    std::vector<Clock::time_point> told_; // by view: as of when its value was, in the last row
};

} // namespace dov417

#endif
