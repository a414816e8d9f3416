#include "line/replace_file.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace dov417 {

namespace {

bool takesItsPlace(const QFileInfo& there)
{
    return there.isFile() || there.isDir() || !there.exists();
}

} // namespace

bool replaceFile(const QString& fileName, const QByteArray& content, QString* error)
{
    const bool replace = takesItsPlace(QFileInfo(fileName));
    QSaveFile aside(fileName);
    QFile direct(fileName);
    QFileDevice& file = replace ? static_cast<QFileDevice&>(aside) : direct;
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush() &&
        (!replace || aside.commit()))
        return true;
    if (error)
        *error = QStringLiteral("%1: %2").arg(fileName, file.errorString());
    return false;
}

bool mayReplaceFile(const QString& fileName, QString* error)
{
    const QFileInfo there(fileName);
    if (there.isDir() || !takesItsPlace(there)) {
        if (there.isWritable() && !there.isDir())
            return true;
        if (error)
            *error = QStringLiteral("%1: nothing can be written there").arg(fileName);
        return false;
    }
    const QFileInfo behindItsLink(there.isSymLink() ? there.symLinkTarget() : fileName);
    const QFileInfo folder(behindItsLink.absolutePath());
    if (folder.isDir() && folder.isWritable())
        return true;
    if (error)
        *error = QStringLiteral("%1: nothing can be written into its folder").arg(fileName);
    return false;
}

} // namespace dov417
