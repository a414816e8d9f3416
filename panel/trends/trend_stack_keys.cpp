// What a person does in the plots with keys.
#include "panel/trends/trend_stack.h"

namespace dov417 {

namespace {

constexpr double stepOfKey = 0.1;
constexpr double zoomOfKey = 0.5;
constexpr int columnsOfControl = 20;

} // namespace

void TrendStack::pressKey(QKeyEvent* event)
{
    const bool isShift = (event->modifiers() & Qt::ShiftModifier) != 0;
    const int columns = (event->modifiers() & Qt::ControlModifier) != 0 ? columnsOfControl : 1;
    const TrendTime middle = view_.to() - view_.span() / 2;
    event->accept();
    switch (event->key()) {
    case Qt::Key_Space:
        return arrange([](TrendView& view) { view.isRunning() ? view.standStill() : view.run(); });
    case Qt::Key_Left:
    case Qt::Key_Right: {
        const int sense = event->key() == Qt::Key_Left ? -1 : 1;
        if (isShift)
            return moveCursor(sense * columns);
        return arrange([sense](TrendView& view) { view.move(sense * stepOfKey); });
    }
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const int sense = event->key() == Qt::Key_Up ? 1 : -1;
        if ((event->modifiers() & Qt::ControlModifier) != 0)
            return changeHeight([sense](TrendPlot& plot) {
                plot.zoomHeight(sense > 0 ? zoomOfKey : 1 / zoomOfKey);
            });
        if (isShift)
            return changeHeight([sense](TrendPlot& plot) { plot.moveHeight(sense * stepOfKey); });
        return event->ignore(); // to the plots above and below
    }
    case Qt::Key_PageUp:
        return arrange([](TrendView& view) { view.move(-1); });
    case Qt::Key_PageDown:
        return arrange([](TrendView& view) { view.move(1); });
    case Qt::Key_Plus:
        return arrange([=](TrendView& view) { view.zoom(zoomOfKey, middle); });
    case Qt::Key_Minus:
        return arrange([=](TrendView& view) { view.zoom(1 / zoomOfKey, middle); });
    case Qt::Key_Home:
        return showAll();
    case Qt::Key_End:
        return arrange([](TrendView& view) { view.run(); });
    case Qt::Key_Backspace:
        return arrange([](TrendView& view) { view.back(); });
    case Qt::Key_0:
        return followValues();
    case Qt::Key_A:
    case Qt::Key_B: {
        const int cursor = event->key() == Qt::Key_A ? 0 : 1;
        return point(cursors_.at(static_cast<std::size_t>(cursor)).value_or(middle), cursor);
    }
    case Qt::Key_N:
        emit noteAsked();
        return;
    case Qt::Key_Escape:
        for (int cursor = 0; cursor < TrendPlot::cursors; ++cursor)
            setCursor(cursor, std::nullopt);
        return;
    default:
        event->ignore();
    }
}

} // namespace dov417
