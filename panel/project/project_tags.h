// The tags of a project, and what the panel watches: each made of the other.
//
// A project's tag has a name and a meaning that every program takes from it. What a person typed
// has no name: in a project it gets one that is made of its address, and loses it when it is read
// back. The format chosen for a tag with a scale or with limits, which belong to its own format,
// stands beside the tags.
#ifndef DOV417_PANEL_PROJECT_TAGS_H
#define DOV417_PANEL_PROJECT_TAGS_H

#include <string>
#include <vector>

#include "session/items.h"
#include "text/json_tags.h"

namespace dov417 {

// As they were read: what is not edited is written as it was.
struct KnownTags {
    std::vector<JsonTag> tags; // none where they stand in a tag file
    std::vector<Item> items;   // in their own formats, in the same order
    bool areInTagFile = false;
};

// What is to be written.
struct TagsToWrite {
    std::vector<JsonTag> tags;
    OrderedJson formats = OrderedJson::object(); // that are shown, by the tag's name
    bool areInTagFile = false;                   // nothing of them is different: it stays in use
};

// "R_W.100", "2/M_bit.1.0..1.15"
std::string nameOfAddress(const Library& library, const Address& address);

// In their own formats, and in those that are shown.
struct ItemsOfTags {
    std::vector<Item> own;
    std::vector<Item> shown;
};

// A format of a name that no tag has is nobody's. Throws a UsageFailure; one that is about a format
// is a ShownFormatFailure.
ItemsOfTags itemsOfTags(const Library& library, const std::vector<Tag>& tags,
                        const OrderedJson& formats);

// Of the format that is shown of a tag.
class ShownFormatFailure : public UsageFailure {
public:
    ShownFormatFailure(const std::string& tag_, const std::string& why)
        : UsageFailure(why), tag(tag_)
    {
    }
    std::string tag;
};

// Throws a Failure that names the tag which no tag can be.
TagsToWrite tagsOfItems(const Library& library, const std::vector<Item>& items,
                        const KnownTags& known);

bool isSame(const Item& a, const Item& b);

} // namespace dov417

#endif
