// Tag files: CSV with the header name,station,register,address,count,format,comment. A tag gives
// an address a name, for every command alike.
#ifndef DOV417_TEXT_TAGS_H
#define DOV417_TEXT_TAGS_H

#include <string>
#include <vector>

#include "text/addresses.h"
#include "text/values.h"

namespace dov417 {

struct Tag {
    std::string name;
    Address address;
    FormatChoice format; // empty where the file says nothing
    std::string comment;
    int line = 0; // where it stands in the file
};

// Reads the whole file. The columns may come in any order; name, register and address must be
// there. An empty station is 1, an empty count one value. Empty lines do not count. Throws a
// UsageFailure that names file, line and column of the first mistake.
std::vector<Tag> readTags(const Library& library, const std::string& file);
// The same of the file's content; `file` names it in messages.
std::vector<Tag> parseTags(const Library& library, const std::string& text,
                           const std::string& file);

// Null if there is none of that name.
const Tag* findTag(const std::vector<Tag>& tags, const std::string& name);

} // namespace dov417

#endif
