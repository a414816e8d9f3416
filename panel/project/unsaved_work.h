// Keeps a copy of the project while there is work in it that is not saved, so that a panel which is
// ended loses next to none of it; see unsaved_copies.h.
//
// The copy is written by a thread of its own: a slow disk holds up nobody.
#ifndef DOV417_PANEL_UNSAVED_WORK_H
#define DOV417_PANEL_UNSAVED_WORK_H

#include <QObject>
#include <QThreadPool>
#include <QTimer>
#include <chrono>
#include <memory>
#include <vector>

#include "panel/project/project_document.h"
#include "panel/project/unsaved_copies.h"

namespace dov417 {

class UnsavedWork : public QObject {
    Q_OBJECT

public:
    // So much work may be lost; and a copy is not written more often.
    static constexpr std::chrono::milliseconds pause{2000};

    // The document is to outlive it.
    explicit UnsavedWork(ProjectDocument& document);
    // A copy that was not dropped stays and is offered to the next panel.
    ~UnsavedWork() override;

    // What it has unsaved is kept, too. It is to outlive the last copy that is written.
    void addPage(PanelPage* page);
    // The document has taken this one up: it is its own from now on.
    void adopt(const UnsavedCopy& copy);
    // Writes what is not saved and returns when that has been done.
    void keepNow();
    // Nothing of it is wanted any more.
    void drop();

signals:
    void failed(const QString& why);

private:
    struct Copy;

    bool isAnything() const;
    OrderedJson ofPages() const;
    void follow();
    void write();

    ProjectDocument& document_;
    std::vector<const PanelPage*> pages_;
    QTimer timer_;
    std::shared_ptr<Copy> copy_; // of the writing thread
    QThreadPool writer_;
};

} // namespace dov417

#endif
