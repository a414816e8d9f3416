// What a command works on: addresses from the command line and tags from a file, in one list.
#ifndef DOV417_SESSION_ITEMS_H
#define DOV417_SESSION_ITEMS_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "text/addresses.h"
#include "text/tags.h"
#include "text/values.h"

namespace dov417 {

struct Item {
    std::string name; // the tag's, or the address in full
    Address address;
    Format format;
    std::string comment;
    Limits limits = {};
    Format ofLimits = {};                    // the tag's own, in which they are written
    std::optional<Width> widthOfLimits = {}; // of the tag's own values; none where it has no tag
};

// Throws a UsageFailure where one of these values lies outside the item's limits.
void requireWithinLimits(const Item& item, const std::vector<unsigned char>& bytes);

// Where items are looked up, and how their values are written. Each may be empty.
struct ItemSource {
    std::string tags;      // a tag file
    std::string format;    // wins over a tag's own
    std::string wordOrder; // of 32-bit values
    Remark remark = {};    // takes what the tag file says in vain
};

// Why a text without a colon names nothing; empty where it may be an address.
std::string whyNotFound(const Library& library, const std::string& text,
                        const std::string& tagFile);

// Reads the tag file, if there is one, and finds items in it or by their address.
class Items {
public:
    // Throws a UsageFailure if a text of the source is wrong.
    Items(const Library& library, const ItemSource& source);
    // Of tags that were read already, by whatever way; they stand in a file.
    Items(const Library& library, const std::vector<Tag>& tags);

    // A tag name, one of its values as in "block[2]", or an address, each with "@FORMAT" appended
    // if it is to have a format of its own. Throws a UsageFailure.
    Item find(const std::string& text, Access access) const;
    // The same, and every tag that a name with * or ? stands for. Throws a UsageFailure if that is
    // none, or if it is to be written.
    std::vector<Item> findAll(const std::string& text, Access access) const;

    // What these texts name; every tag if there are none. Throws a UsageFailure if that is nothing,
    // or if --format fits none of it: what is read and does not fit keeps its own format.
    std::vector<Item> chosen(const std::vector<std::string>& texts, Access access) const;

    // Every tag of the file.
    std::vector<Item> tagged(Access access) const;

private:
    // wish: what was typed with it, which has to fit.
    Item made(const Tag& tag, const FormatChoice& wish, Access access) const;
    // A text, and the format behind it.
    std::pair<std::string, FormatChoice> wished(const std::string& text) const;
    std::optional<Item> named(const std::string& name, const FormatChoice& wish,
                              Access access) const;
    // Throws a UsageFailure where --format fits none of them.
    void requireUse(const std::vector<Item>& items) const;

    const Library& library_;
    ItemSource source_;
    FormatChoice format_;
    std::vector<Tag> tags_;
};

std::vector<Address> addressesOf(const std::vector<Item>& items);

// The merge gap is the driver's piece limit too. Throws a UsageFailure where a run of 32-bit values
// would be cut inside a value.
void requireUntornValues(const Library& library, const std::vector<Item>& items, int gap);

} // namespace dov417

#endif
