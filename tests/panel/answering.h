// Answers the question that the window is about to ask.
#ifndef DOV417_TESTS_ANSWERING_H
#define DOV417_TESTS_ANSWERING_H

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <functional>
#include <gmock/gmock.h>
#include <string>

namespace dov417 {

// Called with the next dialog of this kind, once it is shown: from its own event loop.
template <typename Dialog>
void whenAsked(QObject* parent, const std::function<void(Dialog&)>& todo)
{
    QTimer::singleShot(0, parent, [parent, todo]() {
        auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (!dialog)
            whenAsked<Dialog>(parent, todo); // not yet
        else
            todo(*dialog);
    });
}

inline void answerWith(QObject* parent, QMessageBox::StandardButton button,
                       const std::string& question)
{
    whenAsked<QMessageBox>(parent, [button, question](QMessageBox& box) {
        EXPECT_THAT(box.text().toStdString(), testing::HasSubstr(question));
        QTest::mouseClick(box.button(button), Qt::LeftButton);
    });
}

} // namespace dov417

#endif
