// The clock that never jumps, and the unit that times on the line are given in.
#ifndef DOV417_LINE_CLOCK_H
#define DOV417_LINE_CLOCK_H

#include <chrono>

namespace dov417 {

using Clock = std::chrono::steady_clock;
using Micros = std::chrono::microseconds;

} // namespace dov417

#endif
