// Hands on to the history what the desk is told, and when nothing was known any more.
#ifndef DOV417_PANEL_TREND_RECORDER_H
#define DOV417_PANEL_TREND_RECORDER_H

#include <QObject>

#include "panel/desk/panel_desk.h"
#include "panel/trends/trend_history.h"

namespace dov417 {

class TrendRecorder : public QObject {
    Q_OBJECT

public:
    // Both are to outlive it.
    TrendRecorder(PanelDesk& desk, TrendHistory& history);

signals:
    // What comes from now on may be another controller's.
    void otherLine();
    // What was read of these so far may have been another request's.
    void doubted();

private:
    void record(const std::vector<View>& views, TrendTime told);
    void doubt(TrendTime told);
    void look();

    PanelDesk& desk_;
    TrendHistory& history_;
    bool isKnown_ = false; // anything, as the line is
};

} // namespace dov417

#endif
