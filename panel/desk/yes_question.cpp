#include "panel/desk/yes_question.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QMessageBox>

namespace dov417 {

namespace {

class HeldKeys : public QObject {
public:
    bool eventFilter(QObject* /*object*/, QEvent* event) override
    {
        return event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->isAutoRepeat();
    }
};

} // namespace

bool saysYes(QWidget* parent, const QString& title, const QString& question)
{
    HeldKeys heldKeys;
    QMessageBox box(QMessageBox::Question, title, question, QMessageBox::Yes | QMessageBox::No,
                    parent);
    box.setDefaultButton(QMessageBox::No);
    box.installEventFilter(&heldKeys);
    for (QAbstractButton* const button : box.buttons()) // they have the keys
        button->installEventFilter(&heldKeys);
    return box.exec() == QMessageBox::Yes;
}

} // namespace dov417
