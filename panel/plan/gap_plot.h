// Cycle time against the merge gap, with the best one and the one in use marked.
#ifndef DOV417_PANEL_GAP_PLOT_H
#define DOV417_PANEL_GAP_PLOT_H

#include <qwt_plot.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_marker.h>
#include <vector>

#include "session/planning.h"

namespace dov417 {

class GapPlot : public QwtPlot {
    Q_OBJECT

public:
    GapPlot();

    void show(const std::vector<GapOutcome>& outcomes, int gap);

protected:
    void changeEvent(QEvent* event) override;

private:
    void colour();
    void mark(QwtPlotMarker& marker, double gap, const GapOutcome& outcome, const QString& text,
              Qt::Alignment where);

    // Items belong to the plot, which would delete them: they are taken out before.
    QwtPlotCurve curve_;
    QwtPlotMarker best_;
    QwtPlotMarker inUse_;
};

} // namespace dov417

#endif
