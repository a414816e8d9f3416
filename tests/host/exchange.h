// Bytes written as hex, and one exchange on the line.
#ifndef DOV417_TESTS_EXCHANGE_H
#define DOV417_TESTS_EXCHANGE_H

#include <QByteArray>

namespace dov417 {

inline QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

// Station 1 is asked for one register; it holds 42.
const char* const readRequest = "0103050A0001A4C4";
const char* const readReply = "010302002A399B";

} // namespace dov417

#endif
