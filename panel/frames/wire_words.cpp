#include "panel/frames/wire_words.h"

#include <QCoreApplication>
#include <QStringList>

#include "line/frame_bytes.h"
#include "line/frame_text.h"

namespace dov417 {

namespace {

struct WireTexts {
    Q_DECLARE_TR_FUNCTIONS(WireTexts)
};

double millisecondsOf(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

QString percentText(double part)
{
    return QString::number(100 * part, 'f', 1);
}

bool holdsOneValue(int function)
{
    return function == writeCoil || function == writeRegister;
}

QString outcomeText(const WireFrame& frame, const std::vector<Area>& areas)
{
    const Transmission& told = frame.told;
    if (!frame.hasEnded)
        return WireTexts::tr("The reply is awaited.");
    const Reception& reception = told.reception;
    const std::string failure =
        told.reason.empty() ? reasonText(reception, told.replyLength) : told.reason;
    switch (reception.result) {
    case LineResult::reply:
    case LineResult::exception: {
        const QString reply = QString::fromStdString(replyText(reception.bytes, told.sent, areas));
        return told.why == Reason::none ? reply : QStringLiteral("\u2717 ") + reply;
    }
    case LineResult::broadcast:
        return QString::fromStdString(reasonText(reception, told.replyLength));
    case LineResult::timeout:
    case LineResult::heldBack:
        return QStringLiteral("\u2717 ") + QString::fromStdString(failure);
    }
    return QString();
}

} // namespace

QString wordOf(SpanKind kind)
{
    switch (kind) {
    case SpanKind::request:
        return WireTexts::tr("request");
    case SpanKind::responseTime:
        return WireTexts::tr("the controller's time");
    case SpanKind::reply:
        return WireTexts::tr("reply");
    case SpanKind::timeOut:
        return WireTexts::tr("waited in vain");
    case SpanKind::stray:
        return WireTexts::tr("bytes that were no reply");
    case SpanKind::interFrame:
        return WireTexts::tr("inter-frame delay");
    case SpanKind::idle:
        return WireTexts::tr("idle");
    case SpanKind::noLine:
        return WireTexts::tr("the port was away");
    case SpanKind::missing:
        return WireTexts::tr("not recorded");
    }
    return QString();
}

QString wordOf(WireUse use)
{
    switch (use) {
    case WireUse::requests:
        return WireTexts::tr("requests");
    case WireUse::responseTime:
        return wordOf(SpanKind::responseTime);
    case WireUse::replies:
        return WireTexts::tr("replies");
    case WireUse::interFrame:
        return wordOf(SpanKind::interFrame);
    case WireUse::idle:
        return wordOf(SpanKind::idle);
    case WireUse::retries:
        return WireTexts::tr("\u21bb frames sent again");
    case WireUse::timeOuts:
        return WireTexts::tr("\u2717 waited in vain");
    case WireUse::markers:
        return WireTexts::tr("? checks for late replies");
    case WireUse::strays:
        return wordOf(SpanKind::stray);
    case WireUse::noLine:
        return wordOf(SpanKind::noLine);
    case WireUse::missing:
        return wordOf(SpanKind::missing);
    }
    return QString();
}

QString explanationOf(WireUse use)
{
    switch (use) {
    case WireUse::requests:
        return WireTexts::tr("Bytes that are sent: a few for each read, whatever its length");
    case WireUse::responseTime:
        return WireTexts::tr("From the last byte of a request to the first byte of its reply");
    case WireUse::replies:
        return WireTexts::tr("Bytes of the replies: two for each register that is read");
    case WireUse::interFrame:
        return WireTexts::tr(
            "3.5 characters, or 1.75 ms, without a byte: so one frame is told from "
            "the next");
    case WireUse::idle:
        return WireTexts::tr("Nobody sends: nothing is due, or this computer is busy");
    case WireUse::retries:
        return WireTexts::tr("Request, controller's time and reply of frames that are sent again "
                             "after a bad or missing reply");
    case WireUse::timeOuts:
        return WireTexts::tr("A reply was awaited, and none came");
    case WireUse::markers:
        return WireTexts::tr("Requests of the driver's own that tell whether a late reply is still "
                             "to come");
    case WireUse::strays:
        return WireTexts::tr("Noise, echoes, late replies, another station's answers");
    case WireUse::noLine:
        return WireTexts::tr("The port was not there");
    case WireUse::missing:
        return WireTexts::tr(
            "What passed then is not here: this computer was too busy, or one recording "
            "ends and another begins");
    }
    return QString();
}

QString wireTimeText(Clock::duration duration, int decimals)
{
    const double ms = millisecondsOf(duration);
    return ms < 1000 ? WireTexts::tr("%1 ms").arg(ms, 0, 'f', decimals)
                     : WireTexts::tr("%1 s").arg(ms / 1000, 0, 'f', decimals);
}

QString shortFrameText(const Transmission& frame, const std::vector<Area>& areas)
{
    if (frame.isMarker)
        return WireTexts::tr("? check");
    if (frame.sent.size() < quantityIndex + 2)
        return QString();
    const int function = functionOf(frame.sent);
    const int count = holdsOneValue(function) ? 1 : wordAt(frame.sent, quantityIndex);
    const int first = wordAt(frame.sent, addressIndex);
    const std::string words = areaText(areas, isCoils(function), first, count);
    const QString text = words.empty() ? QString::number(first) : QString::fromStdString(words);
    return (frame.repeats ? QStringLiteral("\u21bb ") : QString()) +
           (frame.isRead() ? text : WireTexts::tr("write %1").arg(text));
}

QString frameText(const WireFrame& frame, const std::vector<Area>& areas)
{
    const Transmission& told = frame.told;
    QString request = QString::fromStdString(requestText(told.sent, areas));
    if (told.isMarker)
        request += WireTexts::tr(" \u2013 a check of the driver's own for late replies");
    else if (told.repeats)
        request += WireTexts::tr(" \u2013 sent again");
    QStringList times;
    for (int i = 0; i < spanKinds; ++i) {
        const SpanKind kind = static_cast<SpanKind>(i);
        if (frame.tookFor(kind).count() > 0)
            times.append(wordOf(kind) + QLatin1Char(' ') + wireTimeText(frame.tookFor(kind)));
    }
    if (frame.hasEnded)
        times.append(WireTexts::tr("together %1").arg(wireTimeText(frame.end - frame.begin)));
    return request + QLatin1Char('\n') + outcomeText(frame, areas) + QLatin1Char('\n') +
           times.join(QStringLiteral(" \u00b7 "));
}

QString sharesText(const WireShares& shares)
{
    if (shares.whole.count() == 0)
        return WireTexts::tr("Nothing has passed in what is shown.");
    const double silence = shares.part(shares.of(WireUse::interFrame) + shares.of(WireUse::idle));
    const QString bytes =
        WireTexts::tr("In %1 bytes use %2\u00a0% of the line; for %3\u00a0% the controllers were "
                      "waited for, for %4\u00a0% it was silent.")
            .arg(wireTimeText(shares.whole), percentText(shares.part(shares.bytes)),
                 percentText(shares.part(shares.of(WireUse::responseTime))), percentText(silence));
    return shares.cycles == 0
               ? bytes
               : bytes + QLatin1Char(' ') +
                     WireTexts::tr("A cycle takes %1.").arg(wireTimeText(shares.cycle));
}

} // namespace dov417
