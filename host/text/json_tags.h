// Tags in JSON, as a project file has them: a list of objects with the columns of a tag file.
#ifndef DOV417_TEXT_JSON_TAGS_H
#define DOV417_TEXT_JSON_TAGS_H

#include <string>
#include <vector>

#include "text/placed_json.h"
#include "text/tag_columns.h"

namespace dov417 {

// Version of the file format. Raised whenever line, stations or tags learn a member; what a member
// means never changes.
constexpr int projectVersion = 1;
constexpr const char* versionMember = "version";
constexpr const char* tagsMember = "tags";

// Its version is more than is known here: there may be more in it.
bool isNewer(const PlacedJson& file);
// Which file it is and what becomes of it, for whoever gave it.
std::string newerSentence(const PlacedJson& file);

struct JsonTag {
    TagTexts texts;
    OrderedJson others = OrderedJson::object(); // members of a newer file
    std::string path;                           // where it was read; empty for a new one
};

// What the list says; without one, nothing. Throws a UsageFailure with the place of a mistake,
// which a member that is no column is, unless the file is newer.
std::vector<JsonTag> jsonTags(const PlacedJson& file);

// Throws a UsageFailure where a text is no number and should be one.
OrderedJson toJson(const JsonTag& tag);

// What they mean. Throws a UsageFailure with the place of a mistake; `file` may be null: then it
// names the tag.
std::vector<Tag> tagsOf(const Library& library, const std::vector<JsonTag>& tags,
                        const PlacedJson* file);

} // namespace dov417

#endif
