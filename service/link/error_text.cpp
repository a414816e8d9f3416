#include "link/error_text.h"

#include <QVarLengthArray>
#include <algorithm>

#include "protocol.h"

namespace {

enum {
    errorReplySize = 10, // the one length at which a reply is searched for an error byte
    errorByteAt = 5,
    maxFixedText = 80 // five numbers of up to eleven digits, ",error code:", separators
};

// Every reply comes with this text, good or bad, so it is written in place.
typedef QVarLengthArray<QChar, 128> TextBuffer;

QChar* putText(QChar* out, const char* latin1)
{
    for (; *latin1 != 0; ++latin1) {
        *out++ = QLatin1Char(*latin1);
    }
    return out;
}

QChar* putNumber(QChar* out, int number)
{
    unsigned int rest = static_cast<unsigned int>(number);
    if (number < 0) {
        *out++ = QLatin1Char('-');
        rest = 0u - rest;
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

QString describeRequest(const VARIABLE& request, const QByteArray& reply)
{
    const int nameSize = static_cast<int>(request.regName.size());
    TextBuffer buffer;
    buffer.reserve(nameSize + maxFixedText);
    QChar* out = putNumber(buffer.data(), request.stationNo);
    *out++ = QLatin1Char('#');
    out = std::copy(request.regName.constData(), request.regName.constData() + nameSize, out);
    if (request.regName.endsWith(QLatin1String("_bit"))) {
        out = putNumber(out, request.address / 16);
        *out++ = QLatin1Char('.');
        out = putNumber(out, request.address % 16);
    } else {
        out = putNumber(out, request.address);
    }
    *out++ = QLatin1Char('(');
    out = putNumber(out, request.length);
    *out++ = QLatin1Char(')');
    if (reply.size() == errorReplySize && reply.at(errorByteAt) != 0) {
        out = putText(out, ",error code:");
        out = putNumber(out, static_cast<unsigned char>(reply.at(errorByteAt)));
    }
    return QString(buffer.constData(), static_cast<int>(out - buffer.constData()));
}

} // namespace

QString getErrorInfo(QByteArray reply)
{
    return driver.sendList.isEmpty() ? QString()
                                     : describeRequest(driver.sendList.at(0).request, reply);
}
