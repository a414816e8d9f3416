#include "link/station_timeout.h"

#include <algorithm>

namespace dov417 {

namespace {

constexpr int maxSilences = 4;
// Of a station that answers at once a busy machine hears later.
constexpr Micros minPatience(100000);

Micros within(Micros known, const TimeoutSettings& settings)
{
    const Micros min = settings.min > Micros(0) ? settings.min : settings.initial;
    return known == Micros(0) ? settings.initial
                              : std::clamp(known, min, std::max(min, settings.max));
}

} // namespace

std::string slowText(const std::string& station, Micros delay, const TimeoutSettings& settings)
{
    if (delay <= settings.initial)
        return std::string();
    const auto rounded = std::chrono::round<std::chrono::milliseconds>(delay).count();
    const bool isLearned = !settings.isFixed && delay < settings.max;
    return station + " answers after " + std::to_string(rounded) + " ms" +
           (isLearned          ? ": waiting longer from now on"
            : settings.isFixed ? ", later than it is waited for: raise --timeout"
                               : ", later than it is waited for: raise --timeout-max");
}

Micros StationTimeout::value(const TimeoutSettings& settings) const
{
    if (settings.isFixed || hasGrownInVain())
        return learned(settings);
    return within(std::max(measured_, grown_), settings);
}

Micros StationTimeout::learned(const TimeoutSettings& settings) const
{
    return settings.isFixed ? settings.initial : within(measured_, settings);
}

// Half as long again, as no controller takes the same time twice. What was learned is forgotten
// slowly, by a sixteenth an answer.
void StationTimeout::answered(Micros delay, const TimeoutSettings& settings)
{
    silences_ = 0;
    grown_ = Micros(0);
    last_ = delay;
    slowest_ = std::max(slowest_, delay);
    measured_ = std::max({Micros(1), delay + delay / 2, measured_ - measured_ / 16});
    measured_ = std::min(settings.max, measured_);
}

void StationTimeout::passed(const TimeoutSettings& settings)
{
    grown_ = std::min(settings.max, 2 * value(settings));
    ++silences_;
}

Micros StationTimeout::patience(const TimeoutSettings& settings) const
{
    return hasAnswered() ? std::max(measured_, minPatience) : settings.initial;
}

bool StationTimeout::hasAnswered() const
{
    return measured_ > Micros(0);
}

StationTime StationTimeout::time(int station, const TimeoutSettings& settings) const
{
    return {station, last_, slowest_, value(settings)};
}

bool StationTimeout::hasGrownInVain() const
{
    return silences_ >= maxSilences;
}

} // namespace dov417
