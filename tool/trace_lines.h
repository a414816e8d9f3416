// Frames as `trace` shows them: the milliseconds since the one before, what it means, its bytes.
#ifndef DOV417_TOOL_TRACE_LINES_H
#define DOV417_TOOL_TRACE_LINES_H

#include <QByteArray>
#include <string>

#include "line/line_log.h"

namespace dov417 {

class TraceLines {
public:
    // "-> ", "<- ", "<? ", "-- "
    static const char* arrow(Direction direction);

    // Its lines, each with its end.
    std::string of(LogTime time, const std::string& text, const QByteArray& bytes);

private:
    LogTime last_{};
    bool isFirst_ = true;
};

} // namespace dov417

#endif
