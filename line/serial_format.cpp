#include "line/serial_format.h"

#include <QString>
#include <QStringList>

#include "line/clock.h"
#include "line/failure.h"

namespace dov417 {

namespace {

using std::chrono::nanoseconds;

constexpr std::int64_t halfCharactersOfDelay = 7;
// Above this rate the serial-line guide fixes the delay, as timers of controllers are no finer.
constexpr int maxBaudOfCountedDelay = 19200;
constexpr nanoseconds fixedDelay(1750000);

struct ParityName {
    Parity parity;
    const char* name;
};
constexpr ParityName parityNames[] = {
    {Parity::none, "NONE"},
    {Parity::even, "EVEN"},
    {Parity::odd, "ODD"},
};

[[noreturn]] void refuse(const std::string& text, const std::string& why)
{
    throw UsageFailure("line '" + text + "': " + why +
                       "; written BAUD,DATA BITS,PARITY,STOP BITS, as in 38400,8,EVEN,1");
}

nanoseconds roundedUp(std::int64_t dividend, std::int64_t divisor)
{
    return nanoseconds((dividend + divisor - 1) / divisor);
}

SerialFormat parsed(const std::string& text, int minDataBits, const std::string& dataBitsRule)
{
    const QStringList parts = QString::fromStdString(text).split(QLatin1Char(','));
    if (parts.size() != 4)
        refuse(text, "four parts are needed");
    SerialFormat format;
    bool isNumber = false;
    format.baudRate = parts.at(0).trimmed().toInt(&isNumber);
    if (!isNumber || format.baudRate < 50 || format.baudRate > 4000000)
        refuse(text, "the baud rate must be 50 to 4000000");
    format.dataBits = parts.at(1).trimmed().toInt(&isNumber);
    if (!isNumber || format.dataBits < minDataBits || format.dataBits > 8)
        refuse(text, dataBitsRule);
    const QString parity = parts.at(2).trimmed().toUpper();
    bool isParity = false;
    for (const ParityName& known : parityNames)
        if (parity == QLatin1String(known.name) ||
            parity == QLatin1Char(static_cast<char>(known.parity))) {
            format.parity = known.parity;
            isParity = true;
        }
    if (!isParity)
        refuse(text, "the parity must be NONE, EVEN or ODD");
    format.stopBits = parts.at(3).trimmed().toInt(&isNumber);
    if (!isNumber || format.stopBits < 1 || format.stopBits > 2)
        refuse(text, "stop bits must be 1 or 2");
    return format;
}

} // namespace

int SerialFormat::bitsPerCharacter() const
{
    return 1 + dataBits + (parity == Parity::none ? 0 : 1) + stopBits;
}

nanoseconds SerialFormat::characters(std::int64_t count) const
{
    return roundedUp(count * bitsPerCharacter() * nanosecondsPerSecond, baudRate);
}

nanoseconds SerialFormat::interFrameDelay() const
{
    if (baudRate > maxBaudOfCountedDelay)
        return fixedDelay;
    return roundedUp(halfCharactersOfDelay * bitsPerCharacter() * nanosecondsPerSecond,
                     std::int64_t{2} * baudRate);
}

nanoseconds SerialFormat::transaction(int sendLength, int replyLength,
                                      nanoseconds responseTime) const
{
    return characters(std::int64_t{sendLength} + replyLength) +
           interFrameDelay() * (replyLength > 0 ? 2 : 1) + responseTime;
}

SerialFormat parseRtuFormat(const std::string& text)
{
    return parsed(text, 8, "Modbus RTU needs 8 data bits");
}

SerialFormat parseSerialFormat(const std::string& text)
{
    return parsed(text, 7, "data bits must be 7 or 8");
}

std::string toText(const SerialFormat& format)
{
    std::string parity;
    for (const ParityName& known : parityNames)
        if (known.parity == format.parity)
            parity = known.name;
    return std::to_string(format.baudRate) + "," + std::to_string(format.dataBits) + "," + parity +
           "," + std::to_string(format.stopBits);
}

} // namespace dov417
