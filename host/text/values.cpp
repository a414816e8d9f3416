#include "text/values.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "text/raw_values.h"

namespace dov417 {

namespace {

[[noreturn]] void refuse(const std::string& text, const std::string& why)
{
    throw UsageFailure("value '" + text + "': " + why);
}

std::optional<double> decimal(const std::string& text)
{
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (stop != end || error != std::errc() || text.empty())
        return std::nullopt;
    return number;
}

// "12,5", as many languages write it, is not to be taken for 12.
[[noreturn]] void refuseNumber(const std::string& text)
{
    const bool hasComma = text.find(',') != std::string::npos;
    refuse(text, hasComma ? "not a number; a number has a point, not a comma" : "not a number");
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
    if (digits.text.size() > 2 && digits.text[0] == '0') {
        const int prefix = std::tolower(static_cast<unsigned char>(digits.text[1]));
        if (prefix == 'x' || (prefix == 'b' && base != 16)) {
            digits.text.erase(0, 2);
            digits.base = prefix == 'x' ? 16 : 2;
        }
    }
    return digits;
}

// deepest: the amount of the lowest negative value.
std::uint64_t integer(const std::string& text, int base, std::uint64_t deepest,
                      std::uint64_t highest)
{
    const Digits digits = digitsOf(text, base);
    std::uint64_t magnitude = 0;
    const char* begin = digits.text.data();
    const char* end = begin + digits.text.size();
    const auto [stop, error] = std::from_chars(begin, end, magnitude, digits.base);
    if (stop != end || error == std::errc::invalid_argument) {
        if (digits.base != 2 && decimal(text))
            refuse(text, "not a whole number");
        refuseNumber(text);
    }
    if (error != std::errc() || magnitude > (digits.negative ? deepest : highest))
        refuse(text, "out of range, " + std::string(deepest > 0 ? "-" : "") +
                         std::to_string(deepest) + " to " + std::to_string(highest));
    return digits.negative ? ~magnitude + 1 : magnitude;
}

std::uint64_t bcdDigits(std::uint64_t number)
{
    std::uint64_t value = 0;
    for (int shift = 0; number > 0; shift += bitsPerDigit, number /= 10)
        value |= number % 10 << shift;
    return value;
}

std::uint64_t maxBcd(Width width)
{
    return width == Width::word ? 9999 : 99999999;
}

std::uint64_t bcdValue(const std::string& text, Width width)
{
    for (char c : text)
        if (c < '0' || c > '9')
            refuse(text, "BCD takes decimal digits only");
    return bcdDigits(integer(text, 10, 0, maxBcd(width)));
}

// The system's own reading of a float rounds once, from the text.
template <typename Number>
Number floating(const std::string& text, const std::string& tooLarge)
{
    Number number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (stop != end || error == std::errc::invalid_argument)
        refuseNumber(text);
    if (error != std::errc() || !std::isfinite(number))
        refuse(text, tooLarge);
    return number;
}

std::uint64_t booleanValue(const std::string& text)
{
    if (text == "true" || text == "1")
        return 1;
    if (text == "false" || text == "0")
        return 0;
    refuse(text, "a bool is true or false, or 1 or 0");
}

// The value that a scaled number stands for: the one that reads back as it was written.
std::uint64_t scaledValue(const std::string& written, Width width, const Format& format)
{
    const std::optional<double> number = decimal(written);
    if (!number || !std::isfinite(*number))
        refuseNumber(written);
    const double plain = (*number - format.scaling.offset) / format.scaling.scale;
    const auto readsBack = [&](std::uint64_t raw) {
        return decimal(rawText(raw, width, format)) == number;
    };
    std::uint64_t raw = 0;
    if (isFloating(format.notation)) {
        raw = rawOf(plain, format.notation);
        // A neighbour may come nearer where scaling has rounded.
        for (const std::uint64_t near : {raw, raw + 1, raw - 1})
            if (readsBack(near))
                return near;
    } else {
        const double bits = bitsOf(width);
        const double highest = format.notation == Notation::bcd
                                   ? static_cast<double>(maxBcd(width))
                                   : std::exp2(isSigned(format.notation) ? bits - 1 : bits) - 1;
        const double lowest = isSigned(format.notation) ? -highest - 1 : 0;
        const double whole = std::round(plain);
        if (whole < lowest || whole > highest || std::abs(whole) >= maxWhole)
            refuse(written, "out of range for what the controller holds");
        raw = format.notation == Notation::bcd
                  ? bcdDigits(static_cast<std::uint64_t>(whole))
                  : static_cast<std::uint64_t>(static_cast<std::int64_t>(whole)) & allOnes(width);
        if (readsBack(raw))
            return raw;
    }
    refuse(written, "it would read back as " + rawText(raw, width, format));
}

std::uint64_t value(const std::string& text, Width width, const Format& format)
{
    if (format.notation == Notation::boolean)
        return booleanValue(text);
    if (width == Width::bit)
        return integer(text, 10, 0, 1);
    if (!format.scaling.isPlain() && isNumber(format.notation))
        return scaledValue(text, width, format);
    const std::uint64_t ones = allOnes(width);
    const std::uint64_t half = ones / 2 + 1;
    switch (format.notation) {
    case Notation::unsignedNumber:
    case Notation::uint64:
        return integer(text, 10, 0, ones);
    case Notation::signedNumber:
    case Notation::int64:
        return integer(text, 10, half, half - 1) & ones;
    case Notation::hex:
        return integer(text, 16, 0, ones);
    case Notation::binary:
        return integer(text, 2, 0, ones);
    case Notation::bcd:
        return bcdValue(text, width);
    case Notation::real:
        return rawOf(floating<float>(text, "no number that 32 bits can hold"), format.notation);
    case Notation::real64:
        return rawOf(floating<double>(text, "no number that 64 bits can hold"), format.notation);
    case Notation::boolean:
    case Notation::text:
        break;
    }
    refuse(text, "unknown format");
}

} // namespace

double exactNumber(Width width, Format format, const unsigned char* bytes)
{
    format.scaling.decimals = -1;
    const std::string written = valueTexts(width, format, bytes, 1).front();
    return decimal(written).value_or(std::numeric_limits<double>::quiet_NaN());
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
        const std::uint64_t raw = fromBytes(bytes + byteCount(width, i), width);
        texts.push_back(rawText(inOrder(raw, width, format.order), width, format));
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
        std::uint64_t raw = inOrder(value(written, width, format), width, format.order);
        for (int i = 0; i < bytesOf(width); ++i, raw >>= 8)
            bytes.push_back(static_cast<unsigned char>(raw & 0xFF));
    }
    return bytes;
}

} // namespace dov417
