// The stretch of time that all plots show: it runs with time, or stands where a person has put it.
#ifndef DOV417_PANEL_TREND_VIEW_H
#define DOV417_PANEL_TREND_VIEW_H

#include <vector>

#include "panel/trends/trend_thinner.h"

namespace dov417 {

class TrendView {
public:
    bool isRunning() const
    {
        return isRunning_;
    }
    TrendTime from() const
    {
        return to_ - span_;
    }
    TrendTime to() const
    {
        return to_;
    }
    TrendTime span() const
    {
        return span_;
    }
    // In whole columns of a picture that is so wide; while it runs it ends now.
    TrendWindow window(double pixels, TrendTime now);

    void run();
    void standStill();
    // Around its middle, or its end while it runs.
    void setSpan(TrendTime span);
    // < 1: into it. While it runs it goes on running.
    void zoom(double factor, TrendTime around);
    // By a part of what it shows; it stands still then.
    void move(double part);
    void choose(TrendTime from, TrendTime to);
    // As it was before the last zoom or choice.
    void back();

private:
    struct Place {
        bool isRunning;
        TrendTime to;
        TrendTime span;
    };

    void remember();
    TrendTime middle() const
    {
        return to_ - span_ / 2;
    }

    bool isRunning_ = true;
    TrendTime to_ = 0;
    TrendTime span_ = 30 * trendSecond; // as TrendArrangement has it
    std::vector<Place> before_;
};

} // namespace dov417

#endif
