#include "panel/desk/lined_delegate.h"

#include <QPainter>

namespace dov417 {

void LinedDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const
{
    const QRect& cell = option.rect;
    const bool isMirrored = option.direction == Qt::RightToLeft;
    QStyleOptionViewItem inside = option;
    inside.rect = cell.adjusted(isMirrored ? 1 : 0, 0, isMirrored ? 0 : -1, -1);
    QStyledItemDelegate::paint(painter, inside, index);
    const int hint =
        option.widget->style()->styleHint(QStyle::SH_Table_GridLineColor, &option, option.widget);
    const QColor line(static_cast<QRgb>(hint));
    painter->fillRect(cell.left(), cell.bottom(), cell.width(), 1, line);
    painter->fillRect(isMirrored ? cell.left() : cell.right(), cell.top(), 1, cell.height(), line);
}

QSize LinedDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    return QStyledItemDelegate::sizeHint(option, index) + QSize(1, 1);
}

} // namespace dov417
