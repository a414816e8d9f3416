#include "panel/trends/trend_curve.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <qwt_graphic.h>
#include <qwt_scale_map.h>

#include "panel/trends/trend_style.h"

namespace dov417 {

namespace {

constexpr double lineWidth = 1.6;
// Points: a thin line is drawn many times faster.
constexpr int maxWide = 400;
constexpr int maxWideOfPlot = 4000;
constexpr double signSide = 8;
constexpr double signDistance = 160; // along the time, in pixels
constexpr int signPhases = 5;        // so that those of several curves are not in one place

} // namespace

TrendCurve::TrendCurve(const TrendValue& value, int number)
    : QwtPlotCurve(QString::fromStdString(value.name)), value_(value), number_(number)
{
    setStyle(QwtPlotCurve::Lines);
    setPaintAttribute(QwtPlotCurve::ClipPolygons, true);
    setRenderHint(QwtPlotItem::RenderAntialiased, false);
    setItemAttribute(QwtPlotItem::AutoScale, !value.isBit());
    setItemAttribute(QwtPlotItem::Legend, false); // its sample takes longer than all else of it
    thinner_.choose(value.at, TrendNumbers(value.at.width, value.format));
    setPalette(QPalette());
}

void TrendCurve::setPalette(const QPalette& palette)
{
    palette_ = palette;
    QPen pen(trendColour(number_, palette), lineWidth);
    pen.setCapStyle(Qt::FlatCap);
    pen.setJoinStyle(Qt::MiterJoin);
    setPen(pen);
    sign_ = trendSign(number_, pen.color(), signSide);
}

void TrendCurve::setCompany(int curves)
{
    maxWide_ = std::min(maxWide, maxWideOfPlot / std::max(1, curves));
}

void TrendCurve::setLane(int lane)
{
    lane_ = lane;
}

bool TrendCurve::update(const TrendHistory& history, const TrendClock& clock,
                        const TrendWindow& window, std::size_t& budget)
{
    if (!thinner_.update(history, window, budget))
        return false;
    const TrendLine& line = thinner_.line();
    QVector<QPointF> samples;
    samples.reserve(static_cast<int>(line.points.size()));
    const bool isBit = value_.isBit();
    for (const TrendPoint& point : line.points)
        samples.append(QPointF(clock.toAxis(point.at),
                               isBit ? lane_ + laneHeight * point.value : point.value));
    begins_.assign(line.begins.begin(), line.begins.end());
    QPen width = pen();
    width.setWidthF(samples.size() > maxWide_ ? 1 : lineWidth);
    setPen(width);
    setSamples(samples);
    return true;
}

// Nothing is drawn between two stretches; one good reading alone is a dot.
void TrendCurve::drawSeries(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                            const QRectF& canvasRect, int /*from*/, int /*to*/) const
{
    const int end = static_cast<int>(dataSize());
    for (std::size_t i = 0; i < begins_.size(); ++i) {
        const int first = begins_[i];
        const int last = (i + 1 < begins_.size() ? begins_[i + 1] : end) - 1;
        const QPointF begin = sample(first);
        const QPointF finish = sample(last);
        const bool isDot =
            std::abs(xMap.transform(finish.x()) - xMap.transform(begin.x())) < lineWidth &&
            last - first < 2;
        if (isDot) {
            painter->fillRect(QRectF(xMap.transform(begin.x()) - lineWidth,
                                     yMap.transform(finish.y()) - lineWidth, 2 * lineWidth,
                                     2 * lineWidth),
                              pen().color());
            continue;
        }
        QwtPlotCurve::drawSeries(painter, xMap, yMap, canvasRect, first, last);
        if (!value_.isBit())
            drawSigns(*painter, xMap, yMap, first, last);
    }
}

// At round times, so that they move with the curve.
void TrendCurve::drawSigns(QPainter& painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap,
                           int from, int to) const
{
    const double pixel = (xMap.s2() - xMap.s1()) / std::max(1.0, xMap.pDist());
    const double distance = signDistance * pixel;
    if (!(distance > 0))
        return;
    const double phase = distance * (number_ % signPhases) / signPhases;
    double next = std::ceil((sample(from).x() - phase) / distance) * distance + phase;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    for (int i = from + 1; i <= to; ++i)
        while (next < sample(i).x()) {
            sign_->drawSymbol(&painter,
                              QPointF(xMap.transform(next), yMap.transform(sample(i - 1).y())));
            next += distance;
        }
    painter.restore();
}

QwtGraphic TrendCurve::legendIcon(int /*index*/, const QSizeF& /*size*/) const
{
    const QSize size(28, 12);
    QwtGraphic graphic;
    graphic.setDefaultSize(size);
    QPainter painter(&graphic);
    painter.setPen(QPen(pen().color(), 2));
    const double middle = size.height() / 2.0;
    painter.drawLine(QPointF(0, middle), QPointF(size.width(), middle));
    if (!value_.isBit())
        sign_->drawSymbol(&painter, QPointF(size.width() / 2.0, middle));
    return graphic;
}

} // namespace dov417
