// Chooses from the menu that the window is about to open, with the keys of a person.
#ifndef DOV417_TESTS_MENU_CHOOSING_H
#define DOV417_TESTS_MENU_CHOOSING_H

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <vector>

namespace dov417 {

inline QString menuWords(const QAction& action)
{
    return action.text().remove(QLatin1Char('&'));
}

// Down to this one; false where there is none that may be chosen.
inline bool goDownTo(QMenu& menu, const QString& words)
{
    for (int i = 0; i < menu.actions().size(); ++i) {
        if (menu.activeAction() && menuWords(*menu.activeAction()) == words)
            return menu.activeAction()->isEnabled();
        QTest::keyClick(&menu, Qt::Key_Down);
    }
    return menu.activeAction() && menuWords(*menu.activeAction()) == words;
}

inline void chooseFrom(QMenu& menu, const QStringList& way)
{
    if (!goDownTo(menu, way.front())) {
        ADD_FAILURE() << "the menu has no " << way.front().toStdString();
        while (QWidget* const open = QApplication::activePopupWidget())
            open->close();
        return;
    }
    QMenu* const next = menu.activeAction()->menu();
    if (next)
        QTest::keyClick(&menu, Qt::Key_Right);
    else
        QTest::keyClick(&menu, Qt::Key_Return);
    if (next && way.size() > 1)
        chooseFrom(*next, way.mid(1));
}

// Opens the widget's own menu as the menu key does, and goes to the words one within the other.
inline void chooseByKeys(QWidget& widget, const QStringList& way)
{
    QTimer::singleShot(0, &widget, [way]() {
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_TRUE(menu) << "there is no menu";
        chooseFrom(*menu, way);
    });
    const QPoint place = widget.rect().center();
    QContextMenuEvent asked(QContextMenuEvent::Keyboard, place, widget.mapToGlobal(place));
    QApplication::sendEvent(&widget, &asked);
}

// What stands in a menu of the widget's menu.
inline QStringList offeredIn(QWidget& widget, const QString& submenu)
{
    QStringList offered;
    QTimer::singleShot(0, &widget, [&offered, submenu]() {
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_TRUE(menu) << "there is no menu";
        for (const QAction* const action : menu->actions())
            if (action->menu() && menuWords(*action) == submenu)
                for (const QAction* const each : action->menu()->actions())
                    offered.append(menuWords(*each));
        menu->close();
    });
    const QPoint place = widget.rect().center();
    QContextMenuEvent asked(QContextMenuEvent::Keyboard, place, widget.mapToGlobal(place));
    QApplication::sendEvent(&widget, &asked);
    return offered;
}

} // namespace dov417

#endif
