// A plan as a map of the controller's memory: what each word is asked for. Pure.
#ifndef DOV417_PANEL_PLAN_MAP_H
#define DOV417_PANEL_PLAN_MAP_H

#include <array>
#include <string>
#include <vector>

#include "panel/desk/panel_tags.h"
#include "session/planning.h"

namespace dov417 {

enum class WordUse {
    notAsked,
    watched,
    readAlong, // in a hole between watched words, or beside a watched bit's
    uncovered  // watched, and no request reads it
};

struct PlanWord {
    WordUse use = WordUse::notAsked;
    std::vector<int> requests; // of the plan, that read it
    std::vector<int> values;   // of the tags, that lie in it
    bool beginsRequest = false;
    bool endsRequest = false;
    bool beginsPart = false;    // and no request
    bool isBeyondLimit = false; // further in its frame than a strict controller answers
};

struct PlanRow {
    static constexpr int words = 32;

    int station = 0;
    std::string regName; // a word type
    int first = 0;       // word
    bool goesOn = false; // the row before ends where this one begins
    std::array<PlanWord, words> cells;
};

// "R_W" of "R_bit", "T" of "T".
std::string wordTypeOf(const std::string& regName);

// Station by area; rows in which nothing is asked for are left out.
std::vector<PlanRow> planRows(const std::vector<PanelValue>& values, const Plan& plan);

// Words of a request that nobody watches, request by request.
std::vector<int> wordsReadAlong(const std::vector<PlanRow>& rows, const Plan& plan);

// What the driver plans for these; see watchPieces().
std::vector<Address> plannedAddresses(const std::vector<Item>& items);

// The gap to set for an outcome. Of those that plan the same the longest, in whole values of any
// width: the driver cuts writes and single reads by it, too.
int gapToUse(const GapOutcome& outcome);

// "1/R_W:100..120"
std::string planWordsText(int station, const std::string& regName, int first, int count);
// "12 to 30", "31 and more"
std::string gapRange(const GapOutcome& outcome);

} // namespace dov417

#endif
