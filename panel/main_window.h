// The panel's window: the pages with their list, and the line below whatever page is shown.
#ifndef DOV417_PANEL_MAIN_WINDOW_H
#define DOV417_PANEL_MAIN_WINDOW_H

#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <QStackedWidget>
#include <QToolButton>
#include <vector>

#include "panel/panel_page.h"

namespace dov417 {

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    // The desk is to outlive it.
    explicit MainWindow(PanelDesk& desk);

    void showPage(int page);
    const std::vector<PanelPage*>& pages() const
    {
        return pages_;
    }

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addPage(PanelPage* page);
    void makeStatusLine();
    void showState();
    void toggleLock();

    PanelDesk& desk_;
    std::vector<PanelPage*> pages_;
    QListWidget* const list_;
    QStackedWidget* const stack_;
    QLabel* const sentence_;
    QLabel* const cycle_;
    QLabel* const message_;
    QToolButton* const lock_;
};

} // namespace dov417

#endif
