#include "panel/desk/line_batch.h"

#include <QCoreApplication>

namespace dov417 {

QString portIsAway()
{
    return QCoreApplication::translate("LineState", "the port is away");
}

} // namespace dov417
