// A name for an address, with what its value means.
#ifndef DOV417_TEXT_TAG_H
#define DOV417_TEXT_TAG_H

#include <optional>
#include <string>

#include "text/addresses.h"
#include "text/values.h"

namespace dov417 {

// In the tag's unit.
struct Limits {
    std::optional<double> min;
    std::optional<double> max;
};

struct Tag {
    std::string name;
    Address address;
    FormatChoice format; // empty where the file says nothing
    std::string comment;
    Scaling scaling;
    Limits limits;
    int line = 0;         // where it stands in the file; 0: in none, its address was typed
    bool isRange = false; // typed as FIRST..LAST
};

} // namespace dov417

#endif
