// A question whose Yes cannot be taken back.
#ifndef DOV417_PANEL_YES_QUESTION_H
#define DOV417_PANEL_YES_QUESTION_H

#include <QString>
#include <QWidget>

namespace dov417 {

// No is what a hasty key says, and a key that is still held says nothing: it went down for
// something else, before anybody could read this.
bool saysYes(QWidget* parent, const QString& title, const QString& question);

} // namespace dov417

#endif
