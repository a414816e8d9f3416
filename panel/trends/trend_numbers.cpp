#include "panel/trends/trend_numbers.h"

#include <cmath>
#include <limits>

#include "text/raw_values.h"

namespace dov417 {

namespace {

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
constexpr int bitsOfRaw = 64;

double bcdNumberOf(std::uint64_t raw, Width width)
{
    double number = 0;
    for (int shift = bitsOf(width) - bitsPerDigit; shift >= 0; shift -= bitsPerDigit) {
        const std::uint64_t digit = raw >> shift & 0xF;
        if (digit > 9)
            return noNumber;
        number = number * 10 + static_cast<double>(digit);
    }
    return number;
}

double finite(double number)
{
    return std::isfinite(number) ? number : noNumber;
}

} // namespace

TrendNumbers::TrendNumbers(Width width, const Format& format)
    : bits_(bitsOfRaw - bitsOf(width)), width_(width), notation_(format.notation)
{
    isSwapped_ = width != Width::bit && width != Width::word && format.order != WordOrder::lowFirst;
    kind_ = isSwapped_ || isFloating(notation_) || notation_ == Notation::bcd ? Kind::other
            : isSigned(notation_) && width != Width::bit                      ? Kind::negative
                                                                              : Kind::whole;
    if (isNumber(notation_) && width != Width::bit) {
        scale_ = format.scaling.scale;
        offset_ = format.scaling.offset;
    }
}

double TrendNumbers::others(std::uint64_t raw) const
{
    const std::uint64_t value = isSwapped_ ? inOrder(raw, width_, WordOrder::highFirst) : raw;
    switch (notation_) {
    case Notation::real: {
        const auto bits = static_cast<std::uint32_t>(value);
        float number = 0;
        std::memcpy(&number, &bits, sizeof number);
        return finite(static_cast<double>(number));
    }
    case Notation::real64: {
        double number = 0;
        std::memcpy(&number, &value, sizeof number);
        return finite(number);
    }
    case Notation::bcd:
        return bcdNumberOf(value, width_);
    case Notation::signedNumber:
    case Notation::int64:
        return static_cast<double>(static_cast<std::int64_t>(value << bits_) >> bits_);
    case Notation::unsignedNumber:
    case Notation::uint64:
    case Notation::hex:
    case Notation::binary:
    case Notation::boolean:
        return static_cast<double>(value);
    case Notation::text:
        break;
    }
    return noNumber;
}

} // namespace dov417
