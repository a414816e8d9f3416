// How large a dialog begins.
#ifndef DOV417_PANEL_DIALOG_SIZE_H
#define DOV417_PANEL_DIALOG_SIZE_H

#include <QDialog>

namespace dov417 {

// As it would like to be, and no larger than the window that it belongs to.
inline void resizeWithin(QDialog& dialog, const QSize& wanted)
{
    const QWidget* const parent = dialog.parentWidget();
    dialog.resize(parent ? wanted.boundedTo(parent->window()->size()) : wanted);
}

} // namespace dov417

#endif
