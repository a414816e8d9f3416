#include "panel/project/recent_projects.h"

#include <QFileInfo>
#include <algorithm>

#include "panel/desk/panel_settings.h"

namespace dov417 {

namespace {

constexpr int maxRecent = 8;
const char* const recentKey = "recentProjects";

} // namespace

QStringList recentProjects()
{
    QStringList files = panelSettings().value(QLatin1String(recentKey)).toStringList();
    files.erase(std::remove_if(files.begin(), files.end(),
                               [](const QString& file) { return !QFileInfo::exists(file); }),
                files.end());
    return files;
}

void rememberProject(const QString& file)
{
    const QString path = QFileInfo(file).absoluteFilePath();
    QStringList recent = recentProjects();
    recent.removeAll(path);
    recent.prepend(path);
    panelSettings().setValue(QLatin1String(recentKey), QStringList(recent.mid(0, maxRecent)));
}

} // namespace dov417
