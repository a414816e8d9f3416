#include "panel/trends/trend_statistics.h"

#include <algorithm>
#include <cmath>

namespace dov417 {

namespace {

// Adds what held from its event on until the next.
class TrendSums {
public:
    TrendSums(const TrendNumbers& numbers, TrendTime from, TrendTime to)
        : numbers_(numbers), from_(from), to_(to)
    {
    }

    void add(const TrendEvent& event, TrendTime until)
    {
        const TrendTime begin = std::max(event.at, from_);
        const TrendTime end = std::min(until, to_);
        if (!event.isKnown) {
            const bool isInside = known_ > 0 && event.gap() == TrendGap::otherLine;
            isOtherLine_ = isOtherLine_ || isInside;
            return;
        }
        const double value = numbers_(event.raw);
        if (end <= begin || std::isnan(value))
            return;
        result_.isOfTwoLines = result_.isOfTwoLines || isOtherLine_;
        result_.minimum = known_ == 0 ? value : std::min(result_.minimum, value);
        result_.maximum = known_ == 0 ? value : std::max(result_.maximum, value);
        known_ += end - begin;
        // So that no sum grows out of all proportion.
        result_.mean +=
            (value - result_.mean) * static_cast<double>(end - begin) / static_cast<double>(known_);
    }
    TrendStatistics result() const
    {
        TrendStatistics all = result_;
        all.known = known_;
        all.whole = to_ - from_;
        return all;
    }

private:
    const TrendNumbers& numbers_;
    const TrendTime from_;
    const TrendTime to_;
    TrendTime known_ = 0;
    bool isOtherLine_ = false;
    TrendStatistics result_;
};

} // namespace

TrendMoment momentOf(const TrendHistory& history, const Address& address, TrendTime at)
{
    TrendMoment moment;
    const std::optional<TrendTime> end = history.end(address);
    history.walk(address, at, [&](const TrendEvent& event) {
        if (event.at > at)
            return false;
        if (!event.isKnown)
            moment.gap = event.gap();
        else if (at <= *end)
            moment.raw = event.raw;
        return false;
    });
    return moment;
}

TrendStatistics statisticsOf(const TrendHistory& history, const Address& address,
                             const TrendNumbers& numbers, TrendTime from, TrendTime to)
{
    TrendSums sums(numbers, from, to);
    TrendEvent before;
    bool isAny = false;
    history.walk(address, from, [&](const TrendEvent& event) {
        if (isAny)
            sums.add(before, event.at);
        before = event;
        isAny = true;
        return event.at <= to;
    });
    if (isAny)
        sums.add(before, history.end(address).value_or(before.at));
    return sums.result();
}

} // namespace dov417
