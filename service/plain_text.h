// Short texts put together in place: the driver makes one for each reply, and two for each key of a
// plan.
#ifndef DOV417MODBUS_PLAIN_TEXT_H
#define DOV417MODBUS_PLAIN_TEXT_H

#include <QString>
#include <algorithm>

enum {
    maxNumberText = 11 // "-2147483648"
};

inline QChar* putText(QChar* out, const char* latin1)
{
    for (; *latin1 != 0; ++latin1) {
        *out++ = QLatin1Char(*latin1);
    }
    return out;
}

inline QChar* putText(QChar* out, const QString& text)
{
    return std::copy(text.constData(), text.constData() + text.size(), out);
}

QChar* putNumber(QChar* out, int number);

#endif
