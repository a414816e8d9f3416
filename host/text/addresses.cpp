#include "text/addresses.h"

#include "line/frame_bytes.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <tuple>

namespace dov417 {

namespace {

const int wordsPerDoubleWord = 2;
// Data type and access codes of intf_checkAddr().
const int bitItem = -1;
const int unsignedDoubleWord = 3;
const int plainWord = 0;
const int readAccess = 0;
const int writeAccess = 2;

// The address value of `text`. `code` receives the library's check code for so many units from
// there on; the value is valid with checkValid and checkOutOfRange.
int unitValue(const Library& library, const RegisterType& type, const std::string& text, int length,
              int& code, Access access = Access::read)
{
    const int dataType = type.width == Width::bit          ? bitItem
                         : type.width == Width::doubleWord ? unsignedDoubleWord
                                                           : plainWord;
    int value = 0;
    code = library.intf_checkAddr(QString::fromStdString(type.name), QString::fromStdString(text),
                                  &value, dataType, length,
                                  access == Access::write ? writeAccess : readAccess);
    return value;
}

// A double word type ends one word early, because the last value's second word is still in the
// area: what must lie inside is the last word at which a value starts.
int checkedLength(const RegisterType& type, std::int64_t length)
{
    const std::int64_t units = type.width == Width::doubleWord ? length - 1 : length;
    const std::int64_t maximum = std::numeric_limits<int>::max();
    return static_cast<int>(units < maximum ? units : maximum);
}

struct Texts {
    int station = 1;
    std::string regName;
    std::string first;
    std::string last; // empty: one value
    std::size_t firstColumn = 0;
    std::size_t lastColumn = 0;
};

Texts splitAddress(const std::string& text)
{
    Texts parts;
    std::size_t from = 0;
    const std::size_t slash = text.find('/');
    if (slash != std::string::npos) {
        parts.station = parseStation(text.substr(0, slash));
        from = slash + 1;
    }
    const std::size_t colon = text.find(':', from);
    if (colon == std::string::npos)
        throw AddressFailure(text,
                             "an address is written [STATION/]REGISTER:FIRST[..LAST], as in "
                             "R_W:100 or 2/M_bit:1.0..1.15",
                             from);
    parts.regName = text.substr(from, colon - from);
    parts.firstColumn = colon + 1;
    const std::size_t dots = text.find("..", colon + 1);
    parts.first = text.substr(colon + 1, dots == std::string::npos ? dots : dots - colon - 1);
    if (dots != std::string::npos) {
        parts.lastColumn = dots + 2;
        parts.last = text.substr(dots + 2);
        if (parts.last.empty())
            throw AddressFailure(text, "the last address is missing after '..'", dots + 2);
    }
    if (parts.first.empty())
        throw AddressFailure(text, "the first address is missing after ':'", colon + 1);
    return parts;
}

// "1.5": all digits, and the very bit that the value stands for.
bool isExact(const std::string& text, int value)
{
    unsigned int word = 0;
    unsigned int bit = 0;
    const char* const end = text.data() + text.size();
    const auto [point, wordError] = std::from_chars(text.data(), end, word);
    if (wordError != std::errc() || point == end || *point != '.')
        return false;
    const auto [stop, bitError] = std::from_chars(point + 1, end, bit);
    return bitError == std::errc() && stop == end && bit < unsigned(bitsPerWord) &&
           std::uint64_t(word) * unsigned(bitsPerWord) + bit == static_cast<std::uint64_t>(value);
}

void requireExact(const Library& library, const RegisterType& type, const std::string& whole,
                  const std::string& text, int value, std::size_t column)
{
    if (type.width == Width::bit && !isExact(text, value))
        throw AddressFailure(whole,
                             "'" + text + "' would be taken for " +
                                 addressText(library, type.name, value) +
                                 "; a bit is written WORD.BIT, with BIT from 0 to 15",
                             column);
}

RegisterType knownType(const Library& library, const std::string& whole, const std::string& regName,
                       std::size_t column)
{
    const auto type = registerType(library, regName);
    if (!type)
        throw AddressFailure(whole, checkSentence(library, checkUnknown, regName, std::string()),
                             column, checkUnknown);
    return *type;
}

} // namespace

std::string inLowerCase(std::string text)
{
    for (char& letter : text)
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    return text;
}

bool operator==(const Address& a, const Address& b)
{
    return std::tie(a.station, a.regName, a.width, a.first, a.length) ==
           std::tie(b.station, b.regName, b.width, b.first, b.length);
}

int unitsOf(const Address& address)
{
    return address.width == Width::text ? address.length : unitsOf(address.width);
}

int valueCount(const Address& address)
{
    return address.length / unitsOf(address);
}

AddressFailure::AddressFailure(const std::string& text, const std::string& why_,
                               std::size_t column_, int code_)
    : UsageFailure(text + ": " + why_), why(why_), column(column_), code(code_)
{
}

int parseStation(const std::string& text)
{
    int station = -1;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, station);
    if (error != std::errc() || stop != end || station < 0 || station > maxStation)
        throw AddressFailure(text, "'" + text + "' is no station: 1 to 247, or 0 for a broadcast",
                             0);
    return station;
}

void requireAccess(const Library& library, const Address& address, Access access)
{
    const std::string text = toText(library, address);
    if (address.station == 0 && access == Access::read)
        throw AddressFailure(text, "station 0 is the broadcast: nobody answers, nothing is read",
                             0);
    if (address.station == 0 && address.width == Width::bit && areaOf(address.regName) == "R")
        throw AddressFailure(text, "a bit of a register cannot be written as a broadcast", 0);
    const auto type = registerType(library, address.regName);
    int code = checkUnknown;
    if (type)
        unitValue(library, *type, addressText(library, address.regName, address.first), 1, code,
                  access);
    if (code != checkValid)
        throw AddressFailure(text, checkSentence(library, code, address.regName, text), 0, code);
}

Address parseAddress(const Library& library, const std::string& text, BitNumbers bitNumbers)
{
    const Texts parts = splitAddress(text);
    const RegisterType type =
        knownType(library, text, parts.regName, parts.firstColumn - 1 - parts.regName.size());

    Address address;
    address.station = parts.station;
    address.regName = type.name;
    address.width = type.width;

    int code = checkValid;
    address.first = unitValue(library, type, parts.first, 1, code);
    if (code != checkValid)
        throw AddressFailure(text, checkSentence(library, code, type.name, parts.first),
                             parts.firstColumn, code);
    if (bitNumbers == BitNumbers::exact)
        requireExact(library, type, text, parts.first, address.first, parts.firstColumn);

    std::int64_t length = type.width == Width::doubleWord ? wordsPerDoubleWord : 1;
    std::string lastText = parts.first;
    if (!parts.last.empty()) {
        lastText = parts.last;
        const int last = unitValue(library, type, parts.last, 1, code);
        if (code != checkValid && code != checkOutOfRange)
            throw AddressFailure(text, checkSentence(library, code, type.name, parts.last),
                                 parts.lastColumn, code);
        if (bitNumbers == BitNumbers::exact)
            requireExact(library, type, text, parts.last, last, parts.lastColumn);
        length = std::int64_t(last) - address.first + 1;
        if (length < 1)
            throw AddressFailure(text, "the last address lies before the first", parts.lastColumn);
        if (type.width == Width::doubleWord && length % wordsPerDoubleWord != 0)
            throw AddressFailure(text,
                                 type.name + " takes two words a value, and FIRST..LAST names " +
                                     std::to_string(length),
                                 parts.lastColumn);
    }
    unitValue(library, type, parts.first, checkedLength(type, length), code);
    if (code != checkValid)
        throw AddressFailure(text, checkSentence(library, code, type.name, lastText),
                             parts.last.empty() ? parts.firstColumn : parts.lastColumn, code);
    address.length = static_cast<int>(length);
    return address;
}

Address parseAddress(const Library& library, int station, const std::string& regName,
                     const std::string& first, int values)
{
    const std::string whole = regName + ":" + first;
    const RegisterType type = knownType(library, whole, regName, 0);
    Address address;
    address.station = station;
    address.regName = type.name;
    address.width = type.width;

    int code = checkValid;
    address.first = unitValue(library, type, first, 1, code);
    if (code != checkValid)
        throw AddressFailure(whole, checkSentence(library, code, type.name, first), 0, code);
    requireExact(library, type, whole, first, address.first, 0);
    const std::int64_t length =
        std::int64_t(values) * (type.width == Width::doubleWord ? wordsPerDoubleWord : 1);
    unitValue(library, type, first, checkedLength(type, length), code);
    if (code != checkValid)
        throw AddressFailure(whole,
                             std::to_string(values) + " values from " + first +
                                 " run past the highest address, " + type.highest,
                             0, code);
    address.length = static_cast<int>(length);
    return address;
}

std::string toText(const Library& library, const Address& address)
{
    const int last = static_cast<int>(std::int64_t(address.first) + address.length - 1);
    return toText(address, addressText(library, address.regName, address.first),
                  address.width == Width::bit && address.length > 1
                      ? addressText(library, address.regName, last)
                      : std::string());
}

std::string toText(const Address& address, const std::string& first, const std::string& lastBit)
{
    std::string text = std::to_string(address.station) + "/" + address.regName + ":" + first;
    if (address.length > 1) {
        const int last = static_cast<int>(std::int64_t(address.first) + address.length - 1);
        // The second word of the highest double word has no text of its own type.
        text += ".." + (address.width == Width::bit ? lastBit : std::to_string(last));
    }
    return text;
}

std::string checkSentence(const Library& library, int code, const std::string& regName,
                          const std::string& text)
{
    const auto type = registerType(library, regName);
    switch (code) {
    case checkValid:
        return "valid";
    case checkWrongKind:
        return regName + (type && type->width == Width::bit ? " holds bits, not words"
                                                            : " holds words, not bits");
    case checkOutOfRange:
        return text + " is out of range: " + regName + " goes from " +
               (type ? type->lowest + " to " + type->highest : "nowhere to nowhere") +
               (type && type->width == Width::doubleWord ? " (the first word of a value)" : "");
    case checkUnknown: {
        std::string names;
        std::string meant;
        for (const RegisterType& known : registerTypes(library)) {
            names += (names.empty() ? "" : ", ") + known.name;
            if (inLowerCase(known.name) == inLowerCase(regName))
                meant = "did you mean " + known.name + "? ";
        }
        return "unknown register '" + regName + "'; " + meant + (meant.empty() ? "t" : "T") +
               "here are " + names;
    }
    case checkBadText:
        return "'" + text + "' is no address of " + regName + ", which is written " +
               (type ? type->format + ", as in " + type->highest : "otherwise");
    case checkBadType:
        return "this kind of value does not fit the 32 bits of " + regName;
    case checkReadOnly:
        return regName + " can only be read";
    default:
        return "refused by the library with code " + std::to_string(code);
    }
}

} // namespace dov417
