#include "panel/desk/panel_clock.h"

#include <optional>

namespace dov417 {

namespace {

struct HandedInTime {
    Clock::time_point now{};
    QDateTime timeOfDay;
};

std::optional<HandedInTime>& handedIn()
{
    static std::optional<HandedInTime> time;
    return time;
}

} // namespace

Clock::time_point panelNow()
{
    return handedIn() ? handedIn()->now : Clock::now();
}

QDateTime panelTimeOfDay()
{
    return handedIn() ? handedIn()->timeOfDay : QDateTime::currentDateTime();
}

LogTime panelLogTime(Clock::time_point then)
{
    if (!handedIn())
        return logTime(then);
    const std::chrono::milliseconds now(handedIn()->timeOfDay.toMSecsSinceEpoch());
    return LogTime(now - std::chrono::duration_cast<Micros>(handedIn()->now - then));
}

void setPanelTime(Clock::time_point now, const QDateTime& timeOfDay)
{
    handedIn() = HandedInTime{now, timeOfDay};
}

void letPanelTimeRun()
{
    handedIn().reset();
}

} // namespace dov417
