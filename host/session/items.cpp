#include "session/items.h"

#include <algorithm>
#include <charconv>

#include "session/pieces.h"
#include "text/address_values.h"
#include "text/wildcards.h"

namespace dov417 {

Items::Items(const Library& library, const ItemSource& source)
    : library_(library), source_(source), format_(parseFormat(source.format))
{
    if (!source.wordOrder.empty())
        format_.order = parseWordOrder(source.wordOrder);
    if (!source.tags.empty())
        tags_ = readTags(library, source.tags, source.remark);
}

Items::Items(const Library& library, const std::vector<Tag>& tags) : library_(library), tags_(tags)
{
}

namespace {

// Two double words that a format takes for one value; as it is where they are no whole number of
// those.
Address inFourWords(const Library& library, const Address& address, bool mayGrow)
{
    Address four = address;
    if (mayGrow && address.length == unitsOf(Width::doubleWord)) {
        const std::string first = addressText(library, address.regName, address.first);
        four = parseAddress(library, address.station, address.regName, first, 2);
    }
    if (address.width != Width::doubleWord || four.length % unitsOf(Width::quadWord) != 0)
        return address;
    four.width = Width::quadWord;
    return four;
}

FormatChoice merged(const FormatChoice& first, const FormatChoice& second)
{
    return {first.notation ? first.notation : second.notation,
            first.order ? first.order : second.order,
            first.byteOrder ? first.byteOrder : second.byteOrder};
}

} // namespace

Item Items::made(const Tag& tag, const FormatChoice& wish, Access access) const
{
    Item item;
    item.name = tag.name;
    item.address = tag.address;
    item.comment = tag.comment;
    item.limits = tag.limits;
    item.ofLimits = chosenFormat(tag.format, FormatChoice());
    item.ofLimits.scaling = tag.scaling;
    item.widthOfLimits = tag.address.width;
    const FormatChoice chosen = merged(wish, format_);
    try {
        requireAccess(library_, item.address, access);
        item.format = chosenFormat(chosen, tag.format);
        const bool isTyped = tag.line == 0 && !tag.isRange;
        if (needsFourWords(chosen) && item.address.width != Width::quadWord)
            item.address = inFourWords(library_, item.address, isTyped);
        item.address = asText(item.address, chosen);
        if (access == Access::read && !wish.notation && !fits(item.address.width, item.format))
            item.format = chosenFormat({std::nullopt, chosen.order, chosen.byteOrder}, tag.format);
        requireFormat(item.address.width, item.format);
        item.format.scaling.unit = tag.scaling.unit;
        if (isNumber(item.format.notation))
            item.format.scaling = tag.scaling;
        else
            item.format.scaling = Scaling();
    } catch (const AddressFailure&) {
        throw;
    } catch (const UsageFailure& failure) {
        throw UsageFailure(tag.name + ": " + failure.what());
    }
    if (tag.line == 0)
        item.name = toText(library_, item.address);
    return item;
}

// "block[2]" of the tag "block".
std::optional<Item> Items::named(const std::string& name, const FormatChoice& wish,
                                 Access access) const
{
    if (const Tag* const tag = findTag(tags_, name))
        return made(*tag, wish, access);
    const std::size_t bracket = name.rfind('[');
    if (bracket == std::string::npos || name.back() != ']')
        return std::nullopt;
    const Tag* const block = findTag(tags_, name.substr(0, bracket));
    if (!block)
        return std::nullopt;
    int index = -1;
    const char* const end = name.data() + name.size() - 1;
    const auto [stop, error] = std::from_chars(name.data() + bracket + 1, end, index);
    const int last = valueCount(block->address) - 1;
    if (error != std::errc() || stop != end || index < 0 || index > last)
        throw UsageFailure("'" + name + "': " + block->name + " has the values 0 to " +
                           std::to_string(last));
    Tag value = *block;
    value.name = name;
    value.address = valueOf(block->address, index);
    return made(value, wish, access);
}

void requireWithinLimits(const Item& item, const std::vector<unsigned char>& bytes)
{
    const Limits& limits = item.limits;
    if (!limits.min && !limits.max)
        return;
    const Width width = item.address.width;
    if (item.widthOfLimits.value_or(width) != width)
        throw UsageFailure(
            "its minimum and maximum are those of its own values, and in this format "
            "it has others");
    for (int i = 0; i < valueCount(item.address); ++i) {
        const unsigned char* const value = bytes.data() + byteCount(width, i);
        const double number = exactNumber(width, item.ofLimits, value);
        const bool isAbove = limits.max && !(number <= *limits.max);
        if (!isAbove && !(limits.min && !(number >= *limits.min)))
            continue;
        throw UsageFailure("value '" + valueTexts(width, item.ofLimits, value, 1).front() +
                           "': " + (isAbove ? "above the maximum, " : "below the minimum, ") +
                           limitText(isAbove ? *limits.max : *limits.min));
    }
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

std::pair<std::string, FormatChoice> Items::wished(const std::string& text) const
{
    const std::size_t at = text.rfind('@');
    if (at == std::string::npos || findTag(tags_, text)) // whatever its name holds
        return {text, FormatChoice()};
    if (at + 1 == text.size())
        throw UsageFailure(text + ": the format is missing after '@'");
    return {text.substr(0, at), parseFormat(text.substr(at + 1))};
}

Item Items::find(const std::string& text, Access access) const
{
    const auto [bare, wish] = wished(text);
    if (const std::optional<Item> item = named(bare, wish, access))
        return *item;
    if (const std::string why = whyNotFound(library_, bare, source_.tags); !why.empty())
        throw UsageFailure(why);
    Tag typed;
    typed.address = parseAddress(library_, bare);
    typed.name = toText(library_, typed.address);
    typed.isRange = bare.find("..") != std::string::npos;
    return made(typed, wish, access);
}

void Items::requireUse(const std::vector<Item>& items) const
{
    if (!format_.notation)
        return;
    const bool isUsed = std::any_of(items.begin(), items.end(), [this](const Item& item) {
        return item.format.notation == *format_.notation;
    });
    if (!isUsed)
        requireFormat(items.front().address.width, chosenFormat(format_, FormatChoice()));
}

std::vector<Item> Items::findAll(const std::string& text, Access access) const
{
    const auto [name, wish] = wished(text);
    if (tags_.empty() || !isWildcard(name) || findTag(tags_, name))
        return {find(text, access)};
    if (access == Access::write)
        throw UsageFailure("'" + name + "' stands for several tags; a write names each of them");
    std::vector<Item> items;
    for (const Tag& tag : matchingTags(tags_, name))
        items.push_back(made(tag, wish, access));
    if (items.empty())
        throw UsageFailure(source_.tags + " has no tag that '" + name + "' stands for");
    return items;
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
        for (const Item& item : findAll(argument, access))
            items.push_back(item);
    requireUse(items);
    return items;
}

std::vector<Item> Items::tagged(Access access) const
{
    if (tags_.empty())
        throw UsageFailure(source_.tags + " names no tag");
    std::vector<Item> items;
    for (const Tag& tag : tags_)
        items.push_back(made(tag, FormatChoice(), access));
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
        if (piece % unitsOf(item.address) != 0 && item.address.length > piece)
            throw UsageFailure("with a gap of " + std::to_string(gap) +
                               " the driver cuts writes into pieces of " + std::to_string(piece) +
                               " words, and a value of " + toText(library, item.address) +
                               " in two; take " +
                               (item.address.width == Width::text       ? "a gap"
                                : item.address.width == Width::quadWord ? "a multiple of 4 or a gap"
                                                                        : "an even gap or one") +
                               " of at least " + std::to_string(item.address.length));
}

} // namespace dov417
