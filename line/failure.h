// What a command could not do, in one sentence for the person in front of it.
#ifndef DOV417_LINE_FAILURE_H
#define DOV417_LINE_FAILURE_H

#include <stdexcept>
#include <string>

namespace dov417 {

class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What the shell sees.
enum ExitCode {
    exitDone = 0,
    exitFailed = 1, // the command ran and something it was asked for did not come out
    exitUsage = 2   // the command line, a tag file or an address is wrong: nothing was done
};

// A mistake in what the person typed: command line, address, tag file, value.
class UsageFailure : public Failure {
public:
    using Failure::Failure;
};

// What a call came to, where an exception has no place.
struct Result {
    bool accepted = true;
    std::string reason; // why not

    static Result refused(const std::string& why)
    {
        return {false, why};
    }
};

} // namespace dov417

#endif
