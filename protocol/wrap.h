// 32-bit sums and products that wrap around like the controller's own: a signed overflow would be
// undefined, and hosts do hand in addresses near 2^31.
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
