#include "panel/recipes/recipe_rows.h"

#include "text/address_values.h"

namespace dov417 {

namespace {

bool isMoved(const RecipeRow& row, RecipeKind kind)
{
    switch (kind) {
    case RecipeKind::read:
        return true;
    case RecipeKind::upload:
        return row.isWritable();
    case RecipeKind::download:
        return row.isInRecipe();
    }
    return false;
}

bool isSameItem(const PanelValue& a, const PanelValue& b)
{
    return a.item->name == b.item->name && a.item->address == b.item->address && a.place == b.place;
}

void addValue(RecipeShare& share, const RecipeRow& row)
{
    share.values.push_back({row.value.address, row.value.label.name});
    share.entry.data.insert(share.entry.data.end(), row.buffer.begin(), row.buffer.end());
}

// One value under its own name.
RecipeShare shareOfValue(const Library& library, const RecipeRow& row)
{
    RecipeShare share;
    share.entry.item = row.value.item;
    share.entry.item.address = row.value.address;
    share.entry.item.name =
        isTag(library, row.value.item) ? row.value.label.name : toText(library, row.value.address);
    addValue(share, row);
    return share;
}

} // namespace

ValueBytes sliceOf(const std::vector<unsigned char>& data, const Address& address,
                   std::size_t value)
{
    const auto size = static_cast<std::ptrdiff_t>(byteCount(valueOf(address, 0)));
    const auto from = data.begin() + static_cast<std::ptrdiff_t>(value) * size;
    return {from, from + size};
}

bool isTag(const Library& library, const Item& item)
{
    return item.name != toText(library, item.address);
}

std::vector<RecipeShare> recipeShares(const Library& library, const std::vector<RecipeRow>& rows,
                                      RecipeKind kind)
{
    std::vector<RecipeShare> shares;
    for (std::size_t first = 0; first < rows.size();) {
        const PanelValue& value = rows.at(first).value;
        const auto count = static_cast<std::size_t>(valueCount(value.item->address));
        RecipeShare whole{{value.item, {}}, {}};
        std::size_t end = first;
        bool isWhole = value.address == valueOf(value.item->address, 0);
        for (; end < rows.size() && end - first < count && isSameItem(rows.at(end).value, value);
             ++end) {
            isWhole = isWhole && isMoved(rows.at(end), kind);
            addValue(whole, rows.at(end));
        }
        if (isWhole && end - first == count) {
            shares.push_back(whole);
        } else {
            for (std::size_t row = first; row < end; ++row)
                if (isMoved(rows.at(row), kind))
                    shares.push_back(shareOfValue(library, rows.at(row)));
        }
        first = end;
    }
    return shares;
}

std::vector<RecipeEntry> entriesOf(const std::vector<RecipeShare>& shares)
{
    std::vector<RecipeEntry> entries;
    entries.reserve(shares.size());
    for (const RecipeShare& share : shares)
        entries.push_back(share.entry);
    return entries;
}

std::string whyOutside(const RecipeRow& row)
{
    if (!row.isInRecipe())
        return std::string();
    Item one = row.value.item;
    one.address = row.value.address;
    try {
        requireWithinLimits(one, row.buffer);
    } catch (const UsageFailure& failure) {
        return failure.what();
    }
    return std::string();
}

void requireBuffersWithinLimits(const std::vector<RecipeRow>& rows)
{
    for (const RecipeRow& row : rows)
        if (const std::string why = whyOutside(row); !why.empty())
            throw UsageFailure(row.value.label.name + ": " + why);
}

Item itemByAddress(const Library& library, const Item& item)
{
    Item plain = item;
    plain.name = toText(library, item.address);
    if (isTag(library, item))
        plain.format = item.ofLimits;
    plain.format.scaling = Scaling();
    return plain;
}

Item itemInFile(const Library& library, const Item& item)
{
    Item named = item;
    if (!isTag(library, item)) {
        // That four words are one value is for the format to say, and hex alone does not.
        if (item.address.width == Width::quadWord && !isNumber(item.format.notation))
            named.format.notation = Notation::uint64;
        const std::string format = formatText(named.format);
        if (format != formatText(Format()))
            named.name += "@" + format;
        return named;
    }
    const bool isOwn =
        item.format.notation == item.ofLimits.notation && item.format.order == item.ofLimits.order;
    named.format = item.ofLimits;
    if (!isOwn && item.address.width != Width::bit && item.address.width != Width::text) {
        // Shown otherwise here: the bits as they are, which every format reads the same.
        named.format = Format();
        named.format.notation = Notation::hex;
        named.format.order = item.ofLimits.order;
    }
    return named;
}

} // namespace dov417
