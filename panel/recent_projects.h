// Project files as the panel opens them: what is watched and on which line. See live/project.h.
#ifndef DOV417_PANEL_PANEL_PROJECT_H
#define DOV417_PANEL_PANEL_PROJECT_H

#include <QStringList>
#include <string>

#include "panel/panel_desk.h"

namespace dov417 {

// Watches its tags, and opens its line for reading if it names one. All of it or nothing: throws a
// UsageFailure with the place of a mistake. It is a recent one from then on.
void openProject(PanelDesk& desk, const std::string& file);

// Those that were opened last on this computer and are still there, the last one first.
QStringList recentProjects();

} // namespace dov417

#endif
