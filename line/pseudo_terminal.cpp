#include "line/pseudo_terminal.h"

#include <QFileInfo>

namespace dov417 {

bool isPseudoTerminal(const QString& device)
{
    return QFileInfo(device).canonicalFilePath().startsWith(QLatin1String("/dev/pts/"));
}

} // namespace dov417
