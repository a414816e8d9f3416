// What people do to the view: rulers, mouse and keys.
#include <QApplication>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QToolTip>
#include <algorithm>
#include <cmath>

#include "panel/frames/wire_view.h"
#include "panel/frames/wire_words.h"

namespace dov417 {

namespace {

constexpr double zoomStep = 1.25;
constexpr double panStep = 0.1;
constexpr int wheelStep = 120; // eighths of a degree
constexpr int grabPixels = 4;
constexpr int snapPixels = 6;

} // namespace

// ---- rulers ---------------------------------------------------------------------------------

std::vector<Clock::time_point> WireView::edgesOf(const WireFrame& frame) const
{
    std::vector<Clock::time_point> edges = {frame.begin};
    const auto& spans = times_->spans();
    for (std::size_t i = times_->spanAt(frame.begin);
         i < spans.size() && spans[i].begin < frame.end; ++i)
        edges.push_back(spans[i].end);
    return edges;
}

void WireView::setRuler(WireRuler ruler, std::optional<Clock::time_point> at)
{
    rulers_.at(static_cast<std::size_t>(ruler)) = at;
    emit rulersChanged();
    update();
}

void WireView::setRuler(WireRuler ruler)
{
    standStill();
    emit windowMoved();
    const WireFrame* const frame = times_->find(current_);
    if (!frame || frame->end <= from_ || frame->begin >= to_) { // where it can be seen
        setRuler(ruler, from_ + (to_ - from_) * (ruler == WireRuler::a ? 1 : 2) / 3);
        return;
    }
    const std::vector<Clock::time_point> edges = edgesOf(*frame);
    const std::optional<Clock::time_point> before = this->ruler(ruler);
    const auto at = before ? std::find(edges.begin(), edges.end(), *before) : edges.end();
    const bool isLast = at == edges.end() || at + 1 == edges.end();
    setRuler(ruler, isLast ? edges.front() : *(at + 1));
}

void WireView::removeRulers()
{
    rulers_ = {};
    emit rulersChanged();
    update();
}

std::optional<WireRuler> WireView::rulerAt(int x) const
{
    for (const WireRuler each : {WireRuler::a, WireRuler::b})
        if (ruler(each) && std::abs(xOf(*ruler(each)) - x) <= grabPixels)
            return each;
    return std::nullopt;
}

// Where something begins or ends, if that is near.
Clock::time_point WireView::snapped(int x) const
{
    const auto& spans = times_->spans();
    Clock::time_point nearest = timeAt(x);
    double distance = snapPixels;
    for (std::size_t i = times_->spanAt(timeAt(x - snapPixels));
         i < spans.size() && xOf(spans[i].begin) <= x + snapPixels; ++i)
        for (const Clock::time_point edge : {spans[i].begin, spans[i].end})
            if (std::abs(xOf(edge) - x) < distance) {
                nearest = edge;
                distance = std::abs(xOf(edge) - x);
            }
    return nearest;
}

// ---- mouse and keys -------------------------------------------------------------------------

bool WireView::event(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::LanguageChange ||
        event->type() == QEvent::Polish)
        measureTexts();
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto* const help = static_cast<QHelpEvent*>(event);
    const WireFrame* const frame = frameAt(help->pos());
    if (frame)
        QToolTip::showText(help->globalPos(), frameText(*frame, areas_), this);
    else
        QToolTip::hideText();
    return true;
}

void WireView::wheelEvent(QWheelEvent* event)
{
    const QPoint turned = event->angleDelta();
    if (turned.x() != 0)
        pan(-panStep * turned.x() / wheelStep);
    if (turned.y() != 0)
        zoomAt(std::pow(zoomStep, static_cast<double>(turned.y()) / wheelStep),
               timeAt(event->position().x()));
    event->accept();
}

void WireView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    isPressed_ = true;
    isPanned_ = false;
    dragged_ = rulerAt(event->pos().x());
    pressed_ = event->pos();
    pressedFrom_ = from_;
}

void WireView::mouseMoveEvent(QMouseEvent* event)
{
    const int x = event->pos().x();
    if (dragged_) {
        standStill();
        setRuler(*dragged_, snapped(x));
        return;
    }
    if (isPressed_) {
        isPanned_ = isPanned_ || std::abs(x - pressed_.x()) >= QApplication::startDragDistance();
        if (isPanned_) {
            standStill();
            const Clock::time_point from = pressedFrom_ + (timeAt(pressed_.x()) - timeAt(x));
            show(from, from + (to_ - from_));
        }
        return;
    }
    const WireFrame* const frame = frameAt(event->pos());
    if (frame)
        setCurrent(frame->told.number);
    setCursor(rulerAt(x) ? Qt::SizeHorCursor : frame ? Qt::PointingHandCursor : Qt::ArrowCursor);
}

void WireView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const WireFrame* const frame = frameAt(event->pos());
    const bool isClick = isPressed_ && !isPanned_ && !dragged_;
    isPressed_ = false;
    dragged_.reset();
    if (!isClick || !frame)
        return;
    standStill();
    emit windowMoved();
    setCurrent(frame->told.number);
    emit frameChosen(frame->told.number);
}

void WireView::keyPressEvent(QKeyEvent* event)
{
    const bool isShifted = (event->modifiers() & Qt::ShiftModifier) != 0;
    switch (event->key()) {
    case Qt::Key_Left:
        isShifted ? pan(-panStep) : chooseNext(-1);
        break;
    case Qt::Key_Right:
        isShifted ? pan(panStep) : chooseNext(1);
        break;
    case Qt::Key_PageUp:
        pan(-1);
        break;
    case Qt::Key_PageDown:
        pan(1);
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoom(zoomStep);
        break;
    case Qt::Key_Minus:
        zoom(1 / zoomStep);
        break;
    case Qt::Key_0:
        fitAll();
        break;
    case Qt::Key_Home:
        standStill();
        show(times_->begin(), times_->begin() + (to_ - from_));
        break;
    case Qt::Key_End:
        setFollowing(true);
        break;
    case Qt::Key_Space:
        setFollowing(!isFollowing_);
        break;
    case Qt::Key_A:
        setRuler(WireRuler::a);
        break;
    case Qt::Key_B:
        setRuler(WireRuler::b);
        break;
    case Qt::Key_Escape:
        removeRulers();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (current_ != 0)
            emit frameChosen(current_);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace dov417
