#include "driver/default_line.h"

#include <QStringList>

namespace dov417 {

std::string defaultLine(const Library& library)
{
    QString parameter;
    library.intf_getDriverParameter(parameter);
    // Item 0 is a type; baud rate, data bits, parity and stop bits follow.
    return QStringList(parameter.split(QLatin1Char(',')).mid(1, 4))
        .join(QLatin1Char(','))
        .toStdString();
}

} // namespace dov417
