// What happens on the controller's line, for its log.
#ifndef DOV417_SIMULATOR_LINE_EVENT_H
#define DOV417_SIMULATOR_LINE_EVENT_H

#include <QByteArray>
#include <QMetaType>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "simulator/controller.h"
#include "simulator/faults.h"

namespace dov417::simulator {

struct LineEvent {
    enum Kind {
        received, // a request
        sent,     // a reply, as it left
        withheld, // a reply that a fault swallowed, or that nobody was there for
        garbage,  // bytes that were no frame
        notice    // opened, closed, other side came or went; no bytes
    };
    Kind kind = notice;
    std::int64_t timeNs = 0; // since open()
    QByteArray bytes;
    std::string meaning;
};

// "    0.012345 <- 01 03 05 0A 00 01 A4 C4  station 1 reads register 1290"
std::string logText(const LineEvent& event);

// Nothing where the text is none of those.
std::optional<LineEvent> parseLogText(const std::string& text);

// "reply", "reply: exception 2, illegal data address [flip late]"
std::string replyText(const Answer& answer, const std::vector<FaultKind>& faults);

} // namespace dov417::simulator

Q_DECLARE_METATYPE(dov417::simulator::LineEvent)

#endif
