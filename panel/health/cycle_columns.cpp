#include "panel/health/cycle_columns.h"

#include <algorithm>

namespace dov417 {

namespace {

// So many of a hundred cycles have columns for certain.
constexpr long long percentShown = 98;

} // namespace

CycleColumns columnsOf(const Durations& cycles, int maxColumns)
{
    CycleColumns result;
    if (cycles.count() == 0)
        return result;
    const long long first = cycles.bins().begin()->first;
    long long last = first;
    long long below = 0;
    for (const auto& [bin, times] : cycles.bins()) {
        if (below * 100 >= cycles.count() * percentShown)
            break;
        last = bin;
        below += times;
    }
    const long long width = (last - first) / maxColumns + 1;
    const long long count = (last - first) / width + 1;
    for (long long i = 0; i < count; ++i) {
        CycleColumn column;
        column.from = (first + i * width) * Durations::binWidth - Durations::binWidth / 2;
        column.to = column.from + width * Durations::binWidth;
        result.columns.push_back(column);
    }
    for (const auto& [bin, times] : cycles.bins()) {
        const auto place = static_cast<std::size_t>((bin - first) / width);
        if (place < result.columns.size())
            result.columns[place].cycles += times;
        else
            result.longer += times;
    }
    return result;
}

} // namespace dov417
