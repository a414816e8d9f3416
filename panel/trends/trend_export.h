// What was recorded as a table for other programs, and the plots as a picture.
#ifndef DOV417_PANEL_TREND_EXPORT_H
#define DOV417_PANEL_TREND_EXPORT_H

#include <QSaveFile>
#include <memory>
#include <string>
#include <vector>

#include "panel/trends/trend_plot.h"
#include "panel/trends/trend_statistics.h"

namespace dov417 {

// Writes a file in several turns, so that nobody has to wait for a day of values. The file is there
// with the last turn, or it is as it was before.
class TrendTable {
public:
    // time,name,address,value,unit,state: value by value, with its events in order. A gap has no
    // value; its state says why. Throws a Failure where the file cannot be written. What it is
    // given is to outlive it, but for the values.
    TrendTable(const QString& file, const TrendHistory& history, const TrendClock& clock,
               const std::vector<TrendValue>& values, const std::vector<TrendNote>& notes,
               TrendTime from, TrendTime to);

    // True once it is all there. Throws a Failure.
    bool writeMore(std::size_t rows);

private:
    void write(const std::string& row);
    void write(const TrendValue& value, TrendTime at, const TrendEvent& event);
    std::string timeText(TrendTime at) const;

    QSaveFile file_;
    const TrendHistory& history_;
    const TrendClock& clock_;
    const std::vector<TrendValue> values_;
    const TrendTime from_;
    const TrendTime to_;
    std::size_t value_ = 0;
    TrendTime written_ = 0; // of the value; 0: nothing yet
};

// All of them below each other; an SVG where the file is called so, else a PNG. Throws a Failure.
void savePlots(const std::vector<TrendPlot*>& plots, const QString& file);

} // namespace dov417

#endif
