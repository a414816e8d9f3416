#include "panel/desk/flow_layout.h"

#include <QHBoxLayout>
#include <algorithm>

namespace dov417 {

FlowLayout::FlowLayout(QWidget* parent) : QLayout(parent)
{
    setContentsMargins(0, 0, 0, 0);
}

FlowLayout::~FlowLayout()
{
    for (QLayoutItem* const item : items_)
        delete item;
}

void FlowLayout::addItem(QLayoutItem* item)
{
    items_.push_back(item);
}

int FlowLayout::count() const
{
    return static_cast<int>(items_.size());
}

QLayoutItem* FlowLayout::itemAt(int place) const
{
    return place >= 0 && place < count() ? items_.at(static_cast<std::size_t>(place)) : nullptr;
}

QLayoutItem* FlowLayout::takeAt(int place)
{
    QLayoutItem* const item = itemAt(place);
    if (item)
        items_.erase(items_.begin() + place);
    return item;
}

Qt::Orientations FlowLayout::expandingDirections() const
{
    return {};
}

bool FlowLayout::hasHeightForWidth() const
{
    return true;
}

int FlowLayout::heightForWidth(int width) const
{
    return arrange(QRect(0, 0, width, 0), false);
}

// Of the widest alone.
QSize FlowLayout::minimumSize() const
{
    QSize size;
    for (const QLayoutItem* const item : items_)
        size = size.expandedTo(item->minimumSize());
    return size;
}

// All in one row.
QSize FlowLayout::sizeHint() const
{
    QSize size;
    for (const QLayoutItem* const item : items_) {
        const QSize own = item->sizeHint();
        size = QSize(size.width() + (size.isEmpty() ? 0 : spacing()) + own.width(),
                     std::max(size.height(), own.height()));
    }
    return size;
}

void FlowLayout::setGeometry(const QRect& area)
{
    QLayout::setGeometry(area);
    arrange(area, true);
}

int FlowLayout::arrange(const QRect& area, bool isToBe) const
{
    int x = area.x();
    int y = area.y();
    int height = 0; // of the row
    for (QLayoutItem* const item : items_) {
        if (item->isEmpty())
            continue; // hidden
        const QSize size = item->sizeHint().boundedTo(QSize(area.width(), QLAYOUTSIZE_MAX));
        if (x > area.x() && x + size.width() > area.x() + area.width()) {
            x = area.x();
            y += height + spacing();
            height = 0;
        }
        if (isToBe)
            item->setGeometry(QRect(QPoint(x, y), size));
        x += size.width() + spacing();
        height = std::max(height, size.height());
    }
    return y + height - area.y();
}

QWidget* sideBySide(const std::vector<QWidget*>& widgets)
{
    auto* const all = new QWidget;
    auto* const row = new QHBoxLayout(all);
    row->setContentsMargins(0, 0, 0, 0);
    for (QWidget* const each : widgets)
        row->addWidget(each);
    return all;
}

} // namespace dov417
