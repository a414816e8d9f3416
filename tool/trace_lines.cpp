#include "tool/trace_lines.h"

#include <cstdio>

#include "line/frame_text.h"
#include "line/shown_text.h"

namespace dov417 {

const char* TraceLines::arrow(Direction direction)
{
    switch (direction) {
    case Direction::sent:
        return "-> ";
    case Direction::received:
        return "<- ";
    case Direction::stray:
        return "<? ";
    case Direction::note:
        return "-- ";
    }
    return "";
}

std::string TraceLines::of(LogTime time, const std::string& text, const QByteArray& bytes)
{
    const double since = isFirst_ ? 0 : static_cast<double>((time - last_).count()) / 1000.0;
    isFirst_ = false;
    last_ = time;
    char number[32];
    std::snprintf(number, sizeof number, "%10.3f", since);
    const std::string lines = number + ("  " + shownText(text) + "\n");
    return bytes.isEmpty() ? lines : lines + std::string(15, ' ') + hexText(bytes) + "\n";
}

} // namespace dov417
