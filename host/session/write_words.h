// Writes as people type them, and what became of each in a sentence.
#ifndef DOV417_SESSION_WRITE_WORDS_H
#define DOV417_SESSION_WRITE_WORDS_H

#include <string>
#include <vector>

#include "session/write_job.h"

namespace dov417 {

// Throws a UsageFailure, which names the item, where the values are not what it takes or lie
// outside its limits.
WriteTask writeTask(const Item& item, const std::vector<std::string>& values);

// "unsigned": the notation that its limits are of, where its values are written in another one or
// in another scale: 64 typed in hexadecimal is no 64 of theirs. Else empty.
std::string notationOfLimits(const Item& item);

// What its values may be: "0 to 3000 rpm", "10 to 90, as unsigned", "0 or 1"; empty where that
// takes more words.
std::string rangeText(const Item& item);

// "speed = 1500 rpm: written and read back, was 0 rpm". interruption: why what is still waiting
// was given up.
std::string writeReport(const WriteTask& task, const std::string& interruption);

} // namespace dov417

#endif
