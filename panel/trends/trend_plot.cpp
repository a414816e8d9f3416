#include "panel/trends/trend_plot.h"

#include <QApplication>
#include <algorithm>
#include <cmath>
#include <qwt_date_scale_draw.h>
#include <qwt_date_scale_engine.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_layout.h>
#include <qwt_scale_widget.h>

namespace dov417 {

namespace {

// The time of day of each moment.
class TimeScale : public QwtDateScaleDraw {
public:
    explicit TimeScale(const TrendClock& clock) : QwtDateScaleDraw(Qt::LocalTime), clock_(clock)
    {
        setDateFormat(QwtDate::Millisecond, QStringLiteral("HH:mm:ss.zzz"));
        setDateFormat(QwtDate::Second, QStringLiteral("HH:mm:ss"));
        setDateFormat(QwtDate::Minute, QStringLiteral("HH:mm"));
        setDateFormat(QwtDate::Hour, QStringLiteral("HH:mm\nd MMM"));
        setDateFormat(QwtDate::Day, QStringLiteral("d MMM"));
        // Until it is drawn it has no time, and the first one of Qwt is in 1970.
        for (const auto part : {QwtAbstractScaleDraw::Ticks, QwtAbstractScaleDraw::Labels})
            enableComponent(part, false);
    }
    // Before the clock was moved, the axis has its marks at no round times.
    QwtText label(double place) const override
    {
        const TrendTime at = clock_.fromAxis(place);
        return clock_.isAsOnAxis(at)
                   ? QwtDateScaleDraw::label(place)
                   : QwtText(clock_.dateTime(at).toString(QStringLiteral("HH:mm:ss\nd MMM")));
    }

private:
    const TrendClock& clock_;
};

} // namespace

QString noteText(const TrendNote& note)
{
    return (note.isOwn ? QStringLiteral("\u270e ") : QStringLiteral("\u26a0 ")) + note.text;
}

const QStringList& TrendPlot::cursorNames()
{
    static const QStringList names = {QStringLiteral("A"), QStringLiteral("B")};
    return names;
}

TrendPlot::TrendPlot(const TrendClock& clock)
    : clock_(clock), grid_(new QwtPlotGrid), absence_(new QwtPlotTextLabel),
      band_(new QRubberBand(QRubberBand::Rectangle, canvas()))
{
    auto* const area = static_cast<QwtPlotCanvas*>(canvas());
    area->setFrameStyle(QFrame::NoFrame);
    area->setFocusPolicy(Qt::StrongFocus);
    // Within the turn in which it is drawn, so that the turn's time counts.
    area->setPaintAttribute(QwtPlotCanvas::ImmediatePaint, true);
    area->setFocusIndicator(QwtPlotCanvas::CanvasFocusIndicator);
    area->setCursor(Qt::CrossCursor);
    area->installEventFilter(this);
    setFocusProxy(area);
    setAutoReplot(false);
    plotLayout()->setAlignCanvasToScales(true);
    setAxisScaleDraw(xBottom, new TimeScale(clock));
    setAxisScaleEngine(xBottom, new QwtDateScaleEngine(Qt::LocalTime));
    axisScaleDraw(yLeft)->setMinimumExtent(0);
    grid_->attach(this);
    grid_->enableX(false); // as long as there are no times
    legend_.setAlignment(Qt::AlignLeft | Qt::AlignTop);
    legend_.setRenderHint(QwtPlotItem::RenderAntialiased);
    absence_->setMargin(fontMetrics().height());
    absence_->attach(this);
    for (const QString& name : cursorNames()) {
        auto* const mark = new QwtPlotMarker(name);
        mark->setLineStyle(QwtPlotMarker::VLine);
        mark->setLabelAlignment(Qt::AlignTop | Qt::AlignRight);
        mark->setItemAttribute(QwtPlotItem::Legend, false);
        mark->setVisible(false);
        mark->setZ(40);
        mark->attach(this);
        cursorMarks_.push_back(mark);
    }
    setPalettes();
}

QSize TrendPlot::minimumSizeHint() const
{
    constexpr int widest = 20; // of text: both scales, and something between them
    return fontMetrics().height() * QSize(widest, minLines);
}

QSize TrendPlot::sizeHint() const
{
    constexpr int linesOfTime = 3;
    const int lines = axisEnabled(xBottom) ? linesOfTime : 0; // so that curves are equally high
    return minimumSizeHint() + QSize(0, fontMetrics().height() * (minLines + lines));
}

// ---- what it shows --------------------------------------------------------------------------

void TrendPlot::setGroup(const TrendGroup& group, int firstNumber)
{
    const bool isSame = !curves_.empty() && firstNumber == firstNumber_ &&
                        std::equal(group.values.begin(), group.values.end(), group_.values.begin(),
                                   group_.values.end(), isDrawnAlike);
    group_ = group;
    firstNumber_ = firstNumber;
    if (isSame)
        return; // to make hundreds of curves takes long
    for (TrendCurve* const curve : curves_) {
        curve->detach();
        delete curve;
    }
    curves_.clear();
    const std::vector<std::string> axes = group.axes();
    int number = firstNumber;
    auto lane =
        static_cast<int>(std::count_if(group.values.begin(), group.values.end(),
                                       [](const TrendValue& each) { return each.isBit(); }));
    for (const TrendValue& value : group.values) {
        auto* const curve = new TrendCurve(value, number++);
        curve->setCompany(static_cast<int>(group.values.size()));
        const bool isLeft = axes.empty() || value.axis() == axes.front();
        curve->setAxes(xBottom, isLeft ? yLeft : yRight);
        if (value.isBit())
            curve->setLane(--lane); // the first on top
        curve->attach(this);
        curves_.push_back(curve);
    }
    setPalettes();
    showScales();
}

void TrendPlot::setPalettes()
{
    const QPalette colours = QApplication::palette();
    setCanvasBackground(colours.color(QPalette::Base));
    QColor line = colours.color(QPalette::Text);
    line.setAlphaF(0.15);
    grid_->setPen(line, 0);
    line.setAlphaF(0.9);
    int cursor = 0;
    for (QwtPlotMarker* const mark : cursorMarks_) {
        mark->setLinePen(line, 1.2, cursor == 0 ? Qt::SolidLine : Qt::DashLine);
        QwtText label(cursorNames().at(cursor++));
        label.setColor(colours.color(QPalette::HighlightedText));
        label.setBackgroundBrush(colours.color(QPalette::Highlight));
        mark->setLabel(label);
    }
    QColor ground = colours.color(QPalette::Base);
    ground.setAlphaF(0.85);
    legend_.setBackgroundBrush(ground);
    legend_.setTextPen(colours.color(QPalette::Text));
    QwtText why = absence_->text();
    why.setColor(colours.color(QPalette::Text));
    absence_->setText(why);
    for (TrendCurve* const curve : curves_)
        curve->setPalette(colours);
}

void TrendPlot::setTimeShown(bool isShown)
{
    enableAxis(xBottom, isShown);
}

int TrendPlot::leftExtent() const
{
    return static_cast<int>(std::ceil(axisScaleDraw(yLeft)->extent(axisWidget(yLeft)->font())));
}

int TrendPlot::rightExtent() const
{
    return group_.axes().size() < 2
               ? 0
               : static_cast<int>(
                     std::ceil(axisScaleDraw(yRight)->extent(axisWidget(yRight)->font())));
}

void TrendPlot::setExtents(int left, int right)
{
    if (axisScaleDraw(yLeft)->minimumExtent() == left &&
        axisScaleDraw(yRight)->minimumExtent() == right && axisEnabled(yRight) == (right > 0))
        return;
    axisScaleDraw(yLeft)->setMinimumExtent(left);
    axisScaleDraw(yRight)->setMinimumExtent(right);
    enableAxis(yRight, right > 0);
    updateLayout();
}

double TrendPlot::pixels() const
{
    return std::max(1, canvas()->width());
}

bool TrendPlot::update(const TrendHistory& history, const TrendWindow& window, std::size_t& budget)
{
    for (TrendCurve* const curve : curves_)
        if (!curve->update(history, clock_, window, budget))
            return false;
    setAxisScale(xBottom, clock_.toAxis(window.from), clock_.toAxis(window.to));
    showTimes();
    absence_->setVisible(std::all_of(curves_.begin(), curves_.end(), [](const TrendCurve* curve) {
        return curve->dataSize() == 0;
    }));
    replot();
    return true;
}

void TrendPlot::setAbsence(const QString& why)
{
    if (why == absence_->text().text())
        return;
    QwtText text(why, QwtText::PlainText);
    text.setColor(QApplication::palette().color(QPalette::Text));
    text.setRenderFlags(Qt::AlignCenter | Qt::TextWordWrap);
    absence_->setText(text);
    if (absence_->isVisible())
        replot();
}

void TrendPlot::setCursor(int cursor, std::optional<TrendTime> at)
{
    QwtPlotMarker* const mark = cursorMarks_.at(static_cast<std::size_t>(cursor));
    mark->setVisible(at.has_value());
    if (at)
        mark->setXValue(clock_.toAxis(*at));
}

void TrendPlot::setNotes(const std::vector<TrendNote>& notes)
{
    for (QwtPlotMarker* const mark : noteMarks_) {
        mark->detach();
        delete mark;
    }
    noteMarks_.clear();
    const QPalette colours = QApplication::palette();
    for (const TrendNote& note : notes) {
        auto* const mark = new QwtPlotMarker(note.text);
        mark->setLineStyle(QwtPlotMarker::VLine);
        mark->setLinePen(colours.color(QPalette::Text), 1, Qt::DotLine);
        QwtText label(noteText(note), QwtText::PlainText); // as it was typed
        label.setColor(colours.color(QPalette::Text));
        mark->setLabel(label);
        mark->setLabelAlignment(Qt::AlignBottom | Qt::AlignRight);
        mark->setItemAttribute(QwtPlotItem::Legend, false);
        mark->setXValue(clock_.toAxis(note.at));
        mark->attach(this);
        noteMarks_.push_back(mark);
    }
}

void TrendPlot::setLegendShown(bool isShown)
{
    for (TrendCurve* const curve : curves_)
        curve->setItemAttribute(QwtPlotItem::Legend, isShown);
    legend_.attach(isShown ? this : nullptr);
}

} // namespace dov417
