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

constexpr double laneMargin = 0.15;
constexpr int bitsBesideNumbers = 3; // they have that part of the height, at the bottom

// The lanes' names where numbers would be.
class BitScaleDraw : public QwtScaleDraw {
public:
    explicit BitScaleDraw(const std::vector<std::string>& names) : names_(names) {}
    QwtText label(double value) const override
    {
        constexpr int maxLetters = 24;
        const auto lane = static_cast<std::size_t>(std::max(0.0, value));
        const QString name =
            lane < names_.size() ? QString::fromStdString(names_[lane]) : QString();
        return name.size() <= maxLetters ? name
                                         : QStringLiteral("\u2026") + name.right(maxLetters - 1);
    }

private:
    const std::vector<std::string> names_;
};

QwtDateScaleDraw* newTimeScale()
{
    auto* const scale = new QwtDateScaleDraw(Qt::LocalTime);
    scale->setDateFormat(QwtDate::Millisecond, QStringLiteral("HH:mm:ss.zzz"));
    scale->setDateFormat(QwtDate::Second, QStringLiteral("HH:mm:ss"));
    scale->setDateFormat(QwtDate::Minute, QStringLiteral("HH:mm"));
    scale->setDateFormat(QwtDate::Hour, QStringLiteral("HH:mm\nd MMM"));
    scale->setDateFormat(QwtDate::Day, QStringLiteral("d MMM"));
    return scale;
}

QString laneNames(const std::vector<std::string>& fromBelow)
{
    QStringList names;
    for (const std::string& name : fromBelow)
        names.prepend(QString::fromStdString(name));
    return names.join(QLatin1Char('\n'));
}

void showBlank(QwtScaleDraw& scale, bool isBlank)
{
    for (const auto part : {QwtAbstractScaleDraw::Ticks, QwtAbstractScaleDraw::Labels})
        scale.enableComponent(part, !isBlank);
}

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
    : clock_(clock), grid_(new QwtPlotGrid), legend_(new QwtPlotLegendItem),
      absence_(new QwtPlotTextLabel), band_(new QRubberBand(QRubberBand::Rectangle, canvas()))
{
    auto* const area = static_cast<QwtPlotCanvas*>(canvas());
    area->setFrameStyle(QFrame::NoFrame);
    area->setFocusPolicy(Qt::StrongFocus);
    area->setFocusIndicator(QwtPlotCanvas::CanvasFocusIndicator);
    area->setCursor(Qt::CrossCursor);
    area->installEventFilter(this);
    setFocusProxy(area);
    setAutoReplot(false);
    plotLayout()->setAlignCanvasToScales(true);
    setAxisScaleDraw(xBottom, newTimeScale());
    setAxisScaleEngine(xBottom, new QwtDateScaleEngine(Qt::LocalTime));
    axisScaleDraw(yLeft)->setMinimumExtent(0);
    grid_->attach(this);
    legend_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    legend_->setRenderHint(QwtPlotItem::RenderAntialiased);
    legend_->setVisible(false);
    legend_->attach(this);
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

// ---- what it shows --------------------------------------------------------------------------

void TrendPlot::setGroup(const TrendGroup& group, int firstNumber)
{
    for (TrendCurve* const curve : curves_) {
        curve->detach();
        delete curve;
    }
    curves_.clear();
    group_ = group;
    const std::vector<std::string> axes = group.axes();
    int number = firstNumber;
    auto lane =
        static_cast<int>(std::count_if(group.values.begin(), group.values.end(),
                                       [](const TrendValue& each) { return each.isBit(); }));
    for (const TrendValue& value : group.values) {
        auto* const curve = new TrendCurve(value, number++);
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

void TrendPlot::showScales()
{
    const std::vector<std::string> axes = group_.axes();
    std::vector<std::string> bits;
    for (const TrendValue& value : group_.values)
        if (value.isBit())
            bits.insert(bits.begin(), value.name);
    for (const auto axis : {yLeft, yRight}) {
        const std::size_t place = axis == yLeft ? 0 : 1;
        const bool isUsed = place < axes.size();
        const bool isOfBits = isUsed && !bits.empty() && axes.at(place) == trendBitsAxis();
        setAxisScaleDraw(axis, isOfBits ? new BitScaleDraw(bits) : new QwtScaleDraw);
        showBlank(*axisScaleDraw(axis), !isUsed);
        enableAxis(axis, isUsed || axis == yLeft);
        setAxisTitle(axis, !isUsed                  ? QStringLiteral(" ")
                           : isOfBits               ? tr("on / off")
                           : axes.at(place).empty() ? tr("without unit")
                                                    : QString::fromStdString(axes.at(place)));
        if (isOfBits)
            showBits(axis, bits, axes.size() == 1);
        else
            setAxisAutoScale(axis, true);
        // In whole, the first on top; beside the lanes there may be no room for that.
        axisWidget(axis)->setToolTip(isOfBits ? laneNames(bits) : QString());
    }
}

void TrendPlot::showBits(QwtPlot::Axis axis, const std::vector<std::string>& names, bool isAlone)
{
    const auto lanes = static_cast<double>(names.size());
    QList<double> middles;
    for (std::size_t lane = 0; lane < names.size(); ++lane)
        middles.append(static_cast<double>(lane) + TrendCurve::laneHeight / 2);
    QwtScaleDiv scale(-laneMargin, isAlone ? lanes : lanes * bitsBesideNumbers);
    scale.setTicks(QwtScaleDiv::MajorTick, middles);
    setAxisScaleDiv(axis, scale);
}

void TrendPlot::followValues()
{
    showScales();
}

// Those of bits have their lanes.
bool TrendPlot::isOfNumbers(QwtPlot::Axis axis) const
{
    const std::vector<std::string> axes = group_.axes();
    const std::size_t place = axis == yLeft ? 0 : 1;
    return place < axes.size() && axes.at(place) != trendBitsAxis();
}

void TrendPlot::setHeight(QwtPlot::Axis axis, double middle, double height)
{
    constexpr double minPart = 1e-9; // of the number: closer, and a double has no steps left
    constexpr double maxHeight = 1e100;
    if (height > std::max(std::abs(middle), minPart) * minPart && height < maxHeight)
        setAxisScale(axis, middle - height / 2, middle + height / 2);
}

void TrendPlot::zoomHeight(double factor)
{
    for (const auto axis : {yLeft, yRight})
        if (isOfNumbers(axis)) {
            const QwtScaleDiv& scale = axisScaleDiv(axis);
            setHeight(axis, (scale.lowerBound() + scale.upperBound()) / 2, scale.range() * factor);
        }
}

void TrendPlot::moveHeight(double part)
{
    for (const auto axis : {yLeft, yRight})
        if (isOfNumbers(axis)) {
            const QwtScaleDiv& scale = axisScaleDiv(axis);
            setHeight(axis, (scale.lowerBound() + scale.upperBound()) / 2 + scale.range() * part,
                      scale.range());
        }
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
    legend_->setBackgroundBrush(ground);
    legend_->setTextPen(colours.color(QPalette::Text));
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
    legend_->setVisible(isShown);
}

} // namespace dov417
