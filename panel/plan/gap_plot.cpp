#include "panel/plan/gap_plot.h"

#include <QEvent>
#include <QPolygonF>
#include <algorithm>
#include <qwt_plot_canvas.h>
#include <qwt_scale_widget.h>
#include <qwt_symbol.h>
#include <qwt_text.h>

namespace dov417 {

namespace {

constexpr int shortestAxis = 16;  // words
constexpr double nearEdge = 0.15; // of the axis: a text in its middle would be cut off there

double cycleMs(const GapOutcome& outcome)
{
    return std::chrono::duration<double, std::milli>(outcome.cycle).count();
}

} // namespace

GapPlot::GapPlot()
{
    setAutoDelete(false);
    setAccessibleName(tr("Cycle time against the merge gap"));
    setAccessibleDescription(tr("The table below has the same as numbers"));
    for (const auto& [axis, title] : {std::pair{int(xBottom), tr("merge gap (words)")},
                                      std::pair{int(yLeft), tr("cycle (ms)")}}) {
        QwtText text(title);
        text.setFont(font());
        setAxisTitle(axis, text);
        setAxisFont(axis, font());
    }
    auto* const inside = new QwtPlotCanvas;
    inside->setFrameStyle(QFrame::NoFrame);
    setCanvas(inside);
    curve_.setStyle(QwtPlotCurve::Steps);
    curve_.setCurveAttribute(QwtPlotCurve::Inverted, true); // as it is up to the next step
    curve_.attach(this);
    best_.attach(this);
    inUse_.attach(this);
    best_.setVisible(false);
    inUse_.setVisible(false);
    colour();
}

void GapPlot::changeEvent(QEvent* event)
{
    QwtPlot::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        colour();
        replot();
    }
}

void GapPlot::colour()
{
    const QColor ink = palette().color(QPalette::Text);
    setCanvasBackground(palette().brush(QPalette::Base));
    curve_.setPen(ink, 2);
    const int size = fontMetrics().height() * 2 / 3;
    best_.setSymbol(new QwtSymbol(QwtSymbol::Star1, Qt::NoBrush, QPen(ink, 2), QSize(size, size)));
    inUse_.setSymbol(new QwtSymbol(QwtSymbol::Ellipse, QBrush(palette().color(QPalette::Highlight)),
                                   QPen(ink, 1), QSize(size, size)));
    for (QwtPlotMarker* const marker : {&best_, &inUse_}) {
        QwtText text = marker->label();
        text.setColor(ink);
        marker->setLabel(text);
    }
}

void GapPlot::mark(QwtPlotMarker& marker, double gap, const GapOutcome& outcome,
                   const QString& text, Qt::Alignment where)
{
    QwtText label(text);
    label.setColor(palette().color(QPalette::Text));
    label.setFont(font());
    marker.setLabel(label);
    marker.setLabelAlignment(where);
    marker.setSpacing(fontMetrics().height() / 2);
    marker.setValue(gap, cycleMs(outcome));
    marker.setVisible(true);
}

void GapPlot::show(const std::vector<GapOutcome>& outcomes, int gap)
{
    best_.setVisible(false);
    inUse_.setVisible(false);
    QPolygonF points;
    for (const GapOutcome& outcome : outcomes)
        points.append(QPointF(outcome.firstGap, cycleMs(outcome)));
    if (!outcomes.empty()) {
        const double lastStep = outcomes.back().firstGap;
        const double end = std::max({lastStep * 1.25, lastStep + 4, double(shortestAxis)});
        points.append(QPointF(end, cycleMs(outcomes.back())));
        setAxisScale(xBottom, 0, end);
        const int best = bestOutcome(outcomes);
        const GapOutcome& at = outcomes.at(static_cast<std::size_t>(best));
        mark(best_, at.firstGap, at, tr("best"), Qt::AlignTop | Qt::AlignRight);
        const auto after =
            std::find_if(outcomes.begin(), outcomes.end(),
                         [gap](const GapOutcome& each) { return each.firstGap > gap; });
        const double place = std::min<double>(gap, end);
        mark(inUse_, place, *(after - 1), tr("in use"),
             Qt::AlignBottom | (place < end * nearEdge         ? Qt::AlignRight
                                : place > end * (1 - nearEdge) ? Qt::AlignLeft
                                                               : Qt::AlignHCenter));
        double top = 0;
        for (const QPointF& point : points)
            top = std::max(top, point.y());
        setAxisScale(yLeft, 0, top * 1.2);
    }
    curve_.setSamples(points);
    replot();
}

} // namespace dov417
