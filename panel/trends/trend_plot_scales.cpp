// The scales of a plot: numbers by their units, bits in lanes.
#include <algorithm>
#include <cmath>
#include <qwt_scale_widget.h>

#include "panel/trends/trend_plot.h"

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

void TrendPlot::showTimes()
{
    showBlank(*axisScaleDraw(xBottom), false);
    grid_->enableX(true);
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

} // namespace dov417
