// A session as it was recorded: what the line's thread told, and what was asked of it, each with
// its time from the begin. It is one file of JSON, a record a line.
#ifndef DOV417_DOCS_PICTURES_RECORDED_SESSION_H
#define DOV417_DOCS_PICTURES_RECORDED_SESSION_H

#include <string>
#include <vector>

#include "panel/desk/line_batch.h"

namespace dov417 {

struct RecordedWrite {
    Clock::time_point at{};
    std::string name; // of the value
    std::string text;
};

struct RecordedSession {
    // When it began, by the clock that never jumps: times that are kept are from there.
    static constexpr Clock::time_point begin{std::chrono::hours(1)};

    std::string timeOfDay; // when it began: "2026-01-31T12:34:56"
    std::vector<RecordedWrite> writes;
    std::vector<LineBatch> batches;
};

// `values`: all that is watched, value by value. Throw a Failure.
void saveSession(const std::string& file, const RecordedSession& session,
                 const std::vector<Address>& values);
RecordedSession loadSession(const std::string& file, const std::vector<Address>& values);

} // namespace dov417

#endif
