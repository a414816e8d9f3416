#include "line/crc16.h"

namespace dov417 {

std::uint16_t crc16(const QByteArray& bytes)
{
    unsigned crc = 0xFFFF;
    for (int i = 0; i < bytes.size(); ++i) {
        crc ^= static_cast<unsigned char>(bytes.at(i));
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? (crc >> 1) ^ 0xA001U : crc >> 1;
    }
    return static_cast<std::uint16_t>(crc);
}

QByteArray withCrc(const QByteArray& bytes)
{
    const unsigned crc = crc16(bytes);
    QByteArray frame = bytes;
    frame.append(static_cast<char>(crc & 0xFF));
    frame.append(static_cast<char>(crc >> 8));
    return frame;
}

bool hasGoodCrc(const QByteArray& frame)
{
    return frame.size() >= 4 && withCrc(frame.left(frame.size() - 2)) == frame;
}

} // namespace dov417
