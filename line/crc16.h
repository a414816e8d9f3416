// CRC-16/MODBUS, as whoever sits on the line computes it.
#ifndef DOV417_LINE_CRC16_H
#define DOV417_LINE_CRC16_H

#include <QByteArray>
#include <cstdint>

namespace dov417 {

// The CRC of these bytes; on the line its low byte comes first.
std::uint16_t crc16(const QByteArray& bytes);

// The frame with its CRC appended.
QByteArray withCrc(const QByteArray& bytes);

// Do the last two of at least four bytes hold the CRC of those before?
bool hasGoodCrc(const QByteArray& frame);

} // namespace dov417

#endif
