#include "line/line_timing.h"

#include <QStringList>
#include <algorithm>

namespace dov417::simulator {

namespace {

constexpr std::int64_t nanosecondsPerSecond = 1000000000;
constexpr int fastestBaudOfCountedSilence = 19200;
constexpr std::int64_t fixedSilence = 1750000;

struct ParityName {
    Parity parity;
    const char* name;
};
constexpr ParityName parityNames[] = {
    {Parity::none, "NONE"},
    {Parity::even, "EVEN"},
    {Parity::odd, "ODD"},
};

std::optional<Parity> parityOf(const QString& text)
{
    const QString upper = text.toUpper();
    for (const ParityName& entry : parityNames) {
        const QString name = QLatin1String(entry.name);
        if (upper == name || upper == name.left(1))
            return entry.parity;
    }
    return std::nullopt;
}

std::optional<LineSettings> refuse(QString* error, const QString& text, const char* reason)
{
    if (error)
        *error = QStringLiteral("\"%1\": %2").arg(text, QLatin1String(reason));
    return std::nullopt;
}

std::int64_t roundedUp(std::int64_t dividend, std::int64_t divisor)
{
    return (dividend + divisor - 1) / divisor;
}

} // namespace

std::optional<LineSettings> parseLineSettings(const QString& text, QString* error)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != 4)
        return refuse(error, text, "a line is written as in 38400,8,EVEN,1");
    LineSettings line;
    bool isNumber = false;
    line.baudRate = parts[0].trimmed().toInt(&isNumber);
    if (!isNumber || line.baudRate < 50 || line.baudRate > 4000000)
        return refuse(error, text, "the baud rate must be 50 to 4000000");
    line.dataBits = parts[1].trimmed().toInt(&isNumber);
    if (!isNumber || (line.dataBits != 7 && line.dataBits != 8))
        return refuse(error, text, "data bits must be 7 or 8");
    const std::optional<Parity> parity = parityOf(parts[2].trimmed());
    if (!parity)
        return refuse(error, text, "parity must be NONE, EVEN or ODD");
    line.parity = *parity;
    line.stopBits = parts[3].trimmed().toInt(&isNumber);
    if (!isNumber || (line.stopBits != 1 && line.stopBits != 2))
        return refuse(error, text, "stop bits must be 1 or 2");
    return line;
}

QString lineSettingsText(const LineSettings& line)
{
    QString parity;
    for (const ParityName& entry : parityNames) {
        if (entry.parity == line.parity)
            parity = QLatin1String(entry.name);
    }
    return QStringLiteral("%1,%2,%3,%4")
        .arg(line.baudRate)
        .arg(line.dataBits)
        .arg(parity)
        .arg(line.stopBits);
}

int bitsPerCharacter(const LineSettings& line)
{
    return 1 + line.dataBits + (line.parity == Parity::none ? 0 : 1) + line.stopBits;
}

std::int64_t characterTime(const LineSettings& line, std::int64_t characters)
{
    return roundedUp(characters * bitsPerCharacter(line) * nanosecondsPerSecond, line.baudRate);
}

std::int64_t frameSilence(const LineSettings& line)
{
    if (line.baudRate > fastestBaudOfCountedSilence)
        return fixedSilence;
    return roundedUp(7 * nanosecondsPerSecond * bitsPerCharacter(line),
                     std::int64_t{2} * line.baudRate);
}

WireClock::WireClock(const LineSettings& line) : m_line(line) {}

std::int64_t WireClock::transmit(std::int64_t now, std::int64_t characters)
{
    m_runStart = std::max(now, freeAt());
    m_runLength = characters;
    return freeAt();
}

std::int64_t WireClock::freeAt() const
{
    return m_runStart + characterTime(m_line, m_runLength);
}

std::int64_t WireClock::passedAt(std::int64_t index) const
{
    return m_runStart + characterTime(m_line, index + 1);
}

} // namespace dov417::simulator
