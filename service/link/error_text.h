// The text that the host gets with each reply.
#ifndef DOV417MODBUS_ERROR_TEXT_H
#define DOV417MODBUS_ERROR_TEXT_H

#include <QByteArray>
#include <QString>

#include "records.h"

// Replaces `text` by what describes a request, "1#R_W10(1)": station, address, length. A reply of
// ten bytes whose sixth is not 0 adds ",error code:" and that byte.
void describeRequest(const VARIABLE& request, const QByteArray& reply, QString& text);

#endif
