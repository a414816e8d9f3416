// What a person may look at first, where the counters show a pattern that is known. Pure.
#ifndef DOV417_PANEL_LINE_ADVICE_H
#define DOV417_PANEL_LINE_ADVICE_H

#include <QString>
#include <string>
#include <vector>

#include "link/link_statistics.h"

namespace dov417 {

enum class AdviceKind {
    noByte,        // ever, from nobody
    noFrame,       // bytes, and nothing sound among them
    late,          // replies come after the time-out
    portLost,      // again and again
    silentOnes,    // stations, while others answer
    silentRequest, // of a station that answers others
    address,       // exceptions 1, 2 and 3
    device,        // the other exceptions
    badCrc,        // now and then
    cutShort,
    otherStation, // answers, or another request is answered
    twice,        // replies come
    strayBytes,
    echo
};

struct LineAdvice {
    AdviceKind kind = AdviceKind::noByte;
    QString text; // a sentence or two
};

// The gravest first; none of a line on which nothing is wrong, or not often enough to tell. The
// counters are those of late; the wire is "38400,8,EVEN,1", or empty over a network.
std::vector<LineAdvice> adviceOn(const LinkStatistics& recent, const std::string& wire);

} // namespace dov417

#endif
