// Tag files: CSV with the header name,station,register,address,count,format,comment and, for values
// as engineers have them, scale,offset,unit,decimals,min,max. A tag gives an address a name, for
// every command alike.
#ifndef DOV417_TEXT_TAGS_H
#define DOV417_TEXT_TAGS_H

#include <optional>
#include <string>
#include <vector>

#include "text/addresses.h"
#include "text/values.h"

namespace dov417 {

// In the tag's unit.
struct Limits {
    std::optional<double> min;
    std::optional<double> max;
};
std::string limitText(double limit);

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

// Reads the whole file, as spreadsheets write it: fields end with a comma, a semicolon or a tab, as
// the header's do, and where that is no comma, numbers may have one for their point. The columns
// may come in any order and be written in any case, others besides are left alone; name, register
// and address must be there. An empty station is 1, an empty count one value. Empty lines and those
// that begin with # do not count. Throws a UsageFailure that names file, line and column of the
// first mistake.
std::vector<Tag> readTags(const Library& library, const std::string& file);
// The same of the file's content; `file` names it in messages.
std::vector<Tag> parseTags(const Library& library, const std::string& text,
                           const std::string& file);

// The tags that a name with * or ? stands for, in the order of the file.
std::vector<Tag> matchingTags(const std::vector<Tag>& tags, const std::string& wildcard);

// Null if there is none of that name.
const Tag* findTag(const std::vector<Tag>& tags, const std::string& name);

} // namespace dov417

#endif
