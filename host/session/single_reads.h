// Several addresses read once each: which came, and why the others did not.
#ifndef DOV417_SESSION_SINGLE_READS_H
#define DOV417_SESSION_SINGLE_READS_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "session/session.h"

namespace dov417 {

class SingleReads {
public:
    // done: every read of a start() has its outcome.
    SingleReads(Session& session, int gap, std::function<void()> done);

    // Words that several addresses share are read once.
    void start(const std::vector<Address>& addresses);

    // To be told of the session's outcomes; those of others are ignored.
    void settle(int number, bool accepted, const std::string& reason);

    // Empty if the address was read.
    const std::string& problem(std::size_t index) const;
    bool isDone() const;

private:
    Session& session_;
    int gap_;
    std::function<void()> done_;
    std::map<int, std::vector<std::size_t>> underWay_; // read -> addresses that need it
    std::vector<std::string> problems_;
};

} // namespace dov417

#endif
