// A page of the panel: a widget that shows what the desk knows, and asks it for what a person
// wants.
#ifndef DOV417_PANEL_PANEL_PAGE_H
#define DOV417_PANEL_PANEL_PAGE_H

#include <QIcon>
#include <QWidget>

#include "panel/panel_desk.h"

namespace dov417 {

class PanelPage : public QWidget {
    Q_OBJECT

public:
    // The desk is to outlive it.
    explicit PanelPage(PanelDesk& desk);

    // In the list of pages, where it stands with Alt and its letter.
    virtual QString title() const = 0;
    virtual QIcon icon() const = 0;

signals:
    // What a person should read now, below whatever page; an empty text takes it back.
    void told(const QString& text);

protected:
    PanelDesk& desk_;
};

} // namespace dov417

#endif
