// The pictures of the page of health: how long cycles took, and how the link has been.
#ifndef DOV417_PANEL_HEALTH_PLOTS_H
#define DOV417_PANEL_HEALTH_PLOTS_H

#include <qwt_plot.h>
#include <qwt_plot_histogram.h>

#include "panel/health/cycle_columns.h"
#include "panel/health/link_history.h"

namespace dov417 {

class CyclePlot : public QwtPlot {
    Q_OBJECT

public:
    static constexpr int maxColumns = 60;

    CyclePlot();
    void show(const Durations& cycles);

protected:
    void changeEvent(QEvent* event) override;

private:
    QwtPlotHistogram* const columns_;
};

class LinkBandItem;

class LinkBand : public QwtPlot {
    Q_OBJECT

public:
    static constexpr std::chrono::minutes shown{10};

    LinkBand();
    void show(const LinkHistory& history, Clock::time_point now);

protected:
    void changeEvent(QEvent* event) override;

private:
    LinkBandItem* const band_;
};

} // namespace dov417

#endif
