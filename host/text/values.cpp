#include "text/values.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <tuple>

namespace dov417 {

namespace {

const int bitsPerDigit = 4;
const std::string suffix = ":";

int bitsOf(Width width)
{
    return width == Width::bit ? 1 : width == Width::word ? 16 : 32;
}

int bytesOf(Width width)
{
    return width == Width::bit ? 1 : width == Width::word ? 2 : 4;
}

std::string hexText(std::uint32_t value, Width width)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%0*X", bitsOf(width) / bitsPerDigit, value);
    return text;
}

// The two words of a value change places; harmless to do twice.
std::uint32_t inOrder(std::uint32_t value, Width width, WordOrder order)
{
    if (width == Width::doubleWord && order == WordOrder::highFirst)
        return value << 16 | value >> 16;
    return value;
}

std::uint32_t fromBytes(const unsigned char* bytes, Width width)
{
    std::uint32_t value = 0;
    for (int i = bytesOf(width) - 1; i >= 0; --i)
        value = value << 8 | bytes[i];
    return value;
}

std::string bcdText(std::uint32_t value, Width width)
{
    std::uint32_t number = 0;
    for (int shift = bitsOf(width) - bitsPerDigit; shift >= 0; shift -= bitsPerDigit) {
        const std::uint32_t digit = value >> shift & 0xF;
        if (digit > 9)
            return hexText(value, width) + "?";
        number = number * 10 + digit;
    }
    return std::to_string(number);
}

std::string realText(std::uint32_t value)
{
    float number = 0;
    static_assert(sizeof number == sizeof value, "a float has 32 bits");
    std::memcpy(&number, &value, sizeof number);
    char text[64];
    // The shortest text that reads back as the same number.
    const auto end = std::to_chars(text, text + sizeof text, number).ptr;
    return std::string(text, end);
}

std::string text(std::uint32_t value, Width width, Notation notation)
{
    if (width == Width::bit)
        return value != 0 ? "1" : "0";
    switch (notation) {
    case Notation::unsignedNumber:
        return std::to_string(value);
    case Notation::signedNumber:
        return std::to_string(width == Width::word ? static_cast<std::int16_t>(value)
                                                   : static_cast<std::int32_t>(value));
    case Notation::hex:
        return hexText(value, width);
    case Notation::bcd:
        return bcdText(value, width);
    case Notation::real:
        return realText(value);
    }
    return std::string();
}

[[noreturn]] void refuse(const std::string& text, const std::string& why)
{
    throw UsageFailure("value '" + text + "': " + why);
}

bool isReal(const std::string& text)
{
    double number = 0;
    const char* const end = text.data() + text.size();
    return std::from_chars(text.data(), end, number).ptr == end && !text.empty();
}

struct Digits {
    std::string text;
    int base = 10;
    bool negative = false;
};

Digits digitsOf(const std::string& text, int base)
{
    Digits digits{text, base, false};
    if (!digits.text.empty() && (digits.text[0] == '-' || digits.text[0] == '+')) {
        digits.negative = digits.text[0] == '-';
        digits.text.erase(0, 1);
    }
    if (digits.text.size() > 2 && digits.text[0] == '0' &&
        (digits.text[1] == 'x' || digits.text[1] == 'X')) {
        digits.text.erase(0, 2);
        digits.base = 16;
    }
    return digits;
}

std::uint32_t integer(const std::string& text, int base, std::int64_t lowest, std::int64_t highest)
{
    const Digits digits = digitsOf(text, base);
    std::uint64_t magnitude = 0;
    const char* begin = digits.text.data();
    const char* end = begin + digits.text.size();
    const auto [stop, error] = std::from_chars(begin, end, magnitude, digits.base);
    if (stop != end || error == std::errc::invalid_argument)
        refuse(text, isReal(text) ? "not a whole number" : "not a number");
    const std::string range =
        "out of range, " + std::to_string(lowest) + " to " + std::to_string(highest);
    // Nothing allowed here comes near 2^62, so both signs fit.
    if (error != std::errc() || magnitude > std::uint64_t(1) << 62)
        refuse(text, range);
    const std::int64_t value = digits.negative ? -std::int64_t(magnitude) : std::int64_t(magnitude);
    if (value < lowest || value > highest)
        refuse(text, range);
    return static_cast<std::uint32_t>(value);
}

std::uint32_t bcdValue(const std::string& text, Width width)
{
    const std::int64_t highest = width == Width::word ? 9999 : 99999999;
    for (char c : text)
        if (c < '0' || c > '9')
            refuse(text, "BCD takes decimal digits only");
    std::uint32_t number = integer(text, 10, 0, highest);
    std::uint32_t value = 0;
    for (int shift = 0; number > 0; shift += bitsPerDigit, number /= 10)
        value |= number % 10 << shift;
    return value;
}

std::uint32_t realValue(const std::string& text)
{
    float number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (stop != end || error == std::errc::invalid_argument)
        refuse(text, "not a number");
    if (error != std::errc() || !std::isfinite(number))
        refuse(text, "no number that 32 bits can hold");
    std::uint32_t value = 0;
    std::memcpy(&value, &number, sizeof value);
    return value;
}

std::uint32_t value(const std::string& text, Width width, Notation notation)
{
    if (width == Width::bit)
        return integer(text, 10, 0, 1);
    const std::int64_t units = std::int64_t(1) << bitsOf(width);
    switch (notation) {
    case Notation::unsignedNumber:
        return integer(text, 10, 0, units - 1);
    case Notation::signedNumber:
        return integer(text, 10, -units / 2, units / 2 - 1);
    case Notation::hex:
        return integer(text, 16, 0, units - 1);
    case Notation::bcd:
        return bcdValue(text, width);
    case Notation::real:
        return realValue(text);
    }
    refuse(text, "unknown format");
}

template <typename Names>
int indexOf(const Names& names, const std::string& name)
{
    for (std::size_t i = 0; i < names.size(); ++i)
        if (names[i] == name)
            return static_cast<int>(i);
    return -1;
}

std::string joined(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

} // namespace

bool operator==(const Format& a, const Format& b)
{
    return std::tie(a.notation, a.order) == std::tie(b.notation, b.order);
}

const std::vector<std::string>& notationNames()
{
    static const std::vector<std::string> names = {"unsigned", "signed", "hex", "bcd", "float"};
    return names;
}

const std::vector<std::string>& wordOrderNames()
{
    static const std::vector<std::string> names = {"low-first", "high-first"};
    return names;
}

WordOrder parseWordOrder(const std::string& text)
{
    const int index = indexOf(wordOrderNames(), text);
    if (index < 0)
        throw UsageFailure("unknown word order '" + text + "'; there are " +
                           joined(wordOrderNames()));
    return static_cast<WordOrder>(index);
}

FormatChoice parseFormat(const std::string& text)
{
    FormatChoice choice;
    if (text.empty())
        return choice;
    const std::size_t colon = text.find(suffix);
    const int index = indexOf(notationNames(), text.substr(0, colon));
    if (index < 0)
        throw UsageFailure("unknown format '" + text.substr(0, colon) + "'; there are " +
                           joined(notationNames()));
    choice.notation = static_cast<Notation>(index);
    if (colon != std::string::npos)
        choice.order = parseWordOrder(text.substr(colon + suffix.size()));
    return choice;
}

Format chosenFormat(const FormatChoice& first, const FormatChoice& second)
{
    const Format byDefault;
    Format format;
    format.notation = first.notation.value_or(second.notation.value_or(byDefault.notation));
    format.order = first.order.value_or(second.order.value_or(byDefault.order));
    return format;
}

bool fits(Width width, const Format& format)
{
    return format.notation != Notation::real || width == Width::doubleWord;
}

void requireFormat(Width width, const Format& format)
{
    if (!fits(width, format))
        throw UsageFailure("float needs the 32 bits of a double word register");
}

int byteCount(Width width, int values)
{
    return values * bytesOf(width);
}

std::vector<std::string> valueTexts(Width width, const Format& format, const unsigned char* bytes,
                                    int values)
{
    std::vector<std::string> texts;
    for (int i = 0; i < values; ++i) {
        const std::uint32_t raw = fromBytes(bytes + byteCount(width, i), width);
        texts.push_back(text(inOrder(raw, width, format.order), width, format.notation));
    }
    return texts;
}

void requireCount(int wanted, const std::vector<std::string>& values)
{
    if (values.size() != static_cast<std::size_t>(wanted))
        throw UsageFailure(std::to_string(wanted) +
                           (wanted == 1 ? " value is needed, " : " values are needed, ") +
                           std::to_string(values.size()) + " given");
}

std::vector<unsigned char> valueBytes(Width width, const Format& format,
                                      const std::vector<std::string>& texts)
{
    std::vector<unsigned char> bytes;
    for (const std::string& written : texts) {
        std::uint32_t raw = inOrder(value(written, width, format.notation), width, format.order);
        for (int i = 0; i < bytesOf(width); ++i, raw >>= 8)
            bytes.push_back(static_cast<unsigned char>(raw & 0xFF));
    }
    return bytes;
}

} // namespace dov417
