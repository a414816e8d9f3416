// Writes with everything that a person wants to know of them: what was there before, whether the
// controller took it, and what it holds now.
#ifndef DOV417_SESSION_WRITE_JOB_H
#define DOV417_SESSION_WRITE_JOB_H

#include <functional>
#include <string>
#include <vector>

#include "session/items.h"
#include "session/piece_results.h"
#include "session/session.h"
#include "session/single_reads.h"

namespace dov417 {

enum class WriteResult {
    waiting,   // no outcome yet
    confirmed, // taken, and read back as written
    sent,      // a broadcast: nobody confirms it
    refused,   // given up by the driver; reason says why
    unread,    // taken, but reading it back failed; reason says why
    different  // taken, but the controller holds something else now
};

struct WriteTask {
    Item item;
    std::vector<unsigned char> data;
    WriteResult result = WriteResult::waiting;
    std::string reason;
    std::string why;                   // the kind of the reason, as Result has it
    std::vector<unsigned char> before; // empty: could not be read
    std::vector<unsigned char> after;  // empty: could not be read back
};

// Must outlive what it has started.
class WriteJob {
public:
    // done: every task has its result. Called once for each start().
    WriteJob(Session& session, std::function<void()> done);

    // Reads, writes and reads back. A controller that does not answer the first read is written to
    // all the same. Where the line or its settings are changed meanwhile it goes no further: what
    // is left was not meant for another controller.
    void start(const std::vector<WriteTask>& tasks);
    const std::vector<WriteTask>& tasks() const;

private:
    void read(void (WriteJob::*then)(const ReadResults&));
    bool goesOn(const ReadResults& results);
    void write(const ReadResults& results);
    void written();
    void compare(const ReadResults& results);

    Session& session_;
    std::function<void()> done_;
    std::vector<WriteTask> tasks_;
    std::vector<std::size_t> reading_; // tasks that the reads under way belong to
    std::size_t piecesUnderWay_ = 0;
    std::vector<PieceResults> results_; // of each task
    bool areWritten_ = false;
    int generation_ = 0; // of the session, at the start
};

} // namespace dov417

#endif
