// A value's bits as the number that its format makes of them, quickly: a curve has a million.
#ifndef DOV417_PANEL_TREND_NUMBERS_H
#define DOV417_PANEL_TREND_NUMBERS_H

#include <cstdint>
#include <cstring>

#include "text/formats.h"

namespace dov417 {

class TrendNumbers {
public:
    TrendNumbers() = default;
    TrendNumbers(Width width, const Format& format);

    // Scaled, in the format's unit; NaN where the bits are no number, and where they are infinite.
    double operator()(std::uint64_t raw) const
    {
        return plain(raw) * scale_ + offset_;
    }

    friend bool operator==(const TrendNumbers& a, const TrendNumbers& b)
    {
        return a.kind_ == b.kind_ && a.bits_ == b.bits_ && a.width_ == b.width_ &&
               a.isSwapped_ == b.isSwapped_ && a.notation_ == b.notation_ && a.scale_ == b.scale_ &&
               a.offset_ == b.offset_;
    }

private:
    enum class Kind {
        whole,
        negative, // in two's complement
        other
    };

    double plain(std::uint64_t raw) const
    {
        if (kind_ == Kind::whole)
            return static_cast<double>(raw);
        if (kind_ == Kind::negative)
            return static_cast<double>(static_cast<std::int64_t>(raw << bits_) >> bits_);
        return others(raw);
    }
    double others(std::uint64_t raw) const;

    Kind kind_ = Kind::whole;
    int bits_ = 0; // above the value's own
    Width width_ = Width::word;
    bool isSwapped_ = false;
    Notation notation_ = Notation::unsignedNumber;
    double scale_ = 1;
    double offset_ = 0;
};

} // namespace dov417

#endif
