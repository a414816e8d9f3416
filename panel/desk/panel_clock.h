// What time it is for the window. Pages ask here and never the computer, so that a recorded session
// can be shown as it was at any moment of it, and looks the same each time.
#ifndef DOV417_PANEL_PANEL_CLOCK_H
#define DOV417_PANEL_PANEL_CLOCK_H

#include <QDateTime>

#include "line/clock.h"
#include "line/line_log.h"

namespace dov417 {

// This computer's time, unless one was handed in.
Clock::time_point panelNow();
QDateTime panelTimeOfDay();
// What the clock on the wall showed then.
LogTime panelLogTime(Clock::time_point then);

// From now on time stands still at this moment, whatever its time of day. Of the window's thread.
void setPanelTime(Clock::time_point now, const QDateTime& timeOfDay);
// It is this computer's again.
void letPanelTimeRun();

} // namespace dov417

#endif
