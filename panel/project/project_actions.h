// What a person does with projects: the menus, and the questions that belong to them.
#ifndef DOV417_PANEL_PROJECT_ACTIONS_H
#define DOV417_PANEL_PROJECT_ACTIONS_H

#include <QMainWindow>
#include <QMenu>
#include <QUndoGroup>

#include "panel/project/project_document.h"
#include "panel/project/unsaved_work.h"

namespace dov417 {

class ProjectActions : public QObject {
    Q_OBJECT

public:
    // Adds the menus File and Edit to the window's bar.
    ProjectActions(PanelDesk& desk, ProjectDocument& document, QMainWindow& window);

    // What is edited there and is in no project is asked about, and kept, too. It is to outlive the
    // use of this.
    void addPage(PanelPage* page);
    // What Edit takes back from now on. Null: what was edited in the project.
    void setHistory(QUndoStack* history);

    // Writes that are under way need not be awaited.
    bool mayCloseLine();
    // That, and whatever is not saved is saved, or not wanted. False: the project stays open.
    bool mayLeave();
    // Another project, or none, in its place. False where the one that is open stays.
    bool begin(const std::vector<Item>& items, const LineSetup& line,
               const std::vector<ProjectStation>& stations = {});
    bool open(const QString& file);
    bool chooseAndOpen();
    bool save();
    bool saveAs();
    bool saveIn(const QString& file);
    void editLine();
    void editStations();

    // What panels that were ended have kept of these projects, and of those that were never saved.
    void offerUnsaved(const QStringList& projects);
    // The program is to end and asks nobody: what is not saved is offered when it is started again.
    void keepUnsaved();
    void dropUnsaved();

signals:
    // See PanelPage.
    void told(const QString& text);
    // Another project is open.
    void opened();

private:
    bool mayForget();
    void makeFileMenu(QMenu* menu);
    void makeEditMenu(QMenu* menu);
    void listRecent();

    PanelDesk& desk_;
    ProjectDocument& document_;
    QMainWindow& window_;
    UnsavedWork unsaved_;
    std::vector<PanelPage*> pages_;
    QUndoGroup histories_;
    QMenu* recent_ = nullptr;
};

} // namespace dov417

#endif
