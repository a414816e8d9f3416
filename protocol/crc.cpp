#include "protocol/crc.h"

namespace {

enum {
    crcStart = 0xFFFF,
    crcPolynomial = 0xA001,
    slice = 8
};

// afterZeros[z][b]: what byte b contributes to the CRC once z further bytes have gone by. With
// eight of them eight bytes are taken at once, without a shift a bit.
struct CrcTables {
    CrcTables()
    {
        for (unsigned int byte = 0; byte < 256; ++byte) {
            unsigned int crc = byte;
            for (int bit = 0; bit < 8; ++bit) {
                crc = (crc & 1u) != 0 ? (crc >> 1) ^ crcPolynomial : crc >> 1;
            }
            afterZeros[0][byte] = static_cast<unsigned short>(crc);
        }
        for (int zeros = 1; zeros < slice; ++zeros) {
            for (int byte = 0; byte < 256; ++byte) {
                const unsigned int crc = afterZeros[zeros - 1][byte];
                afterZeros[zeros][byte] =
                    static_cast<unsigned short>((crc >> 8) ^ afterZeros[0][crc & 0xFFu]);
            }
        }
    }

    unsigned short afterZeros[slice][256];
};

const CrcTables tables;

} // namespace

unsigned short crcOf(const unsigned char* data, int length)
{
    const unsigned short(&t)[slice][256] = tables.afterZeros;
    unsigned int crc = crcStart;
    for (; length >= slice; length -= slice, data += slice) {
        crc = static_cast<unsigned int>(t[7][(crc & 0xFFu) ^ data[0]] ^ t[6][(crc >> 8) ^ data[1]] ^
                                        t[5][data[2]] ^ t[4][data[3]] ^ t[3][data[4]] ^
                                        t[2][data[5]] ^ t[1][data[6]] ^ t[0][data[7]]);
    }
    for (; length > 0; --length, ++data) {
        crc = (crc >> 8) ^ t[0][(crc & 0xFFu) ^ *data];
    }
    return static_cast<unsigned short>(crc);
}

unsigned short computate_check(unsigned char* data, unsigned short length)
{
    return crcOf(data, length);
}

void appendCrc(unsigned char* bytes, int length)
{
    const unsigned int crc = computate_check(bytes, static_cast<unsigned short>(length));
    bytes[length] = static_cast<unsigned char>(crc & 0xFFu);
    bytes[length + 1] = static_cast<unsigned char>(crc >> 8);
}
