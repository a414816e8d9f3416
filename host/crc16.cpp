#include "crc16.h"

namespace {

const int crcBytes = 2;

unsigned crc16(const QByteArray& bytes, int length)
{
    unsigned crc = 0xFFFF;
    for (int i = 0; i < length; ++i) {
        crc ^= static_cast<unsigned char>(bytes.at(i));
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xA001 : crc >> 1;
    }
    return crc;
}

} // namespace

bool hasSoundCrc(const QByteArray& frame)
{
    if (frame.size() < 4)
        return false;
    const unsigned low = static_cast<unsigned char>(frame.at(frame.size() - 2));
    const unsigned high = static_cast<unsigned char>(frame.at(frame.size() - 1));
    return crc16(frame, frame.size() - crcBytes) == (low | high << 8);
}

QByteArray withCrc16(const QByteArray& frame)
{
    const unsigned crc = crc16(frame, frame.size());
    QByteArray whole = frame;
    whole.append(static_cast<char>(crc & 0xFF)).append(static_cast<char>(crc >> 8));
    return whole;
}
