// Names that a file may not give to two things.
#ifndef DOV417_TEXT_TAG_NAMES_H
#define DOV417_TEXT_TAG_NAMES_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "text/tag.h"

namespace dov417 {

// A tag that is called as one value of another is, which has several: "block[2]" beside "block".
// Lists would have two values of one name, and a write by it two places.
struct NameClash {
    std::size_t tag = 0; // its place among the tags
    std::string why;
};

// The first of them.
std::optional<NameClash> clashOf(const std::vector<Tag>& tags);

} // namespace dov417

#endif
