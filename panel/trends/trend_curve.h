// One value's curve in a plot: steps, stretch by stretch, with its sign now and then.
#ifndef DOV417_PANEL_TREND_CURVE_H
#define DOV417_PANEL_TREND_CURVE_H

#include <QPalette>
#include <memory>
#include <qwt_plot_curve.h>
#include <qwt_symbol.h>

#include "panel/trends/trend_arrangement.h"
#include "panel/trends/trend_clock.h"
#include "panel/trends/trend_thinner.h"

namespace dov417 {

class TrendCurve : public QwtPlotCurve {
public:
    // number: in its page, from 0; it chooses colour and sign.
    TrendCurve(const TrendValue& value, int number);

    const TrendValue& value() const
    {
        return value_;
    }
    int number() const
    {
        return number_;
    }
    void setPalette(const QPalette& palette);
    // A bit has a lane of its own, from 0 at the bottom.
    void setLane(int lane);

    // Of so many curves in its plot.
    void setCompany(int curves);

    // False where the budget was too small: to be called again.
    bool update(const TrendHistory& history, const TrendClock& clock, const TrendWindow& window,
                std::size_t& budget);

    void drawSeries(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                    const QRectF& canvasRect, int from, int to) const override;
    QwtGraphic legendIcon(int index, const QSizeF& size) const override;

    // What a lane has of its unit; the rest is between the lanes.
    static constexpr double laneHeight = 0.7;

private:
    void drawSigns(QPainter& painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap, int from,
                   int to) const;

    const TrendValue value_;
    const int number_;
    QPalette palette_;
    std::unique_ptr<QwtSymbol> sign_;
    int lane_ = 0;
    int maxWide_ = 0; // points
    TrendThinner thinner_;
    std::vector<int> begins_; // of the stretches, in the samples
};

} // namespace dov417

#endif
