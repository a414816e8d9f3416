// A key that stays down.
#ifndef DOV417_TESTS_HELD_KEY_H
#define DOV417_TESTS_HELD_KEY_H

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

namespace dov417 {

// What a keyboard sends while it does: the same press again and again.
inline void repeatKey(QWidget& widget, Qt::Key key, int times = 3)
{
    for (int i = 0; i < times; ++i) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(&widget, &event);
    }
}

} // namespace dov417

#endif
