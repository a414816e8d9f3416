#include "panel/desk/layout_keys.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QSplitter>
#include <QTableView>
#include <algorithm>
#include <optional>

namespace dov417 {

namespace {

struct Arrow {
    Qt::Orientation orientation;
    int sense;
};

std::optional<Arrow> arrowOf(int key)
{
    switch (key) {
    case Qt::Key_Left:
        return Arrow{Qt::Horizontal, -1};
    case Qt::Key_Right:
        return Arrow{Qt::Horizontal, 1};
    case Qt::Key_Up:
        return Arrow{Qt::Vertical, -1};
    case Qt::Key_Down:
        return Arrow{Qt::Vertical, 1};
    default:
        return std::nullopt;
    }
}

bool resizeColumn(QTableView& table, int sense)
{
    QHeaderView& head = *table.horizontalHeader();
    const int column = table.currentIndex().column();
    if (column < 0 || head.isHidden() || head.sectionResizeMode(column) != QHeaderView::Interactive)
        return false;
    const int step = 2 * table.fontMetrics().averageCharWidth();
    const int width = head.sectionSize(column) + sense * step;
    head.resizeSection(column, std::max(width, head.minimumSectionSize()));
    return true;
}

// The parting behind the part in which this stands; of the last part, the one before it.
bool movePartingOf(QSplitter& splitter, const QWidget& inside, int sense)
{
    int part = 0;
    while (part < splitter.count() - 2 && splitter.widget(part) != &inside &&
           !splitter.widget(part)->isAncestorOf(&inside))
        ++part;
    QList<int> sizes = splitter.sizes();
    const int step = 2 * splitter.fontMetrics().height() * sense;
    sizes[part] = std::max(1, sizes[part] + step); // 0 would hide it
    sizes[part + 1] = std::max(1, sizes[part + 1] - step);
    const QList<int> before = splitter.sizes();
    splitter.setSizes(sizes);
    return splitter.sizes() != before;
}

bool moveParting(QWidget& focused, const Arrow& arrow)
{
    for (QWidget* each = focused.parentWidget(); each; each = each->parentWidget()) {
        auto* const splitter = qobject_cast<QSplitter*>(each);
        if (splitter && splitter->orientation() == arrow.orientation && splitter->count() > 1)
            return movePartingOf(*splitter, focused, arrow.sense);
    }
    return false;
}

} // namespace

LayoutKeys::LayoutKeys()
{
    qApp->installEventFilter(this);
}

bool LayoutKeys::eventFilter(QObject* watched, QEvent* event)
{
    auto* const focused = QApplication::focusWidget();
    if (event->type() != QEvent::KeyPress || !focused || watched != focused)
        return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const std::optional<Arrow> arrow = arrowOf(key.key());
    if (!arrow)
        return false;
    const Qt::KeyboardModifiers with = key.modifiers() & ~Qt::KeypadModifier;
    auto* const table = qobject_cast<QTableView*>(focused);
    if (with == (Qt::ControlModifier | Qt::ShiftModifier) && table &&
        arrow->orientation == Qt::Horizontal)
        return resizeColumn(*table, arrow->sense);
    if (with == (Qt::AltModifier | Qt::ShiftModifier))
        return moveParting(*focused, *arrow);
    return false;
}

} // namespace dov417
