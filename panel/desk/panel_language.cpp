#include "panel/desk/panel_language.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QStandardPaths>
#include <algorithm>

namespace dov417 {

namespace {

const QString fromLanguage = QStringLiteral("_"); // dov417-panel_de.qm

} // namespace

PanelLanguage::PanelLanguage(const QLocale& locale, const QStringList& folders)
{
    const bool isThere = std::any_of(folders.begin(), folders.end(), [&](const QString& folder) {
        return own_.load(locale, QStringLiteral("dov417-panel"), fromLanguage, folder);
    });
    if (!isThere)
        return;
    if (qts_.load(locale, QStringLiteral("qtbase"), fromLanguage,
                  QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&qts_);
    QCoreApplication::installTranslator(&own_);
}

PanelLanguage::~PanelLanguage()
{
    QCoreApplication::removeTranslator(&own_);
    QCoreApplication::removeTranslator(&qts_);
}

QStringList languageFolders()
{
    const QString own = QStringLiteral("dov417-panel/translations");
    QStringList folders = QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, own,
                                                    QStandardPaths::LocateDirectory);
    folders.append(QDir(QCoreApplication::applicationDirPath())
                       .filePath(QStringLiteral("../share/") + own)); // of another prefix
    return folders;
}

} // namespace dov417
