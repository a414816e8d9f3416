#include "panel/panel_project.h"

#include <QFileInfo>
#include <QSettings>
#include <algorithm>

#include "live/project.h"

namespace dov417 {

namespace {

constexpr int maxRecent = 8;
const char* const recentKey = "recentProjects";

QSettings panelSettings()
{
    return QSettings(QStringLiteral("dov417"), QStringLiteral("panel"));
}

} // namespace

void openProject(PanelDesk& desk, const std::string& file)
{
    LineSetup line = readProject(file).line;
    if (line.simulated)
        line.port.clear(); // counts for nothing then
    ItemSource source;
    source.tags = file;
    const std::vector<Item> items = Items(desk.library(), source).tagged(Access::read);
    const QString path = QFileInfo(QString::fromStdString(file)).absoluteFilePath();

    desk.close();
    desk.setItems(items);
    if (line.simulated || !line.port.empty())
        desk.open(line);

    QStringList recent = recentProjects();
    recent.removeAll(path);
    recent.prepend(path);
    panelSettings().setValue(QLatin1String(recentKey), QStringList(recent.mid(0, maxRecent)));
}

QStringList recentProjects()
{
    QStringList files = panelSettings().value(QLatin1String(recentKey)).toStringList();
    files.erase(std::remove_if(files.begin(), files.end(),
                               [](const QString& file) { return !QFileInfo::exists(file); }),
                files.end());
    return files;
}

} // namespace dov417
