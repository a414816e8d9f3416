// The text that the host gets with each reply.
#ifndef DOV417MODBUS_ERROR_TEXT_H
#define DOV417MODBUS_ERROR_TEXT_H

#include <QByteArray>
#include <QString>

// Describes the frame on the line, "1#R_W10(1)": station, address, length. A reply of ten bytes
// whose sixth is not 0 adds ",error code:" and that byte. Empty where no frame is on the line.
QString getErrorInfo(QByteArray reply);

#endif
