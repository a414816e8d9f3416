#include "line/frame_text.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "line/counted.h"
#include "line/crc16.h"
#include "line/frame_bytes.h"

namespace dov417 {

namespace {

struct Named {
    int code;
    const char* name;
};
const Named functions[] = {
    {readCoils, "read coils"},         {readInputs, "read inputs"},
    {readRegisters, "read registers"}, {readInputRegisters, "read input registers"},
    {writeCoil, "write one coil"},     {writeRegister, "write one register"},
    {writeCoils, "write coils"},       {writeRegisters, "write registers"},
};
const Named exceptions[] = {
    {1, "illegal function"},
    {2, "illegal data address"},
    {3, "illegal data value"},
    {4, "server device failure"},
    {5, "acknowledge"},
    {6, "server device busy"},
    {8, "memory parity error"},
    {10, "gateway path unavailable"},
    {11, "gateway target device failed to respond"},
};

const int requestLength = 8; // but for multiple writes; also of the reply to any write
const int writeHead = 7;     // of a write of many: up to the byte count
const int readHead = 3;      // of a read's reply: up to the byte count
const int maxValuesShown = 16;

// This controller's areas hold no discrete inputs and no input registers.
bool isMapped(int function)
{
    return function != readInputs && function != readInputRegisters;
}

std::string station(const QByteArray& frame)
{
    const int number = byteAt(frame, 0);
    return number == 0 ? "broadcast: " : "station " + std::to_string(number) + ": ";
}

std::string hexByte(int value)
{
    static const char* digits = "0123456789ABCDEF";
    return std::string("0x") + digits[value / 16 % 16] + digits[value % 16];
}

std::string hexWord(int value)
{
    return hexByte(value / 256) + hexByte(value % 256).substr(2);
}

std::string nameOf(const Named* begin, const Named* end, int code, const char* otherwise)
{
    for (const Named* named = begin; named != end; ++named)
        if (named->code == code)
            return named->name;
    return otherwise + std::to_string(code);
}

// " (R_W:10)" or nothing.
std::string placed(const std::vector<Area>& areas, int function, int first, int count)
{
    const std::string text =
        isMapped(function) ? areaText(areas, isCoils(function), first, count) : std::string();
    return text.empty() ? text : " (" + text + ")";
}

// What the values of a reply or of a write are values of.
std::string target(const std::vector<Area>& areas, int function, int first, int count)
{
    std::string text =
        isMapped(function) ? areaText(areas, isCoils(function), first, count) : std::string();
    if (!text.empty())
        return text;
    const std::string unit = unitName(function);
    return count == 1
               ? unit + " " + std::to_string(first)
               : unit + "s " + std::to_string(first) + ".." + std::to_string(first + count - 1);
}

std::string shortened(const std::vector<std::string>& values)
{
    std::string text;
    int shown = 0;
    for (const std::string& value : values) {
        if (shown == maxValuesShown)
            return text + " and " + std::to_string(values.size() - std::size_t(shown)) + " more";
        text += (shown == 0 ? "" : " ") + value;
        ++shown;
    }
    return text;
}

// Coils in whole words are shown as words, as they are read for the word types.
std::string coilValues(const QByteArray& frame, int from, int coils)
{
    std::vector<std::string> values;
    if (coils % bitsPerWord == 0) {
        for (int word = 0; word < coils / bitsPerWord; ++word)
            values.push_back(
                hexWord(byteAt(frame, from + 2 * word) + byteAt(frame, from + 2 * word + 1) * 256));
    } else {
        for (int i = 0; i < coils; ++i)
            values.push_back((byteAt(frame, from + i / 8) >> (i % 8) & 1) != 0 ? "1" : "0");
    }
    return shortened(values);
}

std::string registerValues(const QByteArray& frame, int from, int registers)
{
    std::vector<std::string> values;
    values.reserve(static_cast<std::size_t>(std::max(0, registers)));
    for (int i = 0; i < registers; ++i)
        values.push_back(std::to_string(wordAt(frame, from + 2 * i)));
    return shortened(values);
}

std::string badCrc(const QByteArray& frame)
{
    return hasGoodCrc(frame) ? std::string() : ", bad CRC";
}

std::string fragment(const QByteArray& frame)
{
    return counted(frame.size(), "byte") + ", too short for a frame";
}

std::string lengthFault(const QByteArray& frame, int due)
{
    return frame.size() == due ? std::string()
                               : ", " + counted(frame.size(), "byte") + " where " +
                                     std::to_string(due) + " are due";
}

std::string singleValue(int function, int value)
{
    if (function == writeRegister)
        return std::to_string(value) + " (" + hexWord(value) + ")";
    return value == 0xFF00 ? "on" : value == 0 ? "off" : hexWord(value);
}

std::string singleWrite(const QByteArray& frame, const std::vector<Area>& areas)
{
    const int function = byteAt(frame, functionIndex);
    const int first = wordAt(frame, 2);
    const std::string place =
        function == writeCoil ? areaText(areas, true, first, 1) : areaText(areas, false, first, 1);
    return "write " + std::string(function == writeCoil ? "coil " : "register ") +
           std::to_string(first) + (place.empty() ? "" : " (" + place + ")") + " = " +
           singleValue(function, wordAt(frame, 4));
}

std::string writeOfMany(const QByteArray& frame, const std::vector<Area>& areas)
{
    const int function = byteAt(frame, functionIndex);
    const int first = wordAt(frame, 2);
    const int count = wordAt(frame, 4);
    const bool coils = function == writeCoils;
    std::string text = "write " + counted(count, coils ? "coil" : "register") + " from " +
                       std::to_string(first) + placed(areas, function, first, count);
    const int bytes = bytesFor(function, count);
    if (frame.size() >= writeHead + bytes + crcLength)
        text += " = " + (coils ? coilValues(frame, writeHead, count)
                               : registerValues(frame, writeHead, count));
    return text + lengthFault(frame, writeHead + bytes + crcLength);
}

// What the request asked for, to compare the reply with.
struct Asked {
    int station = -1; // -1: nothing is known
    int function = -1;
    int first = -1;
    int count = 0;
};

Asked askedBy(const QByteArray& request)
{
    Asked asked;
    // A request that did not arrive whole is answered by nobody.
    if (request.size() < requestLength || !hasGoodCrc(request))
        return asked;
    asked.station = byteAt(request, 0);
    asked.function = byteAt(request, functionIndex);
    asked.first = wordAt(request, 2);
    asked.count =
        asked.function == writeCoil || asked.function == writeRegister ? 1 : wordAt(request, 4);
    return asked;
}

// The values of a read's reply.
std::string readValues(const QByteArray& reply, const Asked& asked, const std::vector<Area>& areas)
{
    const int function = byteAt(reply, functionIndex);
    const int bytes = static_cast<int>(reply.size()) - readHead - crcLength;
    const bool known = asked.station == byteAt(reply, 0) && asked.function == function &&
                       bytesFor(function, asked.count) == bytes;
    const int units = known ? asked.count : holdsBits(function) ? bytes * 8 : bytes / 2;
    const std::string values = holdsBits(function) ? coilValues(reply, readHead, units)
                                                   : registerValues(reply, readHead, units);
    if (known)
        return target(areas, function, asked.first, asked.count) + " = " + values;
    return functionName(function) + ", " + counted(bytes, "byte") + " of values: " + values;
}

// From the byte count; where that byte cannot say it (128 registers are 256 bytes), from the
// request.
int dueLength(const QByteArray& reply, const Asked& asked)
{
    const int function = byteAt(reply, functionIndex);
    if (!isReadFunction(function))
        return requestLength;
    if (asked.function == function)
        return readHead + bytesFor(function, asked.count) + crcLength;
    return readHead + byteAt(reply, 2) + crcLength;
}

} // namespace

std::string hexText(const QByteArray& bytes)
{
    return bytes.toHex(' ').toUpper().toStdString();
}

std::optional<QByteArray> parseHexText(const std::string& text)
{
    QByteArray bytes;
    std::size_t at = 0;
    while (at < text.size()) {
        if (text[at] == ' ') {
            ++at;
            continue;
        }
        const auto digit = [&text](std::size_t i) {
            const char* digits = "0123456789ABCDEF";
            const char* found = i < text.size() && text[i] != 0
                                    ? std::strchr(digits, text[i] >= 'a' ? text[i] - 32 : text[i])
                                    : nullptr;
            return found ? static_cast<int>(found - digits) : -1;
        };
        const int high = digit(at);
        const int low = digit(at + 1);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes.append(static_cast<char>(high * 16 + low));
        at += 2;
    }
    return bytes;
}

std::string exceptionName(int code)
{
    return nameOf(std::begin(exceptions), std::end(exceptions), code, "code ");
}

std::string functionName(int function)
{
    return nameOf(std::begin(functions), std::end(functions), function, "function ");
}

std::string unitName(int function)
{
    return function == readInputs           ? "input"
           : function == readInputRegisters ? "input register"
           : holdsBits(function)            ? "coil"
                                            : "register";
}

namespace {

// Diagnostics, sub-function 0: request and reply are the same.
bool isNumberedEcho(const QByteArray& frame)
{
    return frame.size() == requestLength && byteAt(frame, functionIndex) == diagnostics &&
           wordAt(frame, 2) == 0;
}

std::string echoText(const QByteArray& frame)
{
    return "check (diagnostics echo), number " + std::to_string(wordAt(frame, 4));
}

} // namespace

std::string requestText(const QByteArray& frame, const std::vector<Area>& areas)
{
    if (frame.size() < minFrameLength)
        return fragment(frame);
    const int function = byteAt(frame, functionIndex);
    const std::string who = station(frame);
    const bool ofMany = function == writeCoils || function == writeRegisters;
    if (isNumberedEcho(frame))
        return who + echoText(frame) + badCrc(frame);
    if (functionName(function).compare(0, 9, "function ") == 0)
        return who + functionName(function) + badCrc(frame);
    if (frame.size() < (ofMany ? writeHead + crcLength : requestLength))
        return who + functionName(function) + ", cut short" + badCrc(frame);
    if (ofMany)
        return who + writeOfMany(frame, areas) + badCrc(frame);
    if (function == writeCoil || function == writeRegister)
        return who + singleWrite(frame, areas) + lengthFault(frame, requestLength) + badCrc(frame);
    const int first = wordAt(frame, 2);
    const int count = wordAt(frame, 4);
    return who + "read " + counted(count, unitName(function)) + " from " + std::to_string(first) +
           placed(areas, function, first, count) + lengthFault(frame, requestLength) +
           badCrc(frame);
}

std::string replyText(const QByteArray& reply, const QByteArray& request,
                      const std::vector<Area>& areas)
{
    if (reply.size() < minFrameLength)
        return fragment(reply);
    const Asked asked = askedBy(request);
    std::string faults;
    if (asked.station >= 0 && byteAt(reply, 0) != asked.station)
        faults += ", but station " + std::to_string(asked.station) + " was asked";
    const int function = byteAt(reply, functionIndex);
    const std::string who = station(reply);
    if ((function & exceptionFlag) != 0) {
        if (asked.function >= 0 && (function ^ exceptionFlag) != asked.function)
            faults += ", but the request was to " + functionName(asked.function);
        const int code = byteAt(reply, 2);
        return who + "exception " + std::to_string(code) + ", " + exceptionName(code) + ", to " +
               functionName(function ^ exceptionFlag) + faults +
               lengthFault(reply, exceptionLength) + badCrc(reply);
    }
    if (isNumberedEcho(reply))
        return who + echoText(reply) + faults + badCrc(reply);
    if (functionName(function).compare(0, 9, "function ") == 0)
        return who + functionName(function) + faults + badCrc(reply);
    if (asked.function >= 0 && function != asked.function)
        faults += ", but the request was to " + functionName(asked.function);
    const int due = dueLength(reply, asked);
    const std::string broken = lengthFault(reply, due) + badCrc(reply);
    if (!broken.empty())
        return who + "reply to " + functionName(function) + faults + broken;
    if (isReadFunction(function))
        return who + readValues(reply, asked, areas) + faults;

    const int first = wordAt(reply, 2);
    const bool single = function == writeCoil || function == writeRegister;
    const int count = single ? 1 : wordAt(reply, 4);
    if (asked.function == function && (first != asked.first || count != asked.count))
        faults += ", but that was not asked for";
    std::string text = "wrote " + target(areas, function, first, count);
    if (single)
        text += " = " + singleValue(function, wordAt(reply, 4));
    return who + text + faults;
}

} // namespace dov417
