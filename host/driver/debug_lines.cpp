#include "driver/debug_lines.h"

#include <QString>
#include <QtGlobal>
#include <cstdio>

namespace dov417 {

namespace {

void printAllButDebugLines(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type != QtDebugMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

void dropDebugLines()
{
    qInstallMessageHandler(printAllButDebugLines);
}

} // namespace dov417
