// Widths of columns and the partings of pages, which are the mouse's else.
#ifndef DOV417_PANEL_LAYOUT_KEYS_H
#define DOV417_PANEL_LAYOUT_KEYS_H

#include <QObject>

namespace dov417 {

// In every table of the program Ctrl+Shift with left and right makes the chosen cell's column
// narrower and wider; Shift+Alt with an arrow moves the nearest parting that way. As long as it is
// there.
class LayoutKeys : public QObject {
    Q_OBJECT

public:
    LayoutKeys();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace dov417

#endif
