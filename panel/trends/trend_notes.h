// Notes at a moment, as a project keeps them: their time is one of the world, as what was recorded
// beside them is gone when the project is opened anew.
#ifndef DOV417_PANEL_TREND_NOTES_H
#define DOV417_PANEL_TREND_NOTES_H

#include <cstdint>
#include <string>
#include <vector>

#include "text/placed_json.h"

namespace dov417 {

struct KeptNote {
    std::int64_t at = 0; // milliseconds since 1970, UTC
    std::string text;
    OrderedJson others = OrderedJson::object(); // a newer program's, kept as they are
};

constexpr std::size_t maxKeptNotes = 1000;

// Of the member `path`, a list. Throws a UsageFailure that begins with the place of the mistake.
std::vector<KeptNote> keptNotesOf(const OrderedJson& list, const std::string& path);
OrderedJson toJson(const std::vector<KeptNote>& notes);

} // namespace dov417

#endif
