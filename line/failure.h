// What could not be done, in one sentence for the person in front of the program.
#ifndef DOV417_LINE_FAILURE_H
#define DOV417_LINE_FAILURE_H

#include <stdexcept>
#include <string>

namespace dov417 {

class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A mistake in what the person typed: an address, a value, a tag file, a line.
class UsageFailure : public Failure {
public:
    using Failure::Failure;
    UsageFailure(const std::string& typed, const std::string& why)
        : Failure("\"" + typed + "\": " + why)
    {
    }
};

// What a call came to, where an exception has no place.
struct Result {
    bool accepted = true;
    std::string reason;   // of the refusal; or a remark where it was accepted
    std::string why = {}; // the kind of the reason, for programs; empty where it has none

    static Result refused(const std::string& reason)
    {
        return {false, reason};
    }
};

} // namespace dov417

#endif
