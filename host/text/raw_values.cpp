#include "text/raw_values.h"

#include "line/frame_bytes.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>

namespace dov417 {

namespace {

std::string hexText(std::uint64_t value, Width width)
{
    std::string text = "0x";
    for (int shift = (bitsOf(width) - 1) / bitsPerDigit * bitsPerDigit; shift >= 0;
         shift -= bitsPerDigit)
        text += "0123456789ABCDEF"[value >> shift & 0xF];
    return text;
}

std::string binaryText(std::uint64_t value, Width width)
{
    std::string text = "0b";
    for (int bit = bitsOf(width) - 1; bit >= 0; --bit)
        text += (value >> bit & 1) != 0 ? '1' : '0';
    return text;
}

std::int64_t signedOf(std::uint64_t value, Width width)
{
    const std::uint64_t sign = std::uint64_t(1) << (bitsOf(width) - 1);
    return static_cast<std::int64_t>((value ^ sign) - sign);
}

// Of a digit above 9 it is no number.
std::optional<std::uint64_t> bcdNumber(std::uint64_t value, Width width)
{
    std::uint64_t number = 0;
    for (int shift = bitsOf(width) - bitsPerDigit; shift >= 0; shift -= bitsPerDigit) {
        const std::uint64_t digit = value >> shift & 0xF;
        if (digit > 9)
            return std::nullopt;
        number = number * 10 + digit;
    }
    return number;
}

template <typename Number, typename Raw>
Number numberOf(Raw raw)
{
    static_assert(sizeof(Number) == sizeof(Raw), "the bits of one are those of the other");
    Number number = 0;
    std::memcpy(&number, &raw, sizeof number);
    return number;
}

double floatingOf(std::uint64_t value, Notation notation)
{
    return notation == Notation::real
               ? static_cast<double>(numberOf<float>(static_cast<std::uint32_t>(value)))
               : numberOf<double>(value);
}

// The shortest text that reads back as the same number.
template <typename Number>
std::string shortest(Number number)
{
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

std::string floatingText(double number, Notation notation)
{
    return notation == Notation::real ? shortest(static_cast<float>(number)) : shortest(number);
}

// ---- scaled values --------------------------------------------------------------------------

std::string fixedText(double number, int decimals)
{
    char text[512];
    std::snprintf(text, sizeof text, "%.*f", decimals, number);
    const std::string result = text;
    return result.find_first_not_of("-0.") == std::string::npos && result.front() == '-'
               ? result.substr(1)
               : result;
}

int decimalsOf(double number)
{
    char text[512];
    const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed).ptr;
    const std::string digits(text, end);
    const std::size_t point = digits.find('.');
    return point == std::string::npos ? 0 : static_cast<int>(digits.size() - point - 1);
}

// A whole number, scaled, has no more decimals than scale and offset together.
std::string exactText(double number, const Scaling& scaling)
{
    std::string text =
        fixedText(number, std::max(decimalsOf(scaling.scale), decimalsOf(scaling.offset)));
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    return text;
}

// The number that a controller's value stands for before it is scaled; none where it is no number,
// or one that a double would change.
std::optional<double> plainNumber(std::uint64_t value, Width width, Notation notation)
{
    if (isFloating(notation))
        return floatingOf(value, notation);
    if (notation == Notation::bcd) {
        const std::optional<std::uint64_t> number = bcdNumber(value, width);
        return number ? std::optional<double>(static_cast<double>(*number)) : std::nullopt;
    }
    const double number = isSigned(notation) ? static_cast<double>(signedOf(value, width))
                                             : static_cast<double>(value);
    return std::abs(number) < maxWhole ? std::optional<double>(number) : std::nullopt;
}

// The shortest text that stands for the same float of the controller, unscaled again. With an
// offset that may take more digits than 32 bits have, and with a scale a larger number than they
// hold.
std::string scaledFloatText(double number, double plain, const Scaling& scaling)
{
    const auto highest = static_cast<double>(std::numeric_limits<float>::max());
    const auto held = static_cast<float>(plain);
    for (int digits = 1; digits < std::numeric_limits<double>::max_digits10; ++digits) {
        char text[32];
        const char* const end = std::to_chars(text, text + sizeof text, number,
                                              std::chars_format::scientific, digits - 1)
                                    .ptr;
        double shown = 0;
        std::from_chars(text, end, shown);
        const double back = (shown - scaling.offset) / scaling.scale;
        if (std::abs(back) <= highest && static_cast<float>(back) == held)
            return shortest(shown);
    }
    return shortest(number);
}

std::string scaledText(std::uint64_t value, Width width, const Format& format)
{
    const std::optional<double> plain = plainNumber(value, width, format.notation);
    if (!plain)
        return hexText(value, width) + "?";
    const Scaling& scaling = format.scaling;
    const double number = *plain * scaling.scale + scaling.offset;
    if (!std::isfinite(number))
        return shortest(number);
    if (scaling.decimals >= 0)
        return fixedText(number, scaling.decimals);
    if (!isFloating(format.notation))
        return exactText(number, scaling);
    return format.notation == Notation::real ? scaledFloatText(number, *plain, scaling)
                                             : shortest(number);
}

} // namespace

int bitsOf(Width width)
{
    return width == Width::bit ? 1 : unitsOf(width) * bitsPerWord;
}

int bytesOf(Width width)
{
    return width == Width::bit ? 1 : unitsOf(width) * 2;
}

std::uint64_t allOnes(Width width)
{
    return std::numeric_limits<std::uint64_t>::max() >> (64 - bitsOf(width));
}

bool isSigned(Notation notation)
{
    return notation == Notation::signedNumber || notation == Notation::int64;
}

bool isFloating(Notation notation)
{
    return notation == Notation::real || notation == Notation::real64;
}

std::uint64_t inOrder(std::uint64_t value, Width width, WordOrder order)
{
    if (width == Width::bit || order == WordOrder::lowFirst)
        return value;
    std::uint64_t turned = 0;
    for (int word = 0; word < unitsOf(width); ++word, value >>= bitsPerWord)
        turned = turned << bitsPerWord | (value & 0xFFFF);
    return turned;
}

std::uint64_t fromBytes(const unsigned char* bytes, Width width)
{
    std::uint64_t value = 0;
    for (int i = bytesOf(width) - 1; i >= 0; --i)
        value = value << 8 | bytes[i];
    return value;
}

std::uint64_t rawOf(double number, Notation notation)
{
    return notation == Notation::real ? numberOf<std::uint32_t>(static_cast<float>(number))
                                      : numberOf<std::uint64_t>(number);
}

std::string rawText(std::uint64_t value, Width width, const Format& format)
{
    if (format.notation == Notation::boolean)
        return value > 1 ? hexText(value, width) + "?" : value == 1 ? "true" : "false";
    if (width == Width::bit)
        return value != 0 ? "1" : "0";
    if (format.notation == Notation::hex)
        return hexText(value, width);
    if (format.notation == Notation::binary)
        return binaryText(value, width);
    if (!format.scaling.isPlain())
        return scaledText(value, width, format);
    if (isFloating(format.notation))
        return floatingText(floatingOf(value, format.notation), format.notation);
    if (format.notation == Notation::bcd) {
        const std::optional<std::uint64_t> number = bcdNumber(value, width);
        return number ? std::to_string(*number) : hexText(value, width) + "?";
    }
    return isSigned(format.notation) ? std::to_string(signedOf(value, width))
                                     : std::to_string(value);
}

} // namespace dov417
