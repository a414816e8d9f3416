#include "link/error_text.h"

#include "plain_text.h"

namespace {

enum {
    errorReplySize = 10, // the one length at which a reply is searched for an error byte
    errorByteAt = 5,
    maxTextBesideName = 80 // five numbers of up to eleven digits, ",error code:", separators
};

} // namespace

// Every reply comes with this text, good or bad: where the host hands in the same text again, it is
// written over without an allocation.
void describeRequest(const VARIABLE& request, const QByteArray& reply, QString& text)
{
    const int room = static_cast<int>(request.regName.size()) + maxTextBesideName;
    if (!text.isDetached() || text.capacity() < room) {
        text.resize(room);
    }
    QChar* const begin = text.data();
    QChar* out = putNumber(begin, request.stationNo);
    *out++ = QLatin1Char('#');
    out = putText(out, request.regName);
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
    text.resize(static_cast<int>(out - begin));
}
