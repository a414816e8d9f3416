// What a scan finds and hears, for people and for programs.
#ifndef DOV417_TOOL_SCAN_WORDS_H
#define DOV417_TOOL_SCAN_WORDS_H

#include <nlohmann/json.hpp>
#include <string>

#include "link/station_names.h"
#include "scan/range_halving.h"
#include "scan/station_scan.h"

namespace dov417 {

// " at 9600,8,NONE,1"; nothing over a network.
std::string atText(const ScanLine& line);

std::string foundText(const Found& found, Micros timeout, const StationNames& names);
nlohmann::ordered_json foundJson(const Found& found, const StationNames& names);

std::string heardText(const ScanHeard& heard, bool asksAnyway, const StationNames& names);
nlohmann::ordered_json heardJson(const ScanHeard& heard, bool asksAnyway,
                                 const StationNames& names);

// Of words such as "1/R_W:0..3999".
std::string rangeLine(const std::string& words, const WordRange& range);
nlohmann::ordered_json rangeJson(const std::string& words, const WordRange& range);

// "[########------------]  38 %  station 94 at 9600,8,NONE,1, 2 min 10 s left"
std::string progressText(const ScanProgress& progress);
std::string barText(double share, const std::string& what);

} // namespace dov417

#endif
