// Why a plot has nothing to draw, in words.
#ifndef DOV417_PANEL_TREND_ABSENCE_H
#define DOV417_PANEL_TREND_ABSENCE_H

#include <QString>

#include "panel/desk/panel_desk.h"
#include "panel/trends/trend_arrangement.h"

namespace dov417 {

QString whyNothingIsDrawn(const TrendGroup& group, const PanelDesk& desk,
                          const TrendHistory& history);

} // namespace dov417

#endif
