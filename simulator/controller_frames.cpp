// What a frame says by itself: length and its meaning in words.
#include "simulator/controller.h"

namespace dov417::simulator {

namespace {

int byteAt(const QByteArray& bytes, int index)
{
    return static_cast<unsigned char>(bytes.at(index));
}

QString runText(const char* unit, int first, int count)
{
    if (count <= 1)
        return QStringLiteral("%1 %2").arg(QLatin1String(unit)).arg(first);
    return QStringLiteral("%1s %2 to %3")
        .arg(QLatin1String(unit))
        .arg(first)
        .arg(first + count - 1);
}

QString requestText(const Answer& answer)
{
    switch (answer.function) {
    case 1:
        return QStringLiteral("reads ") + runText("coil", answer.address, answer.count);
    case 3:
        return QStringLiteral("reads ") + runText("register", answer.address, answer.count);
    case 5:
    case 15:
        return QStringLiteral("writes ") + runText("coil", answer.address, answer.count);
    case 6:
    case 16:
        return QStringLiteral("writes ") + runText("register", answer.address, answer.count);
    default:
        return QStringLiteral("function %1").arg(answer.function);
    }
}

} // namespace

int requestLength(const QByteArray& begin)
{
    if (begin.size() < 2)
        return -1;
    switch (byteAt(begin, 1)) {
    case 1:
    case 3:
    case 5:
    case 6:
        return 8; // station, function, address, quantity or value, CRC
    case 15:
    case 16:
        break;
    default:
        return 0;
    }
    if (begin.size() < 7)
        return -1;
    const int quantity = byteAt(begin, 4) * 256 + byteAt(begin, 5);
    const int bytes = byteAt(begin, 1) == 15 ? (quantity + 7) / 8 : 2 * quantity;
    // One byte counts them; 256 data bytes are counted as 0.
    return (bytes & 0xFF) == byteAt(begin, 6) ? 9 + bytes : 0;
}

const char* exceptionName(int code)
{
    switch (code) {
    case 1:
        return "illegal function";
    case 2:
        return "illegal data address";
    case 3:
        return "illegal data value";
    case 4:
        return "server device failure";
    case 6:
        return "server device busy";
    default:
        return "unknown exception";
    }
}

QString describe(const Answer& answer)
{
    if (answer.outcome == Outcome::badFrame)
        return QStringLiteral("no frame: too short or wrong CRC");
    QString text = answer.station == 0 ? QStringLiteral("broadcast ")
                                       : QStringLiteral("station %1 ").arg(answer.station);
    text += requestText(answer);
    if (answer.outcome == Outcome::otherStation)
        text += QStringLiteral(": not here");
    if (answer.exception != 0)
        text += QStringLiteral(": exception %1, %2")
                    .arg(answer.exception)
                    .arg(QLatin1String(exceptionName(answer.exception)));
    return text;
}

} // namespace dov417::simulator
