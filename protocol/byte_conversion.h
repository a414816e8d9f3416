// Bytes to numbers and back, without a look at the processor's own byte order.
#ifndef DOV417MODBUS_BYTE_CONVERSION_H
#define DOV417MODBUS_BYTE_CONVERSION_H

inline int uchar2int16(unsigned char low, unsigned char high)
{
    return low + high * 256;
}

inline int uchar2int32(unsigned char b0, unsigned char b1, unsigned char b2, unsigned char b3)
{
    return static_cast<int>(static_cast<unsigned int>(b0) | static_cast<unsigned int>(b1) << 8 |
                            static_cast<unsigned int>(b2) << 16 |
                            static_cast<unsigned int>(b3) << 24);
}

// Low byte first to high byte first, and back.
inline void swapBytesOfWords(unsigned char* bytes, int words)
{
    for (int i = 0; i < 2 * words; i += 2) {
        const unsigned char first = bytes[i];
        bytes[i] = bytes[i + 1];
        bytes[i + 1] = first;
    }
}

// `value` with bit 0 to 31 set or cleared; as it is for any other bit.
inline int _setBitValue(int value, int bit, int on)
{
    if (bit < 0 || bit > 31) {
        return value;
    }
    const unsigned int mask = 1u << bit;
    const unsigned int bits = static_cast<unsigned int>(value);
    return static_cast<int>(on != 0 ? bits | mask : bits & ~mask);
}

#endif
