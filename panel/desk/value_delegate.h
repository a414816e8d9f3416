// Typing a value in its cell. What is typed stays while the controller's value goes on changing,
// and it is written by Enter alone: who clicks elsewhere has changed his mind, and who has typed
// nothing has asked for nothing.
#ifndef DOV417_PANEL_VALUE_DELEGATE_H
#define DOV417_PANEL_VALUE_DELEGATE_H

#include "panel/desk/lined_delegate.h"

namespace dov417 {

class ValueDelegate : public LinedDelegate {
    Q_OBJECT

public:
    using LinedDelegate::LinedDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
};

} // namespace dov417

#endif
