#include "text/raw_requests.h"

#include <algorithm>
#include <cctype>

#include "line/crc16.h"
#include "line/failure.h"
#include "line/frame_bytes.h"
#include "line/frame_text.h"

namespace dov417 {

namespace {

constexpr int maxFunction = 127; // above are exceptions
constexpr int maxByte = 255;
constexpr int maxWord = 65535;
constexpr int maxFrame = 256;
constexpr int coilOn = 0xFF00;
constexpr std::size_t stationAndFunction = 2;

enum class Shape {
    nothing,
    words,     // each as it is
    oneCoil,   // FIRST, on or off
    coils,     // FIRST, a bit each
    registers, // so many words, then words that are counted
    bytes
};

struct Form {
    int function;
    Shape shape;
    std::size_t min; // data
    std::size_t max;
    std::size_t head;  // words before those that are counted
    const char* usage; // of the data
};
constexpr std::size_t many = 1000;
constexpr Form forms[] = {
    {1, Shape::words, 2, 2, 0, "FIRST COUNT"},
    {2, Shape::words, 2, 2, 0, "FIRST COUNT"},
    {3, Shape::words, 2, 2, 0, "FIRST COUNT"},
    {4, Shape::words, 2, 2, 0, "FIRST COUNT"},
    {5, Shape::oneCoil, 2, 2, 0, "ADDRESS on|off"},
    {6, Shape::words, 2, 2, 0, "ADDRESS VALUE"},
    {7, Shape::nothing, 0, 0, 0, "no data"},
    {8, Shape::words, 2, many, 0, "SUBFUNCTION VALUE..."},
    {11, Shape::nothing, 0, 0, 0, "no data"},
    {15, Shape::coils, 2, many * 2, 1, "FIRST BIT..., each 0 or 1"},
    {16, Shape::registers, 2, many, 1, "FIRST VALUE..."},
    {17, Shape::nothing, 0, 0, 0, "no data"},
    {22, Shape::words, 3, 3, 0, "ADDRESS AND-MASK OR-MASK"},
    {23, Shape::registers, 4, many, 3, "READ-FIRST READ-COUNT WRITE-FIRST VALUE..."},
};
constexpr Form otherForm = {0, Shape::bytes, 0, many, 0, "BYTE..."};

int number(const std::string& text, int max, const std::string& what)
{
    const bool isHex = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    const std::string digits = isHex ? text.substr(2) : text;
    const auto isDigit = [isHex](unsigned char c) {
        return isHex ? std::isxdigit(c) != 0 : std::isdigit(c) != 0;
    };
    constexpr std::size_t maxDigits = 8;
    if (digits.empty() || digits.size() > maxDigits ||
        !std::all_of(digits.begin(), digits.end(), isDigit))
        throw UsageFailure(what + " '" + text + "': a whole number is needed, as 10 or 0x0A");
    const long value = std::stol(digits, nullptr, isHex ? 16 : 10);
    if (value > max)
        throw UsageFailure(what + " '" + text + "': out of range, 0 to " + std::to_string(max));
    return static_cast<int>(value);
}

int coilValue(const std::string& text)
{
    if (text == "on" || text == "1")
        return coilOn;
    if (text == "off" || text == "0")
        return 0;
    const int value = number(text, maxWord, "value");
    if (value != coilOn)
        throw UsageFailure("value '" + text + "': a coil is on or off");
    return value;
}

void addByte(QByteArray& frame, std::size_t value)
{
    frame.append(static_cast<char>(value));
}

void addWord(QByteArray& frame, std::size_t value)
{
    addByte(frame, value / 256);
    addByte(frame, value % 256);
}

void addCoils(QByteArray& frame, const std::vector<std::string>& data)
{
    const std::size_t bits = data.size() - 1;
    const std::size_t bytes = (bits + 7) / 8;
    addWord(frame, bits);
    addByte(frame, bytes);
    for (std::size_t byte = 0; byte < bytes; ++byte) {
        unsigned value = 0;
        for (std::size_t bit = 0; bit < 8 && byte * 8 + bit < bits; ++bit)
            value |= static_cast<unsigned>(number(data.at(1 + byte * 8 + bit), 1, "bit")) << bit;
        addByte(frame, value);
    }
}

QByteArray completed(const QByteArray& frame)
{
    QByteArray complete = withCrc(frame);
    if (complete.size() > maxFrame)
        throw UsageFailure("the frame has " + std::to_string(complete.size()) +
                           " bytes; Modbus RTU ends at " + std::to_string(maxFrame));
    return complete;
}

} // namespace

QByteArray parseRequest(const std::vector<std::string>& words)
{
    if (words.size() < stationAndFunction)
        throw UsageFailure("a request is STATION FUNCTION DATA..., as in 1 4 0 10");
    const int station = number(words.at(0), maxStation, "station");
    const int function = number(words.at(1), maxFunction, "function");
    if (function == 0)
        throw UsageFailure("function '0': out of range, 1 to 127");
    const std::vector<std::string> data(words.begin() + stationAndFunction, words.end());
    const auto* const found =
        std::find_if(std::begin(forms), std::end(forms),
                     [&](const Form& form) { return form.function == function; });
    const Form& form = found == std::end(forms) ? otherForm : *found;
    if (data.size() < form.min || data.size() > form.max)
        throw UsageFailure("function " + std::to_string(function) + " takes " + form.usage);
    QByteArray frame;
    addByte(frame, static_cast<std::size_t>(station));
    addByte(frame, static_cast<std::size_t>(function));
    const auto word = [&data](std::size_t index) {
        return static_cast<std::size_t>(number(data.at(index), maxWord, "number"));
    };
    switch (form.shape) {
    case Shape::nothing:
        break;
    case Shape::words:
        for (std::size_t i = 0; i < data.size(); ++i)
            addWord(frame, word(i));
        break;
    case Shape::oneCoil:
        addWord(frame, word(0));
        addWord(frame, static_cast<std::size_t>(coilValue(data.at(1))));
        break;
    case Shape::coils:
        addWord(frame, word(0));
        addCoils(frame, data);
        break;
    case Shape::registers:
        for (std::size_t i = 0; i < form.head; ++i)
            addWord(frame, word(i));
        addWord(frame, data.size() - form.head);
        addByte(frame, 2 * (data.size() - form.head));
        for (std::size_t i = form.head; i < data.size(); ++i)
            addWord(frame, word(i));
        break;
    case Shape::bytes:
        for (const std::string& each : data)
            addByte(frame, static_cast<std::size_t>(number(each, maxByte, "byte")));
        break;
    }
    return completed(frame);
}

QByteArray parseRawRequest(const std::string& text)
{
    const auto bytes = parseHexText(text);
    if (!bytes || bytes->size() < static_cast<int>(stationAndFunction))
        throw UsageFailure("'" + text +
                           "': bytes in hex are needed, station and function at least, as in "
                           "'01 2B 0E 01 00'; the CRC is appended");
    if (static_cast<unsigned char>(bytes->at(0)) > maxStation)
        throw UsageFailure("station '" + hexText(bytes->left(1)) + "': out of range, 00 to F7");
    const auto function = static_cast<unsigned char>(bytes->at(1));
    if (function == 0 || function > maxFunction)
        throw UsageFailure("function '" + hexText(bytes->mid(1, 1)) + "': out of range, 01 to 7F");
    // A frame pasted from a log, likely: with a second CRC appended it would be another frame than
    // the one that is meant.
    if (hasGoodCrc(*bytes))
        throw UsageFailure("'" + text +
                           "': these bytes end with their CRC; leave it out, as it is appended");
    return completed(*bytes);
}

} // namespace dov417
