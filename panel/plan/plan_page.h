// The page of the plan: the controller's memory as a map of what is asked for, and what each merge
// gap would come to.
#ifndef DOV417_PANEL_PLAN_PAGE_H
#define DOV417_PANEL_PLAN_PAGE_H

#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTimer>
#include <memory>
#include <optional>

#include "live/plan_process.h"
#include "panel/desk/panel_page.h"
#include "panel/plan/gap_plot.h"
#include "panel/plan/plan_map_model.h"
#include "panel/plan/plan_tables.h"

namespace dov417 {

class PlanPage : public PanelPage {
    Q_OBJECT

public:
    explicit PlanPage(PanelDesk& desk);

    // Of these values, as its process tells it.
    void showPlan(std::vector<PanelValue> values, const PlanReport& report);

    QString title() const override;
    QIcon icon() const override;
    bool isBusy() const override;
    std::string settingsName() const override;
    OrderedJson settings() const override;
    std::function<void()> prepared(const OrderedJson& settings) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    static constexpr int asMeasured = -1; // in place of milliseconds

    QWidget* makeMap();
    QWidget* makeKey() const;
    QWidget* makeGaps();
    QWidget* makeTime();
    void planAnew();
    void begin();
    void failed(const QString& why);
    void showHeading(const PlanReport& report);
    void showNotes(const PlanReport& report);
    void showMeasured();
    Micros measuredTime() const;
    bool isTimeMeasured() const;
    void showButtons();
    void choose();
    void use(int row);
    void name(const QModelIndex& index);

    PlanMapModel map_;
    PlanRequestsModel requests_;
    GapsModel gaps_;
    QLabel* const heading_;
    QLabel* const named_;
    QLabel* const notes_;
    QLabel* const measured_;
    QTableView* const mapTable_;
    QTableView* const requestTable_;
    QTableView* const gapTable_;
    GapPlot* const plot_;
    QSpinBox* const responseTime_;
    QPushButton* const useBest_;
    QPushButton* const useChosen_;
    QTimer beginTimer_;
    bool isStale_ = true;          // what is shown is not the plan of what is watched now
    std::optional<int> chosenGap_; // that is shown in place of the one in use
    int shownGap_ = 0;
    Micros plannedTime_{0};          // that a controller takes, in the plan that is shown
    std::vector<PanelValue> values_; // that are planned
    std::unique_ptr<PlanProcess> process_;
};

} // namespace dov417

#endif
