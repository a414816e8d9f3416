// A word of the map: what it is asked for by pattern and sign, where requests begin and end by
// their brackets.
#ifndef DOV417_PANEL_PLAN_MAP_DELEGATE_H
#define DOV417_PANEL_PLAN_MAP_DELEGATE_H

#include <QStyledItemDelegate>

#include "panel/plan/plan_map.h"

namespace dov417 {

// The same in the map and in the key to it. Leaves a pen of its own behind, as there are hundreds.
void paintWord(QPainter* painter, const QRect& place, const QPalette& palette,
               const PlanWord& word);

class PlanMapDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
};

} // namespace dov417

#endif
