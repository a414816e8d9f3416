// The first page: try without hardware, open a line, or close the one that is open.
#ifndef DOV417_PANEL_START_PAGE_H
#define DOV417_PANEL_START_PAGE_H

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>
#include <functional>

#include "link/port_list.h"
#include "panel/project/project_actions.h"

namespace dov417 {

// Tags for the own controller, with something to see on every page.
std::vector<Item> trialItems(const Library& library);
std::vector<ProjectStation> trialStations();

class StartPage : public PanelPage {
    Q_OBJECT

public:
    // Document and actions are to outlive it.
    StartPage(PanelDesk& desk, ProjectDocument& document, ProjectActions& actions);

    QString title() const override;
    QIcon icon() const override;

    // In place of this computer's, whenever they are listed.
    using PortListing = std::function<std::vector<PortEntry>()>;
    void listPortsBy(const PortListing& listing);
    void showPorts(const std::vector<PortEntry>& ports);
    void showRecent(const QStringList& projects);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makeTrial();
    QWidget* makeLine();
    QWidget* makeProject();
    void listAllPorts();
    void openTrial();
    void openLine();
    void closeLine();
    void listRecent();
    void showState();
    void showLine();

    ProjectDocument& document_;
    ProjectActions& actions_;
    PortListing listing_;
    LinePhase phase_ = LinePhase::closed; // as last shown
    bool isLineShown_ = false;
    QString shownPort_; // of the project
    QString shownWire_;
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
