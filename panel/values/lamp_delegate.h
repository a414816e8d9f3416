// A bit as a lamp with its name below. On is a filled ring with a 1, off an empty one with a 0;
// what is not known to be so bears its symbol and is drawn with a broken ring.
#ifndef DOV417_PANEL_LAMP_DELEGATE_H
#define DOV417_PANEL_LAMP_DELEGATE_H

#include <QStyledItemDelegate>

namespace dov417 {

// The name as it stands below a lamp: in one line, or in two where it does not fit, after a dot or
// the like where less is cut off, or anywhere where nothing is cut off then.
QStringList lampNameParts(const QString& name, const QFontMetrics& metrics, int width);

class LampDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    static constexpr int lines = 4; // of text, in a row

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace dov417

#endif
