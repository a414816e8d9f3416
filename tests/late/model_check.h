// All that can happen to the link, one step after the other, up to a depth: two stations, three
// reads, two of which look alike, and a write, or probes; replies that come in time, come late or
// never; an adapter that hears what it sends; replies that come twice.
#ifndef DOV417_TESTS_MODEL_CHECK_H
#define DOV417_TESTS_MODEL_CHECK_H

#include <string>
#include <vector>

#include "late_model.h"

namespace dov417 {

struct ModelSettings : LateModelSettings {
    int depth = 0;             // events
    bool repliesTwice = false; // for which nothing is promised before the first surplus
    bool isProbed = false;     // two of the reads are probes, in place of the third and the write
};

struct ModelResult {
    long long states = 0;
    long long goodReplies = 0; // at the ends of all paths
    int kinds = 1;
    std::vector<std::string> path; // to the first wrong value; empty if there is none
    std::string wrong;
};

ModelResult checkModel(const ModelSettings& settings);

// Stations and lines of all kinds that keep what is assumed of them, until one shows a wrong value.
ModelResult checkEveryKind(int depth);
// The same on adapters that hear what they send, where a station hears nothing for some time.
ModelResult checkEchoes(int depth);
// The same behind a modem that sends replies twice, judged from the first surplus on.
ModelResult checkCopies(int depth);

std::string textOf(const ModelResult& result);

} // namespace dov417

#endif
