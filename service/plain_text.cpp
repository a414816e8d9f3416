#include "plain_text.h"

QChar* putNumber(QChar* out, int number)
{
    unsigned int rest = static_cast<unsigned int>(number);
    if (number < 0) {
        *out++ = QLatin1Char('-');
        rest = 0u - rest;
    }
    if (rest < 10) { // nearly every number of a text
        *out = QLatin1Char(static_cast<char>('0' + rest));
        return out + 1;
    }
    QChar* end = out + 1;
    for (unsigned int more = rest / 10; more != 0; more /= 10) {
        ++end;
    }
    for (QChar* digit = end; digit != out; rest /= 10) {
        *--digit = QLatin1Char(static_cast<char>('0' + rest % 10));
    }
    return end;
}
