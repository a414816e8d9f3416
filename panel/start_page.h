// The first page: try without hardware, open a line, or close the one that is open.
#ifndef DOV417_PANEL_START_PAGE_H
#define DOV417_PANEL_START_PAGE_H

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>

#include "panel/panel_page.h"

namespace dov417 {

// Tags for the own controller, with something to see on every page.
std::vector<Item> trialItems(const Library& library);
// The controller they are of: as slow as one at the end of a real line.
simulator::SimulationOptions trialController();

class StartPage : public PanelPage {
    Q_OBJECT

public:
    explicit StartPage(PanelDesk& desk);

    QString title() const override;
    QIcon icon() const override;

signals:
    void opened();

private:
    QWidget* makeTrial();
    QWidget* makeLine();
    QWidget* makeProject();
    void listAllPorts();
    void openTrial();
    void openLine();
    void openFile(const QString& file);
    void listRecent();
    void showState();

    QLineEdit* const port_;
    QComboBox* const wire_;
    QTreeWidget* const ports_;
    QListWidget* const recent_;
    QPushButton* const open_;
    QPushButton* const close_;
    QLabel* const verdict_;
};

} // namespace dov417

#endif
