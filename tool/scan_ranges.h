// The second half of a scan: which words the stations answer that were found.
#ifndef DOV417_TOOL_SCAN_RANGES_H
#define DOV417_TOOL_SCAN_RANGES_H

#include <set>
#include <string>
#include <vector>

#include "driver/library.h"
#include "scan/range_search.h"

namespace dov417 {

// What addresses name, in words of their areas. Throws a UsageFailure where a text names nothing
// that can be read.
std::vector<WordRun> wordRuns(const Library& library, const std::vector<Area>& areas,
                              const std::vector<std::string>& addresses);

std::set<int> stationsOf(const std::vector<WordRun>& runs);

// "1/R_W:0..3999"
std::string rangeText(const WordRun& run, int first, int count);

} // namespace dov417

#endif
