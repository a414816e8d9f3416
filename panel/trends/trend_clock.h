// The time of day of what was recorded with the clock that never jumps.
#ifndef DOV417_PANEL_TREND_CLOCK_H
#define DOV417_PANEL_TREND_CLOCK_H

#include <QDateTime>
#include <QString>

#include "panel/desk/panel_clock.h"
#include "panel/trends/trend_history.h"

namespace dov417 {

// As it was when this was made. Who sets this computer's clock, or lets it sleep, moves it against
// what is recorded then: see moved().
class TrendClock {
public:
    TrendClock() : offset_(offsetNow()) {}

    // Milliseconds since 1970, as the axis has them.
    double toAxis(TrendTime at) const
    {
        return static_cast<double>(at + offset_) / perMillisecond;
    }
    TrendTime fromAxis(double at) const
    {
        return static_cast<TrendTime>(at * perMillisecond) - offset_;
    }
    QDateTime dateTime(TrendTime at) const
    {
        return QDateTime::fromMSecsSinceEpoch((at + offset_) / perMillisecond);
    }
    // "14:03:07.250"
    QString text(TrendTime at) const
    {
        return dateTime(at).toString(QStringLiteral("HH:mm:ss.zzz"));
    }
    // By how much this computer's clock has been moved since the last call.
    TrendTime moved()
    {
        const TrendTime now = offsetNow();
        const TrendTime moved = now - lastSeen_;
        lastSeen_ = now;
        return moved;
    }

private:
    static constexpr int perMillisecond = 1000;

    static TrendTime offsetNow()
    {
        return panelTimeOfDay().toMSecsSinceEpoch() * perMillisecond - toTrendTime(panelNow());
    }

    TrendTime offset_;
    TrendTime lastSeen_ = offset_;
};

} // namespace dov417

#endif
