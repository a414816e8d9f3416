// A controller's areas as they lie on the line, and numbers of the line in the areas' own terms.
#ifndef DOV417_LINE_AREAS_H
#define DOV417_LINE_AREAS_H

#include <string>
#include <vector>

namespace dov417 {

struct Area {
    std::string regName; // its word type: "M_W", "R_W", "T"
    bool coils;          // read with function 1, 16 coils a word; else registers with function 3
    int base;            // coil or register number of word 0
    int words;           // words 0 to words - 1 exist
};

// "R_W:100..107" for registers, "M_W:2..4" or "M_bit:2.5..3.1" for coils; empty where the numbers
// are not all in one area.
std::string areaText(const std::vector<Area>& areas, bool coils, int first, int count);

} // namespace dov417

#endif
