// What goes wrong on purpose with the own controller: faults of its replies, how long it takes, off
// and on, and its cable.
#ifndef DOV417_PANEL_FAULTS_PAGE_H
#define DOV417_PANEL_FAULTS_PAGE_H

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <vector>

#include "panel/desk/panel_page.h"
#include "simulator/faults.h"

namespace dov417 {

class FaultsPage : public PanelPage {
    Q_OBJECT

public:
    explicit FaultsPage(PanelDesk& desk);

    QString title() const override;
    QIcon icon() const override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct FaultRow {
        simulator::FaultKind kind;
        QSlider* slider; // in tenths of a percent
        QDoubleSpinBox* rate;
        QLabel* count;
    };

    QWidget* makeController();
    QWidget* makeRates();
    FaultRow makeRow(QGridLayout* grid, simulator::FaultKind kind, int line);
    // Each line begins without faults.
    void beginAnew();
    void clearRates(); // and orders nothing
    simulator::Conditions wanted() const;
    void order();
    void showState();

    QLabel* const sentence_;
    QLabel* const counters_;
    QPushButton* const power_;
    QPushButton* const cable_;
    QSpinBox* const responseTime_;
    QPushButton* const none_;
    std::vector<FaultRow> rows_;
    QWidget* const controller_;
    QWidget* const rates_; // makes the rows
    bool isOn_ = true;
    bool isPlugged_ = true;
    bool isShowing_ = false; // the controls follow, and order nothing
};

} // namespace dov417

#endif
