// The panel's window: the pages with their list, and the line below whatever page is shown.
#ifndef DOV417_PANEL_MAIN_WINDOW_H
#define DOV417_PANEL_MAIN_WINDOW_H

#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <QStackedWidget>
#include <QToolButton>
#include <memory>
#include <vector>

#include "panel/desk/layout_keys.h"
#include "panel/project/project_actions.h"

namespace dov417 {

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    // The desk is to outlive it.
    explicit MainWindow(PanelDesk& desk);

    void showPage(int page);
    int currentPage() const
    {
        return list_->currentRow();
    }
    ProjectDocument& document()
    {
        return document_;
    }
    ProjectActions& actions()
    {
        return *actions_;
    }
    // Without asking anything: what is not saved is offered to the next panel, and writes that are
    // under way end with the line.
    void leave();
    const std::vector<PanelPage*>& pages() const
    {
        return pages_;
    }

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addPages();
    void addPage(PanelPage* page);
    void makeStatusLine();
    void showState();
    void toggleLock();
    void showTitle();
    void tell(const QString& text);
    void makeHelpMenu();
    OrderedJson layout() const;
    std::function<void()> preparedLayout(const OrderedJson& layout);

    PanelDesk& desk_;
    ProjectDocument document_;
    const std::unique_ptr<ProjectActions> actions_;
    QMenu* const go_;        // to each page
    bool isClosing_ = false; // a question may be open
    bool asksToSave_ = true;
    std::vector<PanelPage*> pages_;
    QListWidget* const list_;
    QStackedWidget* const stack_;
    QLabel* const sentence_;
    QLabel* const cycle_;
    QLabel* const message_;
    QToolButton* const lock_;
    LayoutKeys layoutKeys_;
};

} // namespace dov417

#endif
