#include "link/station_timeout.h"

#include <algorithm>

namespace dov417 {

namespace {

constexpr int maxSilences = 4;

} // namespace

Micros StationTimeout::value(const TimeoutSettings& settings) const
{
    if (settings.isFixed || hasGrownInVain())
        return learned(settings);
    return std::clamp(std::max(measured_, grown_), settings.initial,
                      std::max(settings.initial, settings.max));
}

Micros StationTimeout::learned(const TimeoutSettings& settings) const
{
    if (settings.isFixed)
        return settings.initial;
    return std::clamp(measured_, settings.initial, std::max(settings.initial, settings.max));
}

// Half as long again, as no controller takes the same time twice. What was learned is forgotten
// slowly, by a sixteenth an answer.
void StationTimeout::answered(Micros delay, const TimeoutSettings& settings)
{
    silences_ = 0;
    grown_ = Micros(0);
    measured_ = std::min(settings.max, std::max(delay + delay / 2, measured_ - measured_ / 16));
}

void StationTimeout::passed(const TimeoutSettings& settings)
{
    grown_ = std::min(settings.max, 2 * value(settings));
    ++silences_;
}

bool StationTimeout::hasGrownInVain() const
{
    return silences_ >= maxSilences;
}

} // namespace dov417
