// What the panel keeps for whoever uses it on this computer, and for no project.
#ifndef DOV417_PANEL_PANEL_SETTINGS_H
#define DOV417_PANEL_PANEL_SETTINGS_H

#include <QSettings>

namespace dov417 {

inline QSettings panelSettings()
{
    return QSettings(QStringLiteral("dov417"), QStringLiteral("panel"));
}

} // namespace dov417

#endif
