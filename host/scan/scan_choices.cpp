#include "scan/scan_choices.h"

#include <QString>
#include <QStringList>
#include <algorithm>

#include "line/failure.h"
#include "line/frame_bytes.h"

namespace dov417 {

namespace {

constexpr int minStation = 1;
// In the order in which one meets them.
constexpr int speeds[] = {9600, 19200, 38400, 115200, 57600, 4800, 2400, 1200};
constexpr Parity parities[] = {Parity::even, Parity::none, Parity::odd};

bool isSame(const SerialFormat& a, const SerialFormat& b)
{
    return a.baudRate == b.baudRate && a.parity == b.parity;
}

int station(const QString& text, const std::string& whole)
{
    bool isNumber = false;
    const int number = text.trimmed().toInt(&isNumber);
    if (!isNumber || number < minStation || number > maxStation)
        throw UsageFailure("stations '" + whole + "': '" + text.trimmed().toStdString() +
                           "' is no station from 1 to 247; written as in 1..247 or 1,2,10..20");
    return number;
}

} // namespace

std::vector<SerialFormat> commonLines(const SerialFormat& own)
{
    std::vector<SerialFormat> lines = {own};
    for (const int speed : speeds)
        for (const Parity parity : parities) {
            const SerialFormat line{speed, own.dataBits, parity, 1};
            if (!isSame(line, own))
                lines.push_back(line);
        }
    return lines;
}

std::vector<int> parseStations(const std::string& text)
{
    std::vector<int> stations;
    for (const QString& part : QString::fromStdString(text).split(QLatin1Char(','))) {
        const auto dash = part.indexOf(QLatin1Char('-'), 1); // as other programs write a range
        const QStringList ends = dash > 0 ? QStringList{part.left(dash), part.mid(dash + 1)}
                                          : part.split(QLatin1String(".."));
        if (ends.size() > 2)
            station(part, text);
        const int first = station(ends.first(), text);
        const int last = station(ends.last(), text);
        if (last < first)
            throw UsageFailure("stations '" + text + "': " + std::to_string(last) +
                               " comes before " + std::to_string(first));
        for (int number = first; number <= last; ++number)
            if (std::find(stations.begin(), stations.end(), number) == stations.end())
                stations.push_back(number);
    }
    return stations;
}

} // namespace dov417
