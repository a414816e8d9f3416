// A table in which a person walks from row to row with keys, and that tells it.
#ifndef DOV417_PANEL_FRAME_TABLE_H
#define DOV417_PANEL_FRAME_TABLE_H

#include <QKeyEvent>
#include <QTableView>
#include <functional>

namespace dov417 {

class FrameTable : public QTableView {
public:
    // Called once the key has been followed.
    void onWalk(const std::function<void()>& walked)
    {
        walked_ = walked;
    }

protected:
    // Home and End are the first row and the last, as on the other pages: a row is what one looks
    // at.
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override
    {
        const bool isFar = action == MoveHome || action == MoveEnd;
        return QTableView::moveCursor(action, isFar ? modifiers | Qt::ControlModifier : modifiers);
    }
    void keyPressEvent(QKeyEvent* event) override
    {
        QTableView::keyPressEvent(event);
        switch (event->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
        case Qt::Key_Home:
        case Qt::Key_End:
            walked_();
            break;
        default:
            break;
        }
    }

private:
    std::function<void()> walked_ = []() {};
};

} // namespace dov417

#endif
