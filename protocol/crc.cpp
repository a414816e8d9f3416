#include "protocol/crc.h"

#include <QtGlobal>

namespace {

enum {
    crcStart = 0xFFFF,
    crcPolynomial = 0xA001,
    slice = 8
};

// afterZeros[z][b]: what byte b contributes to the CRC once z further bytes have gone by. With
// eight of them eight bytes are taken at once, without a shift a bit. By eight pointers, which stay
// in registers: within one array ARM would have to add each table's place for each byte.
class CrcTables {
public:
    CrcTables()
    {
        for (int zeros = 0; zeros < slice; ++zeros) {
            afterZeros[zeros] = tables_[zeros];
        }
        for (unsigned int byte = 0; byte < 256; ++byte) {
            unsigned int crc = byte;
            for (int bit = 0; bit < 8; ++bit) {
                crc = (crc & 1u) != 0 ? (crc >> 1) ^ crcPolynomial : crc >> 1;
            }
            tables_[0][byte] = static_cast<unsigned short>(crc);
        }
        for (int zeros = 1; zeros < slice; ++zeros) {
            for (int byte = 0; byte < 256; ++byte) {
                const unsigned int crc = tables_[zeros - 1][byte];
                tables_[zeros][byte] =
                    static_cast<unsigned short>((crc >> 8) ^ tables_[0][crc & 0xFFu]);
            }
        }
    }

    const unsigned short* afterZeros[slice];

private:
    unsigned short tables_[slice][256];
    Q_DISABLE_COPY(CrcTables)
};

const CrcTables tables;

} // namespace

unsigned short crcOf(const unsigned char* data, int length)
{
    const unsigned short* const* t = tables.afterZeros;
    unsigned int crc = crcStart;
    for (; length >= slice; length -= slice, data += slice) {
        crc ^= data[0] | static_cast<unsigned int>(data[1]) << 8;
        crc = static_cast<unsigned int>(t[7][crc & 0xFFu] ^ t[6][crc >> 8] ^ t[5][data[2]] ^
                                        t[4][data[3]] ^ t[3][data[4]] ^ t[2][data[5]] ^
                                        t[1][data[6]] ^ t[0][data[7]]);
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
