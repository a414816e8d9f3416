#include "panel/health/health_plots.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <qwt_plot_layout.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>
#include <qwt_text.h>

namespace dov417 {

namespace {

// Colours after Okabe and Ito.
const QColor cycleBlue(0x00, 0x72, 0xB2);
const QColor goodGreen(0x00, 0x9E, 0x73);
const QColor failingRed(0xD5, 0x5E, 0x00);

QBrush brushOf(LinkStanding standing, const QColor& ink)
{
    switch (standing) {
    case LinkStanding::closed:
        return {Qt::NoBrush};
    case LinkStanding::opening:
        return {ink, Qt::Dense6Pattern};
    case LinkStanding::good:
        return {goodGreen};
    case LinkStanding::failing:
        return {failingRed, Qt::DiagCrossPattern};
    case LinkStanding::away:
        return {ink, Qt::BDiagPattern};
    case LinkStanding::hanging:
        return {ink, Qt::Dense3Pattern};
    }
    return {};
}

double secondsBetween(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

class SecondsAgo : public QwtScaleDraw {
public:
    QwtText label(double value) const override
    {
        return value >= 0 ? LinkBand::tr("now") : LinkBand::tr("%1 s").arg(value);
    }
};

void beWithin(QwtPlot& plot)
{
    plot.setAutoFillBackground(false);
    plot.plotLayout()->setAlignCanvasToScales(true);
    plot.setFocusPolicy(Qt::NoFocus);
    plot.setCanvasBackground(QApplication::palette().color(QPalette::Base));
}

void followPalette(QwtPlot& plot, const QEvent& event)
{
    if (event.type() == QEvent::PaletteChange || event.type() == QEvent::ApplicationPaletteChange) {
        plot.setCanvasBackground(plot.palette().color(QPalette::Base));
        plot.replot();
    }
}

} // namespace

// ---- cycles ---------------------------------------------------------------------------------

CyclePlot::CyclePlot() : columns_(new QwtPlotHistogram)
{
    beWithin(*this);
    setAccessibleName(tr("How long cycles took"));
    setAxisTitle(QwtPlot::yLeft, QwtText(tr("cycles")));
    setAxisMaxMinor(QwtPlot::yLeft, 0);
    columns_->setBrush(cycleBlue);
    columns_->attach(this); // which owns it
}

void CyclePlot::show(const Durations& cycles)
{
    const CycleColumns columns = columnsOf(cycles, maxColumns);
    const auto milliseconds = [](Micros duration) {
        return std::chrono::duration<double, std::milli>(duration).count();
    };
    QVector<QwtIntervalSample> samples;
    for (const CycleColumn& each : columns.columns)
        samples.append(QwtIntervalSample(static_cast<double>(each.cycles), milliseconds(each.from),
                                         milliseconds(each.to)));
    columns_->setSamples(samples);
    if (!samples.isEmpty()) {
        const double room = std::max(
            0.5, (samples.back().interval.maxValue() - samples.front().interval.minValue()) / 10);
        setAxisScale(QwtPlot::xBottom, std::max(0.0, samples.front().interval.minValue() - room),
                     samples.back().interval.maxValue() + room);
    }
    long long most = 1;
    for (const CycleColumn& each : columns.columns)
        most = std::max(most, each.cycles);
    // No scale of halves of a cycle.
    constexpr double steps = 5;
    setAxisScale(QwtPlot::yLeft, 0, static_cast<double>(most),
                 std::ceil(static_cast<double>(most) / steps));
    QString words = tr("ms a cycle");
    if (columns.longer > 0)
        words = tr("ms a cycle; %n longer one(s) up to %1 ms are not drawn", nullptr,
                   static_cast<int>(columns.longer))
                    .arg(milliseconds(cycles.maximum()), 0, 'f', 1);
    setAxisTitle(QwtPlot::xBottom, QwtText(words));
    replot();
}

void CyclePlot::changeEvent(QEvent* event)
{
    QwtPlot::changeEvent(event);
    followPalette(*this, *event);
}

// ---- the link -------------------------------------------------------------------------------

class LinkBandItem : public QwtPlotItem {
public:
    void draw(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap&,
              const QRectF& canvas) const override
    {
        for (const LinkStretch& each : stretches)
            drawStretch(*painter, xMap, canvas, each);
    }

    std::deque<LinkStretch> stretches;
    Clock::time_point now{};

private:
    void drawStretch(QPainter& painter, const QwtScaleMap& map, const QRectF& canvas,
                     const LinkStretch& each) const
    {
        const double begin = map.transform(secondsBetween(now, each.begin));
        const double end = map.transform(secondsBetween(now, each.end));
        if (end < canvas.left())
            return;
        const QRectF bar(std::max(canvas.left(), begin), canvas.top(),
                         std::max(1.0, end - std::max(canvas.left(), begin)), canvas.height());
        const QColor ink = QApplication::palette().color(QPalette::Text);
        painter.fillRect(bar, brushOf(each.standing, ink));
        const QString word = wordOf(each.standing);
        const QFontMetricsF metrics(painter.font());
        if (metrics.horizontalAdvance(word) + metrics.height() > bar.width())
            return;
        // On a ground of its own, whatever the pattern.
        QRectF place(QPointF(0, 0), QSizeF(metrics.horizontalAdvance(word) + metrics.height() / 2,
                                           metrics.height()));
        place.moveCenter(bar.center());
        painter.fillRect(place, QApplication::palette().color(QPalette::Base));
        painter.setPen(ink);
        painter.drawText(place, Qt::AlignCenter, word);
    }
};

LinkBand::LinkBand() : band_(new LinkBandItem)
{
    beWithin(*this);
    setAccessibleName(tr("How the link has been"));
    enableAxis(QwtPlot::yLeft, false);
    setAxisScale(QwtPlot::yLeft, 0, 1);
    setAxisScaleDraw(QwtPlot::xBottom, new SecondsAgo);
    setFixedHeight(fontMetrics().height() * 5);
    band_->attach(this); // which owns it
}

void LinkBand::changeEvent(QEvent* event)
{
    QwtPlot::changeEvent(event);
    followPalette(*this, *event);
}

void LinkBand::show(const LinkHistory& history, Clock::time_point now)
{
    band_->stretches = history.stretches();
    band_->now = now;
    const double since =
        history.stretches().empty() ? 0 : secondsBetween(history.stretches().front().begin, now);
    constexpr double least = 10;
    const double longest = std::chrono::duration<double>(shown).count();
    setAxisScale(QwtPlot::xBottom, -std::clamp(since, least, longest), 0);
    setAccessibleDescription(historyText(history, now - shown));
    replot();
}

} // namespace dov417
