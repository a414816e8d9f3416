// The settings of a line, each by its name and in milliseconds: what differs from the defaults is
// what a test is about.
#ifndef DOV417_TESTS_LINE_FIELDS_H
#define DOV417_TESTS_LINE_FIELDS_H

#include <map>
#include <string>

#include "link/serial_line.h"

namespace dov417 {

using LineFields = std::map<std::string, long long>;

inline LineFields fieldsOf(const LineSettings& line)
{
    const auto ms = [](Micros time) { return static_cast<long long>(time.count() / 1000); };
    return {{"timeout", ms(line.timeout)},       {"minTimeout", ms(line.minTimeout)},
            {"maxTimeout", ms(line.maxTimeout)}, {"isTimeoutFixed", line.isTimeoutFixed ? 1 : 0},
            {"turnaround", ms(line.turnaround)}, {"replyGap", ms(line.replyGap)},
            {"horizon", ms(line.horizon)},       {"direction", line.direction.isWanted ? 1 : 0},
            {"mayMark", line.mayMark ? 1 : 0},   {"isShared", line.isShared ? 1 : 0},
            {"maxRegisters", line.maxRegisters}, {"maxProbePause", ms(line.maxProbePause)}};
}

// What a line has that nothing was said about, but for these.
inline LineFields defaultsBut(const LineFields& changed)
{
    LineFields fields = {{"timeout", 500},
                         {"minTimeout", 0},
                         {"maxTimeout", 15000},
                         {"isTimeoutFixed", 0},
                         {"turnaround", 100},
                         {"replyGap", 100},
                         {"horizon", 30000},
                         {"direction", 0},
                         {"mayMark", 1},
                         {"isShared", 1},
                         {"maxRegisters", learnedMaximum},
                         {"maxProbePause", 30000}};
    for (const auto& [name, value] : changed)
        fields.at(name) = value;
    return fields;
}

} // namespace dov417

#endif
