// 32-bit sums and products that wrap around: hosts may hand in addresses near 2^31, and a signed
// overflow would be undefined.
#ifndef DOV417MODBUS_WRAP_H
#define DOV417MODBUS_WRAP_H

inline int wrapAdd(int a, int b)
{
    return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
}

inline int wrapSub(int a, int b)
{
    return static_cast<int>(static_cast<unsigned int>(a) - static_cast<unsigned int>(b));
}

inline int wrapMul(int a, int b)
{
    return static_cast<int>(static_cast<unsigned int>(a) * static_cast<unsigned int>(b));
}

#endif
