#include "panel/desk/value_delegate.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>

namespace dov417 {

namespace {

const char* const isFilled = "isFilled";

} // namespace

QWidget* ValueDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                     const QModelIndex&) const
{
    auto* const editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setAccessibleName(tr("New value"));
    return editor;
}

void ValueDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (editor->property(isFilled).toBool())
        return;
    editor->setProperty(isFilled, true);
    auto* const field = static_cast<QLineEdit*>(editor);
    field->setText(index.data(Qt::EditRole).toString());
    field->selectAll();
}

void ValueDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                 const QModelIndex& index) const
{
    // What stands there was rounded to be shown, and may be minutes old.
    const auto* const field = static_cast<QLineEdit*>(editor);
    if (field->isModified())
        model->setData(index, field->text(), Qt::EditRole);
}

bool ValueDelegate::eventFilter(QObject* object, QEvent* event)
{
    auto* const editor = qobject_cast<QWidget*>(object);
    const bool isTab = event->type() == QEvent::KeyPress &&
                       (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Tab ||
                        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Backtab);
    if (editor && (isTab || event->type() == QEvent::FocusOut)) {
        emit closeEditor(editor, QAbstractItemDelegate::RevertModelCache);
        return isTab;
    }
    return LinedDelegate::eventFilter(object, event);
}

} // namespace dov417
