// Small pictures drawn in the palette's own colours, so that they are seen on light and on dark.
#ifndef DOV417_PANEL_PANEL_ICONS_H
#define DOV417_PANEL_PANEL_ICONS_H

#include <QIcon>

namespace dov417 {

enum class PanelIcon {
    start,
    values,
    lamps,
    trends,
    line,
    wire,
    plan,
    health,
    recipes,
    faults
};
QIcon iconOf(PanelIcon icon);

} // namespace dov417

#endif
