// What a value was at a moment, and between two.
#ifndef DOV417_PANEL_TREND_STATISTICS_H
#define DOV417_PANEL_TREND_STATISTICS_H

#include <optional>

#include "panel/trends/trend_history.h"
#include "panel/trends/trend_numbers.h"

namespace dov417 {

struct TrendMoment {
    std::optional<std::uint64_t> raw; // none where it was not known
    std::optional<TrendGap> gap;      // why; none where nothing was recorded then
};
TrendMoment momentOf(const TrendHistory& history, const Address& address, TrendTime at);

// Each value counts for as long as it was known to hold; where it was not known counts for nothing.
struct TrendStatistics {
    bool isOfTwoLines = false; // two controllers maybe: no number says anything then
    TrendTime known = 0;
    TrendTime whole = 0;
    double minimum = 0; // these three where some time is known
    double maximum = 0;
    double mean = 0;
};
TrendStatistics statisticsOf(const TrendHistory& history, const Address& address,
                             const TrendNumbers& numbers, TrendTime from, TrendTime to);

} // namespace dov417

#endif
