// What a person does in a plot with the mouse.
#include <QApplication>
#include <cmath>

#include "panel/trends/trend_plot.h"

namespace dov417 {

namespace {

constexpr double wheelNotch = 120; // what Qt counts for one notch
constexpr double zoomOfNotch = 0.8;
constexpr int minBandHeight = 16; // less is meant for the time alone

} // namespace

bool TrendPlot::eventFilter(QObject* object, QEvent* event)
{
    if (object != canvas())
        return QwtPlot::eventFilter(object, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        return mousePressed(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
        return mouseMoved(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
        return mouseReleased(*static_cast<QMouseEvent*>(event));
    case QEvent::Wheel: {
        const auto* const wheel = static_cast<QWheelEvent*>(event);
        const double notches = wheel->angleDelta().y() / wheelNotch;
        emit zoomed(std::pow(zoomOfNotch, notches), timeAt(wheel->position().toPoint().x()));
        return true;
    }
    case QEvent::KeyPress:
        event->ignore();
        emit keyPressed(static_cast<QKeyEvent*>(event));
        if (event->isAccepted())
            return true;
        // Ignored, the Tab key that the canvas deals with would move on in its parents, too.
        event->accept();
        return false;
    default:
        return QwtPlot::eventFilter(object, event);
    }
}

TrendTime TrendPlot::timeAt(int x) const
{
    return clock_.fromAxis(invTransform(xBottom, x));
}

bool TrendPlot::mousePressed(const QMouseEvent& event)
{
    canvas()->setFocus(Qt::MouseFocusReason);
    pressed_ = event.pos();
    panFrom_ = event.x();
    const bool isControl = (event.modifiers() & Qt::ControlModifier) != 0;
    isPanning_ =
        event.button() == Qt::MiddleButton || (event.button() == Qt::LeftButton && isControl);
    isBanding_ = event.button() == Qt::LeftButton && !isControl;
    return isPanning_ || isBanding_;
}

bool TrendPlot::mouseMoved(const QMouseEvent& event)
{
    if (isPanning_) {
        emit moved((panFrom_ - event.x()) / pixels());
        panFrom_ = event.x();
    }
    const bool isFar =
        (event.pos() - pressed_).manhattanLength() >= QApplication::startDragDistance();
    if (isBanding_ && (isFar || band_->isVisible())) {
        band_->setGeometry(QRect(pressed_, event.pos()).normalized() & canvas()->rect());
        band_->show();
    }
    return isPanning_ || isBanding_;
}

bool TrendPlot::mouseReleased(const QMouseEvent& event)
{
    const bool wasClick = isBanding_ && !band_->isVisible();
    const bool wasBand = isBanding_ && band_->isVisible();
    const bool isOurs = isBanding_ || isPanning_;
    isBanding_ = isPanning_ = false;
    band_->hide();
    if (wasClick)
        emit pointed(timeAt(pressed_.x()), (event.modifiers() & Qt::ShiftModifier) != 0);
    if (wasBand)
        chooseArea(band_->geometry());
    return isOurs;
}

void TrendPlot::chooseArea(const QRect& area)
{
    if (area.width() < QApplication::startDragDistance())
        return;
    if (area.height() >= minBandHeight)
        for (const auto axis : {yLeft, yRight})
            if (isOfNumbers(axis))
                setAxisScale(axis, invTransform(axis, area.bottom()),
                             invTransform(axis, area.top()));
    emit windowChosen(timeAt(area.left()), timeAt(area.right()));
}

} // namespace dov417
