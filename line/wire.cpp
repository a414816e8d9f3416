#include "line/wire.h"

#include <QString>
#include <QStringList>
#include <cmath>

#include "line/failure.h"

namespace dov417 {

namespace {

const double silentCharacters = 3.5;
// Above this rate the serial-line guide fixes the silence, as timers of controllers are no finer.
const int fastestCountedBaud = 19200;
const std::chrono::microseconds fixedSilence(1750);

struct ParityName {
    const char* name;
    char letter;
};
const ParityName parities[] = {{"NONE", 'N'}, {"EVEN", 'E'}, {"ODD", 'O'}};

[[noreturn]] void refuse(const std::string& text, const std::string& why)
{
    throw UsageFailure("line '" + text + "': " + why +
                       "; written BAUD,DATA BITS,PARITY,STOP BITS, as in 38400,8,EVEN,1");
}

} // namespace

int WireFormat::bitsPerCharacter() const
{
    return 1 + dataBits + (parity == 'N' ? 0 : 1) + stopBits;
}

std::chrono::microseconds WireFormat::characters(double count) const
{
    return std::chrono::microseconds(std::llround(count * bitsPerCharacter() * 1e6 / baudRate));
}

std::chrono::microseconds WireFormat::silence() const
{
    return baudRate > fastestCountedBaud ? fixedSilence : characters(silentCharacters);
}

std::chrono::microseconds WireFormat::transaction(int sendLength, int replyLength,
                                                  std::chrono::microseconds turnaround) const
{
    return characters(sendLength + replyLength) + silence() * (replyLength > 0 ? 2 : 1) +
           turnaround;
}

WireFormat parseWireFormat(const std::string& text)
{
    const QStringList parts = QString::fromStdString(text).split(QLatin1Char(','));
    if (parts.size() != 4)
        refuse(text, "four parts are needed");
    WireFormat format;
    bool number = false;
    format.baudRate = parts.at(0).trimmed().toInt(&number);
    if (!number || format.baudRate < 50 || format.baudRate > 4000000)
        refuse(text, "the baud rate must be 50 to 4000000");
    format.dataBits = parts.at(1).trimmed().toInt(&number);
    if (!number || format.dataBits != 8)
        refuse(text, "Modbus RTU needs 8 data bits");
    const QString parity = parts.at(2).trimmed().toUpper();
    format.parity = 0;
    for (const ParityName& known : parities)
        if (parity == QLatin1String(known.name) || parity == QLatin1Char(known.letter))
            format.parity = known.letter;
    if (format.parity == 0)
        refuse(text, "the parity must be NONE, EVEN or ODD");
    format.stopBits = parts.at(3).trimmed().toInt(&number);
    if (!number || format.stopBits < 1 || format.stopBits > 2)
        refuse(text, "stop bits must be 1 or 2");
    return format;
}

std::string toText(const WireFormat& format)
{
    std::string parity;
    for (const ParityName& known : parities)
        if (known.letter == format.parity)
            parity = known.name;
    return std::to_string(format.baudRate) + "," + std::to_string(format.dataBits) + "," + parity +
           "," + std::to_string(format.stopBits);
}

std::string defaultLine(const Library& library)
{
    QString parameter;
    library.intf_getDriverParameter(parameter);
    // Item 0 is a type; baud rate, data bits, parity and stop bits follow.
    return QStringList(parameter.split(QLatin1Char(',')).mid(1, 4))
        .join(QLatin1Char(','))
        .toStdString();
}

} // namespace dov417
