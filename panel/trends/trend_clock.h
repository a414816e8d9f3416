// The time of day of what was recorded with the clock that never jumps.
#ifndef DOV417_PANEL_TREND_CLOCK_H
#define DOV417_PANEL_TREND_CLOCK_H

#include <QDateTime>
#include <QString>
#include <vector>

#include "panel/desk/panel_clock.h"
#include "panel/trends/trend_history.h"

namespace dov417 {

// Who sets this computer's clock moves it against what is recorded then. Each moment keeps the time
// of day that was shown at it: see moved().
class TrendClock {
public:
    // Less is the clock being kept right.
    static constexpr TrendTime minJump = 2 * trendSecond;

    TrendClock();

    // A place on the axis, where every second is as long as the next: milliseconds since 1970 for
    // what was recorded since the clock was moved last, and for all before as if it had gone so.
    double toAxis(TrendTime at) const;
    TrendTime fromAxis(double at) const;
    // Does that tell the time of day of this moment?
    bool isAsOnAxis(TrendTime at) const;

    QDateTime dateTime(TrendTime at) const;
    // "14:03:07.250"
    QString text(TrendTime at) const;
    // When that was shown, in milliseconds since 1970. Twice: the later one. A time that the clock
    // jumped over is where it did.
    TrendTime momentOf(qint64 milliseconds) const;
    // By how much this computer's clock has been moved since the last call; 0 where it is kept
    // right. What is recorded from now on has the time that it shows now.
    TrendTime moved();

private:
    // The same difference between both clocks.
    struct Stretch {
        TrendTime since;
        TrendTime offset;
    };

    TrendTime offsetAt(TrendTime at) const;

    std::vector<Stretch> stretches_; // never empty, in their order
};

} // namespace dov417

#endif
