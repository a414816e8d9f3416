#include "simulator/wire_clock.h"

#include <algorithm>

namespace dov417::simulator {

WireClock::WireClock(const SerialFormat& format) : format_(format) {}

std::int64_t WireClock::transmit(std::int64_t now, std::int64_t characters)
{
    runStart_ = std::max(now, freeAt());
    runLength_ = characters;
    return freeAt();
}

std::int64_t WireClock::freeAt() const
{
    return runStart_ + format_.characters(runLength_).count();
}

std::int64_t WireClock::passedAt(std::int64_t index) const
{
    return runStart_ + format_.characters(index + 1).count();
}

} // namespace dov417::simulator
