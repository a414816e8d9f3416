// A bit as a lamp with its name below. On is a filled ring with a 1, off an empty one with a 0;
// what is not known to be so bears its symbol and is drawn with a broken ring.
#ifndef DOV417_PANEL_LAMP_DELEGATE_H
#define DOV417_PANEL_LAMP_DELEGATE_H

#include <QStyledItemDelegate>

namespace dov417 {

class LampDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace dov417

#endif
