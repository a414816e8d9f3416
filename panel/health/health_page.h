// The page of health: what is wrong with the line, if anything is, and the counters behind it.
#ifndef DOV417_PANEL_HEALTH_PAGE_H
#define DOV417_PANEL_HEALTH_PAGE_H

#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTimer>

#include "panel/desk/panel_page.h"
#include "panel/desk/recent_statistics.h"
#include "panel/health/health_model.h"
#include "panel/health/health_plots.h"

namespace dov417 {

class HealthPage : public PanelPage {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds picturePause{500};

    explicit HealthPage(PanelDesk& desk);

    QString title() const override;
    QIcon icon() const override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void makeTable();
    void lineBegan();
    void collect();
    void picture();
    void showAdvice();
    void showCounters();
    void fitWords();
    void copyAll();

    LinkHistory history_;
    RecentStatistics recent_;
    std::shared_ptr<const LinkStatistics> collected_;
    std::shared_ptr<const LinkStatistics> shown_;
    HealthModel model_;
    QLabel* const advice_;
    QLabel* const link_;
    QLabel* const brief_;
    LinkBand* const band_;
    CyclePlot* const cycles_;
    QTableView* const table_;
    QPushButton* const copy_;
    QTimer pictureTimer_;
};

} // namespace dov417

#endif
