#include "panel/desk/request_words.h"

#include <QRegularExpression>

#include "line/frame_bytes.h"

namespace dov417 {

namespace {

// The place of one unit, and of so many units further.
QString placeText(const QRegularExpressionMatch& request, int further)
{
    const int word = request.captured(QStringLiteral("word")).toInt();
    const QString bit = request.captured(QStringLiteral("bit"));
    if (bit.isEmpty())
        return QString::number(word + further);
    const int number = word * bitsPerWord + bit.toInt() + further;
    return QStringLiteral("%1.%2").arg(number / bitsPerWord).arg(number % bitsPerWord);
}

} // namespace

QString withAddresses(const std::string& text)
{
    static const QRegularExpression driversOwn(QStringLiteral(
        R"((read +|write +)?(?<station>\d+)#(?<type>[A-Za-z_]+)(?<word>\d+)(\.(?<bit>\d+))?\((?<count>\d+)\))"));
    const QString whole = QString::fromStdString(text);
    QString all;
    int from = 0;
    QRegularExpressionMatchIterator requests = driversOwn.globalMatch(whole);
    while (requests.hasNext()) {
        const QRegularExpressionMatch request = requests.next();
        const int count = request.captured(QStringLiteral("count")).toInt();
        const int begin = static_cast<int>(request.capturedStart());
        const QString verb = request.captured(1).trimmed();
        all += whole.mid(from, begin - from) + verb + QLatin1String(verb.isEmpty() ? "" : " ") +
               request.captured(QStringLiteral("station")) + QLatin1Char('/') +
               request.captured(QStringLiteral("type")) + QLatin1Char(':') + placeText(request, 0);
        if (count > 1)
            all += QStringLiteral("..") + placeText(request, count - 1);
        from = static_cast<int>(request.capturedEnd());
    }
    return all + whole.mid(from);
}

} // namespace dov417
