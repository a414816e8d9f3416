#include "simulator/line_event.h"

namespace dov417::simulator {

namespace {

QString faultNames(const std::vector<FaultKind>& faults)
{
    QString names;
    for (FaultKind kind : faults)
        names += QLatin1Char(names.isEmpty() ? '[' : ' ') + faultName(kind);
    return names.isEmpty() ? names : names + QLatin1Char(']');
}

} // namespace

QString replyText(const Answer& answer, const std::vector<FaultKind>& faults)
{
    QString text = QStringLiteral("reply");
    if (answer.exception != 0)
        text += QStringLiteral(": exception %1, %2")
                    .arg(answer.exception)
                    .arg(QLatin1String(exceptionName(answer.exception)));
    const QString names = faultNames(faults);
    return names.isEmpty() ? text : text + QLatin1Char(' ') + names;
}

QString logText(const LineEvent& event)
{
    QString arrow;
    switch (event.kind) {
    case LineEvent::received:
        arrow = QStringLiteral("<-");
        break;
    case LineEvent::sent:
        arrow = QStringLiteral("->");
        break;
    case LineEvent::withheld:
        arrow = QStringLiteral("-x");
        break;
    case LineEvent::garbage:
        arrow = QStringLiteral("<?");
        break;
    case LineEvent::notice:
        arrow = QStringLiteral("--");
        break;
    }
    const QString time = QString::number(static_cast<double>(event.timeNs) / 1e9, 'f', 6);
    const QString hex = QString::fromLatin1(event.bytes.toHex(' ').toUpper());
    return QStringLiteral("%1 %2 %3%4%5")
        .arg(time, 12)
        .arg(arrow, hex, QLatin1String(hex.isEmpty() ? "" : "  "), event.meaning);
}

} // namespace dov417::simulator
