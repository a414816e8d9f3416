#include "session/items.h"

#include <algorithm>

#include "session/pieces.h"

namespace dov417 {

Items::Items(const Library& library, const ItemSource& source)
    : library_(library), source_(source), format_(parseFormat(source.format))
{
    if (!source.wordOrder.empty())
        format_.order = parseWordOrder(source.wordOrder);
    if (!source.tags.empty())
        tags_ = readTags(library, source.tags);
}

Item Items::made(const std::string& name, const Address& address, const FormatChoice& own,
                 const std::string& comment, Access access) const
{
    Item item;
    item.name = name;
    item.address = address;
    item.comment = comment;
    item.format = chosenFormat(format_, own);
    if (access == Access::read && !fits(address.width, item.format))
        item.format = chosenFormat({std::nullopt, format_.order}, own);
    try {
        requireAccess(library_, address, access);
        requireFormat(address.width, item.format);
    } catch (const AddressFailure&) {
        throw;
    } catch (const UsageFailure& failure) {
        throw UsageFailure(name + ": " + failure.what());
    }
    return item;
}

std::string whyNotFound(const Library& library, const std::string& text, const std::string& tagFile)
{
    if (text.find(':') != std::string::npos)
        return std::string();
    if (!tagFile.empty())
        return tagFile + " has no tag '" + text + "'";
    if (registerType(library, text))
        return std::string();
    return "'" + text +
           "' is no address, which is written R_W:100 or 2/M_bit:1.0..1.15; a tag needs its file, "
           "with --tags FILE";
}

Item Items::find(const std::string& text, Access access) const
{
    if (const Tag* const tag = findTag(tags_, text))
        return made(tag->name, tag->address, tag->format, tag->comment, access);
    if (const std::string why = whyNotFound(library_, text, source_.tags); !why.empty())
        throw UsageFailure(why);
    const Address address = parseAddress(library_, text);
    return made(toText(library_, address), address, FormatChoice(), std::string(), access);
}

void Items::requireUse(const std::vector<Item>& items) const
{
    const bool isUsed = std::any_of(items.begin(), items.end(), [this](const Item& item) {
        return fits(item.address.width, chosenFormat(format_, FormatChoice()));
    });
    if (!isUsed)
        requireFormat(items.front().address.width, chosenFormat(format_, FormatChoice()));
}

std::vector<Item> Items::chosen(const std::vector<std::string>& texts, Access access) const
{
    if (texts.empty()) {
        if (source_.tags.empty())
            throw UsageFailure("no address given; one is written R_W:100 or 2/M_bit:1.0..1.15, "
                               "and --tags FILE names many");
        return tagged(access);
    }
    std::vector<Item> items;
    items.reserve(texts.size());
    for (const std::string& argument : texts)
        items.push_back(find(argument, access));
    requireUse(items);
    return items;
}

std::vector<Item> Items::tagged(Access access) const
{
    if (tags_.empty())
        throw UsageFailure(source_.tags + " names no tag");
    std::vector<Item> items;
    for (const Tag& tag : tags_)
        items.push_back(made(tag.name, tag.address, tag.format, tag.comment, access));
    requireUse(items);
    return items;
}

std::vector<Address> addressesOf(const std::vector<Item>& items)
{
    std::vector<Address> addresses;
    addresses.reserve(items.size());
    for (const Item& item : items)
        addresses.push_back(item.address);
    return addresses;
}

void requireUntornValues(const Library& library, const std::vector<Item>& items, int gap)
{
    const int piece = gap < 1 ? maxWordsOfAWrite : gap;
    for (const Item& item : items)
        if (item.address.width == Width::doubleWord && piece % 2 != 0 &&
            item.address.length > piece)
            throw UsageFailure("with a gap of " + std::to_string(gap) +
                               " the driver cuts writes into pieces of " + std::to_string(piece) +
                               " words, and a 32-bit value of " + toText(library, item.address) +
                               " in two; take an even gap or one of at least " +
                               std::to_string(item.address.length));
}

} // namespace dov417
