#include "simulator/wire_clock.h"

#include <algorithm>

namespace dov417::simulator {

WireClock::WireClock(const SerialFormat& format) : m_format(format) {}

std::int64_t WireClock::transmit(std::int64_t now, std::int64_t characters)
{
    m_runStart = std::max(now, freeAt());
    m_runLength = characters;
    return freeAt();
}

std::int64_t WireClock::freeAt() const
{
    return m_runStart + m_format.characters(m_runLength).count();
}

std::int64_t WireClock::passedAt(std::int64_t index) const
{
    return m_runStart + m_format.characters(index + 1).count();
}

} // namespace dov417::simulator
