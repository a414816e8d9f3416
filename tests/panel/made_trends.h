// Values over time, made up: times are seconds.
#ifndef DOV417_TESTS_MADE_TRENDS_H
#define DOV417_TESTS_MADE_TRENDS_H

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "made_views.h"
#include "panel/trends/trend_history.h"

namespace dov417 {

constexpr double trendTestStart = 1000;

inline TrendTime second(double at)
{
    return static_cast<TrendTime>(std::llround((trendTestStart + at) * 1e6));
}

inline Clock::time_point moment(double at)
{
    return Clock::time_point(Micros(second(at)));
}

// A word that changed then and was confirmed then; it ceased to be good so often before.
inline View wordView(const Address& address, int word, double change, double good,
                     long long lapses = 0)
{
    View view = goodView(address, 0);
    view.value = {static_cast<unsigned char>(word & 0xFF), static_cast<unsigned char>(word >> 8)};
    view.lastChange = moment(change);
    view.lastGood = moment(good);
    view.lapses = lapses;
    return view;
}

inline View oldView(View view)
{
    view.isOld = true;
    ++view.lapses;
    return view;
}

// As it is told at once.
inline void tell(TrendHistory& history, const View& view)
{
    history.record(view, toTrendTime(std::max(view.lastGood, view.lastChange)));
}

// "7@0 8@1 -failed@2": all that is known of it, and until when.
inline std::string heldIn(const TrendHistory& history, const Address& address, double from = -1e3)
{
    static const char* const gaps[] = {"failed",    "lineGone",   "lineHung",
                                       "otherLine", "notWatched", "doubtful"};
    const auto time = [](TrendTime at) {
        char text[32];
        std::snprintf(text, sizeof text, "%g", static_cast<double>(at) / 1e6 - trendTestStart);
        return std::string(text);
    };
    std::string text;
    history.walk(address, second(from), [&](const TrendEvent& event) {
        text += event.isKnown ? std::to_string(event.raw)
                              : std::string("-") + gaps[static_cast<int>(event.gap())];
        text += "@" + time(event.at) + " ";
        return true;
    });
    return text + "until " + time(history.end(address).value_or(second(0)));
}

} // namespace dov417

#endif
