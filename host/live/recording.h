// The line log of a session: every frame as it passed, in words.
#ifndef DOV417_LIVE_RECORDING_H
#define DOV417_LIVE_RECORDING_H

#include <QObject>
#include <string>
#include <vector>

#include "driver/areas.h"
#include "line/line_log.h"
#include "session/session.h"

namespace dov417 {

class Recording : public QObject {
public:
    // The areas tell what the numbers on the line are called. Throws a Failure if the file cannot
    // be written.
    Recording(const std::string& file, const std::string& header, const std::vector<Area>& areas);

    // Records this session from now on.
    void follow(const Session& session);

    // A line could not be written: the log is not complete.
    bool hasFailed() const;

    // What passes on a line that has no session.
    void began(const Transmission& transmission);
    void ended(const Transmission& transmission);
    void strayCame(const Stray& stray);
    void note(const std::string& text);

private:
    LineLog log_;
    std::vector<Area> areas_;
};

} // namespace dov417

#endif
