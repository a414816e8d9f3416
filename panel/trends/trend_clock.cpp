#include "panel/trends/trend_clock.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace dov417 {

namespace {

constexpr int perMillisecond = 1000;

TrendTime offsetNow()
{
    return panelTimeOfDay().toMSecsSinceEpoch() * perMillisecond - toTrendTime(panelNow());
}

} // namespace

TrendClock::TrendClock() : stretches_{{std::numeric_limits<TrendTime>::min(), offsetNow()}} {}

TrendTime TrendClock::offsetAt(TrendTime at) const
{
    return std::find_if(stretches_.rbegin(), stretches_.rend(),
                        [at](const Stretch& each) { return each.since <= at; })
        ->offset;
}

double TrendClock::toAxis(TrendTime at) const
{
    return static_cast<double>(at + stretches_.back().offset) / perMillisecond;
}

TrendTime TrendClock::fromAxis(double at) const
{
    return static_cast<TrendTime>(at * perMillisecond) - stretches_.back().offset;
}

bool TrendClock::isAsOnAxis(TrendTime at) const
{
    return offsetAt(at) == stretches_.back().offset;
}

QDateTime TrendClock::dateTime(TrendTime at) const
{
    return QDateTime::fromMSecsSinceEpoch((at + offsetAt(at)) / perMillisecond);
}

QString TrendClock::text(TrendTime at) const
{
    return dateTime(at).toString(QStringLiteral("HH:mm:ss.zzz"));
}

TrendTime TrendClock::momentOf(qint64 milliseconds) const
{
    const TrendTime shown = milliseconds * perMillisecond;
    const TrendTime newest = shown - stretches_.back().offset;
    const TrendTime now = toTrendTime(panelNow());
    TrendTime end = now;
    TrendTime jump = newest;
    for (auto each = stretches_.rbegin(); each != stretches_.rend(); ++each) {
        const TrendTime at = shown - each->offset;
        if (each->since <= at && at <= end)
            return at;
        if (at > end)
            jump = end;
        end = each->since;
    }
    return newest > now ? newest : jump; // that is still to come, too
}

TrendTime TrendClock::moved()
{
    const TrendTime now = offsetNow();
    const TrendTime moved = now - stretches_.back().offset;
    if (std::abs(moved) <= minJump)
        return 0;
    stretches_.push_back({toTrendTime(panelNow()), now});
    return moved;
}

} // namespace dov417
