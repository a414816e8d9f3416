// Writes with everything that a person wants to know of them: what was there before, whether the
// controller took it, and what it holds now.
#ifndef DOV417_SESSION_WRITE_JOB_H
#define DOV417_SESSION_WRITE_JOB_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "session/items.h"
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
    std::vector<unsigned char> before; // empty: could not be read
    std::vector<unsigned char> after;  // empty: could not be read back
};

class WriteJob {
public:
    WriteJob(const Library& library, Session& session, int gap, std::function<void()> done);

    // Reads, writes and reads back. A controller that does not answer the first read is written to
    // all the same.
    void start(const std::vector<WriteTask>& tasks);
    const std::vector<WriteTask>& tasks() const;

    // To be told of the session's outcomes; those of others are ignored.
    void written(int number, bool accepted, const std::string& reason);
    void readOnce(int number, bool accepted, const std::string& reason);

private:
    void read();
    void write();
    void compare();

    const Library& library_;
    Session& session_;
    int gap_;
    std::function<void()> done_;
    std::vector<WriteTask> tasks_;
    std::vector<std::size_t> reading_; // tasks that the reads under way belong to
    std::map<int, std::size_t> writing_;
    void (WriteJob::*afterReads_)() = nullptr;
    SingleReads reads_;
};

} // namespace dov417

#endif
