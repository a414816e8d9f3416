// CRC-16/MODBUS, as whoever sits on the line computes it.
#ifndef DOV417_CRC16_H
#define DOV417_CRC16_H

#include <QByteArray>

// Do the last two bytes hold the CRC of those before, low byte first?
bool hasSoundCrc(const QByteArray& frame);

// The frame with its CRC appended.
QByteArray withCrc16(const QByteArray& frame);

#endif
