// How `listen` tells what it hears: frame by frame, as objects, or as a table alone; and its log.
#ifndef DOV417_TOOL_HEARD_TELLER_H
#define DOV417_TOOL_HEARD_TELLER_H

#include <QTimer>
#include <memory>
#include <string>
#include <vector>

#include "line/line_log.h"
#include "link/heard_table.h"
#include "link/listening_line.h"
#include "tool/screen.h"
#include "tool/trace_lines.h"

namespace dov417 {

enum class HeardForm {
    frames,
    json,
    table
};

class HeardTeller {
public:
    // Throws a Failure if the log cannot be written; its name may be empty.
    HeardTeller(HeardForm form, const LineSettings& settings, const std::string& log,
                const std::vector<Area>& areas);

    void tell(const Heard& heard);
    void tellPort(bool open, const std::string& message);
    // The table. False if no frame was heard, or the log is not complete.
    bool finish();

private:
    void write(const LogEntry& entry, const std::string& text);
    void note(LogTime time, const std::string& text);
    std::string lineText() const;
    void sayWhere();
    void draw();

    HeardForm form_;
    LineSettings settings_;
    std::vector<Area> areas_;
    std::string logName_;
    LineLog log_;
    HeardTable table_;
    TraceLines lines_;
    std::unique_ptr<Screen> screen_;
    QTimer redraw_;
    bool wasLost_ = false;
    std::string port_; // what was said of it last
};

} // namespace dov417

#endif
