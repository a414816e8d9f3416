// What the simulated controller has logged, seen from the line: what it received was sent there.
//
// A reply may leave long after its request, when another one has come. What it answers is told by
// books.h, where that is clear.
#ifndef DOV417_TOOL_CONTROLLERS_LOG_H
#define DOV417_TOOL_CONTROLLERS_LOG_H

#include <optional>
#include <string>
#include <vector>

#include "line/areas.h"
#include "line/line_log.h"
#include "link/books.h"
#include "simulator/line_event.h"

namespace dov417 {

class ControllersLog {
public:
    explicit ControllersLog(const std::vector<Area>& areas);

    // Its meaning is the text to show. Nothing where the line is none of such a log.
    std::optional<LogEntry> entry(const std::string& line);
    // What passed here is not known.
    void forget();

private:
    std::string replied(const QByteArray& frame);

    std::vector<Area> areas_;
    Books books_;
    long long requests_ = 0;
};

} // namespace dov417

#endif
