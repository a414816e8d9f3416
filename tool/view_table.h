// Views and their values as the rows of a table.
#ifndef DOV417_TOOL_VIEW_TABLE_H
#define DOV417_TOOL_VIEW_TABLE_H

#include <string>
#include <vector>

#include "session/items.h"
#include "session/session.h"
#include "session/view_labels.h"

namespace dov417 {

// The values of an item as the driver's cache holds them.
std::vector<std::string> cachedTexts(const Session& session, const Item& item);

// "old", "never read", "being written"; nothing for a good one.
const char* qualityText(Quality quality);

// Lines about the values that are not good, an item by its name where all of its values are alike:
// "1/R_W:0..127, 2/T:5: no value came".
std::vector<std::string> doubtfulValues(const std::vector<View>& views,
                                        const std::vector<Item>& items,
                                        const std::vector<ViewLabel>& labels);

using Row = std::vector<std::string>;
// The first columns to the left, the numbers behind them to the right.
std::vector<std::string> aligned(const std::vector<Row>& rows, std::size_t textColumns);

// A heading and a row each: name, address, value, quality, previous value, age, changes. Names that
// only repeat the addresses are left out.
std::vector<Row> viewRows(const std::vector<View>& views, const std::vector<ViewLabel>& labels,
                          Clock::time_point now);
std::vector<std::string> viewTable(const std::vector<View>& views,
                                   const std::vector<ViewLabel>& labels, Clock::time_point now);

} // namespace dov417

#endif
