// A file that holds what it held or what it is to hold, and never a part of it.
#ifndef DOV417_LINE_REPLACE_FILE_H
#define DOV417_LINE_REPLACE_FILE_H

#include <QByteArray>
#include <QString>

namespace dov417 {

// Writes a new file and puts it in place of the old one, behind its link and with its mode. A
// device or a pipe is written to directly: it is not for us to put a file there. `error`, if given,
// tells why it failed.
bool replaceFile(const QString& fileName, const QByteArray& content, QString* error);

// Could it, as things stand? To be asked before there is anything to lose.
bool mayReplaceFile(const QString& fileName, QString* error);

} // namespace dov417

#endif
