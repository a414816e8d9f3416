// Cells with a line to the right and below. QTableView's own grid goes pixel by pixel, and takes
// longer than all else of a table that is painted.
#ifndef DOV417_PANEL_LINED_DELEGATE_H
#define DOV417_PANEL_LINED_DELEGATE_H

#include <QStyledItemDelegate>

namespace dov417 {

class LinedDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    // With the lines, or a column that is as wide as its texts would cut them off.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace dov417

#endif
