// When bytes pass a line that carries one at a time. Times are nanoseconds of any one clock.
#ifndef DOV417_SIMULATOR_WIRE_CLOCK_H
#define DOV417_SIMULATOR_WIRE_CLOCK_H

#include <cstdint>

#include "line/serial_format.h"

namespace dov417::simulator {

class WireClock {
public:
    explicit WireClock(const SerialFormat& format);

    // Puts a run of characters on the line no earlier than `now`, behind those already on it;
    // gives the time at which the last of them has passed.
    std::int64_t transmit(std::int64_t now, std::int64_t characters);
    // When the last character of the latest run has passed.
    std::int64_t freeAt() const;
    // When character `index` (from 0) of the latest run has passed.
    std::int64_t passedAt(std::int64_t index) const;

private:
    SerialFormat format_;
    std::int64_t runStart_ = 0;
    std::int64_t runLength_ = 0; // characters
};

} // namespace dov417::simulator

#endif
