// The clock that never jumps, and the unit that times on the line are given in.
#ifndef DOV417_HOST_CLOCK_H
#define DOV417_HOST_CLOCK_H

#include <chrono>

using Clock = std::chrono::steady_clock;
using Micros = std::chrono::microseconds;

#endif
