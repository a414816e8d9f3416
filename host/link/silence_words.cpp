#include "link/silence_words.h"

#include <cstdio>
#include <ctime>

namespace dov417 {

namespace {

std::tm localTime(std::chrono::system_clock::time_point time)
{
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm fields = std::tm();
    localtime_r(&seconds, &fields);
    return fields;
}

std::string seconds(Micros duration)
{
    char text[64];
    std::snprintf(text, sizeof text, "%g s", static_cast<double>(duration.count()) / 1e6);
    return text;
}

std::string askedEvery(const ProbeSettings& settings)
{
    const std::string first =
        settings.firstPause < settings.maxPause ? seconds(settings.firstPause) + " to " : "";
    return ": asked every " + first + seconds(settings.maxPause);
}

} // namespace

std::string wallTime(Clock::time_point time)
{
    using System = std::chrono::system_clock;
    const System::time_point now = System::now();
    const std::tm today = localTime(now);
    const std::tm then =
        localTime(now - std::chrono::duration_cast<System::duration>(Clock::now() - time));
    const bool isToday = then.tm_yday == today.tm_yday && then.tm_year == today.tm_year;
    char text[64];
    const std::size_t length =
        std::strftime(text, sizeof text, isToday ? "%H:%M:%S" : "%Y-%m-%d %H:%M:%S", &then);
    return {text, length};
}

std::string notAskedSince(Clock::time_point silentSince)
{
    return "not asked: silent since " + wallTime(silentSince);
}

std::string textOf(StationProbes::News news, const std::string& station, const std::string& request,
                   Reason why, Clock::time_point silentSince, const ProbeSettings& settings)
{
    switch (news) {
    case StationProbes::News::none:
        break;
    case StationProbes::News::stationSilent:
        return station + (why == Reason::silence ? " is silent" : " sends no sound frame") +
               " since " + wallTime(silentSince) + askedEvery(settings);
    case StationProbes::News::stationBack:
        return station + " answers again";
    case StationProbes::News::requestSilent:
        return station + " answers others, but not " + request + " since " + wallTime(silentSince) +
               askedEvery(settings);
    case StationProbes::News::requestBack:
        return station + " answers " + request + " again";
    }
    return std::string();
}

} // namespace dov417
