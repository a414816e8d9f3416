#include "replace_file.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace simulator {

bool replaceFile(const QString& fileName, const QByteArray& content, QString* error)
{
    const QFileInfo there(fileName);
    const bool replace = there.isFile() || there.isDir() || !there.exists();
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

} // namespace simulator
