// A value's events as the points of a line, so few that it is drawn quickly, and so that no peak is
// lost: where several fall into one column of the picture, the minimum and the maximum of them.
//
// What was thinned stays while the window moves on: only what has come since is looked at.
#ifndef DOV417_PANEL_TREND_THINNER_H
#define DOV417_PANEL_TREND_THINNER_H

#include <cstddef>
#include <vector>

#include "panel/trends/trend_history.h"
#include "panel/trends/trend_numbers.h"

namespace dov417 {

struct TrendPoint {
    TrendTime at = 0;
    double value = 0;
};

// A stretch begins at each of these places; nothing is between two stretches.
struct TrendLine {
    std::vector<TrendPoint> points;
    std::vector<std::size_t> begins;
};

struct TrendWindow {
    TrendTime from = 0;
    TrendTime to = 0;
    TrendTime step = 1; // a column of the picture
};

class TrendThinner {
public:
    void choose(const Address& address, const TrendNumbers& numbers);

    // Looks at no more events than the budget has left, which it takes them from. False where that
    // was too few: the line is the one before then, and it goes on with the next call.
    bool update(const TrendHistory& history, const TrendWindow& window, std::size_t& budget);
    const TrendLine& line() const
    {
        return line_;
    }

private:
    struct State {
        bool isKnown = false;
        double value = 0;
    };
    struct Column {
        TrendTime index = 0;
        TrendTime firstAt = 0;
        TrendTime lastAt = 0;
        int values = 0;
        int gaps = 0;
        double low = 0;
        double high = 0;
        State last;
    };

    void moveTo(const TrendWindow& window);
    void add(TrendTime at, const State& state);
    void draw(TrendTime end);
    void begin(TrendTime at, double value);
    void draw(const Column& column, State& state);

    Address address_;
    TrendNumbers numbers_;
    TrendWindow window_;
    bool isBegun_ = false;
    TrendTime from_ = 0;          // a column's beginning
    TrendTime scanned_ = 0;       // the last event that was looked at
    State entering_;              // what held at from_
    std::vector<Column> columns_; // those in which something happened
    TrendLine line_;
};

} // namespace dov417

#endif
