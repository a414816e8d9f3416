// The projects that were opened or saved last on this computer.
#ifndef DOV417_PANEL_RECENT_PROJECTS_H
#define DOV417_PANEL_RECENT_PROJECTS_H

#include <QStringList>

namespace dov417 {

// Those that are still there, the last one first.
QStringList recentProjects();
// It is the last one from now on. Another panel's are kept.
void rememberProject(const QString& file);

} // namespace dov417

#endif
