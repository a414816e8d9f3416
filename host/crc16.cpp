#include "crc16.h"

bool hasSoundCrc(const QByteArray& frame)
{
    if (frame.size() < 4)
        return false;
    unsigned crc = 0xFFFF;
    for (int i = 0; i < frame.size() - 2; ++i) {
        crc ^= static_cast<unsigned char>(frame.at(i));
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xA001 : crc >> 1;
    }
    const unsigned low = static_cast<unsigned char>(frame.at(frame.size() - 2));
    const unsigned high = static_cast<unsigned char>(frame.at(frame.size() - 1));
    return crc == (low | high << 8);
}
