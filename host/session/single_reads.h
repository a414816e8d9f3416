// Several addresses read once each: which came, and why the others did not.
#ifndef DOV417_SESSION_SINGLE_READS_H
#define DOV417_SESSION_SINGLE_READS_H

#include <functional>
#include <string>
#include <vector>

#include "session/session.h"

namespace dov417 {

extern const char* const changedMeanwhile;

// One an address: why it could not be read, if it could not.
using ReadResults = std::vector<Result>;

// What was read before the line or its settings were changed counts as not read: the driver has
// forgotten it. Words that several addresses share are read once. done is called once, not
// from within this call. Throws a UsageFailure where the gap cuts 32-bit values in two.
void readAll(Session& session, const std::vector<Address>& addresses,
             std::function<void(const ReadResults&)> done);

} // namespace dov417

#endif
