// A recipe's values from a file and into one.
#include <algorithm>
#include <map>

#include "live/project.h"
#include "panel/recipes/recipe_table.h"
#include "session/recipe_file.h"
#include "session/recipe_wishes.h"
#include "text/address_values.h"

namespace dov417 {

namespace {

bool isProject(const std::string& file)
{
    try {
        readProject(file);
        return true;
    } catch (const Failure&) {
        return false; // whatever else it is
    }
}

} // namespace

// A tag of the table, one of its values, or an address in full.
Item RecipeTable::find(const std::string& name) const
{
    const RecipeRow* found = nullptr;
    for (const RecipeRow& row : rows_) {
        if (!isTag(library_, row.value.item))
            continue;
        const bool isWhole = row.value.item->name == name;
        if (!isWhole && row.value.label.name != name)
            continue;
        if (found && isWhole && !(found->value.item->address == row.value.item->address))
            throw UsageFailure(tr("several values are called so here").toStdString());
        if (found && !isWhole)
            throw UsageFailure(tr("several values are called so here").toStdString());
        found = &row;
    }
    if (!found) {
        if (name.find(':') == std::string::npos)
            throw UsageFailure(tr("no value is called so here").toStdString());
        return Items(library_, ItemSource()).find(name, Access::read);
    }
    Item item = found->value.item;
    item.format = item.ofLimits;
    if (item.name != name) {
        item.name = name;
        item.address = found->value.address;
    }
    return item;
}

// Of a value that a file names; behind the last where nobody watches it.
std::size_t RecipeTable::placeOf(const Address& address, const std::string& itemName) const
{
    std::size_t found = rows_.size();
    const auto [first, last] = places_.equal_range(address);
    for (auto place = first; place != last; ++place) {
        const PanelValue& value = rows_.at(place->second).value;
        if (value.item->name == itemName || value.label.name == itemName)
            return place->second;
        found = std::min(found, place->second);
    }
    return found;
}

std::size_t RecipeTable::load(const std::string& file)
{
    // What lies outside is a matter of what goes out, and may come in.
    std::vector<Limits> limits;
    std::vector<RecipeEntry> entries = readRecipe(file, [&](const std::string& name) {
        Item item = find(name);
        limits.push_back(item.limits);
        item.limits = Limits();
        return item;
    });
    for (std::size_t i = 0; i < entries.size(); ++i)
        entries.at(i).item.limits = limits.at(i);
    clear();
    std::size_t locked = 0;
    for (const RecipeEntry& entry : entries) {
        const PanelTags tags = panelTags(library_, {entry.item});
        std::size_t index = 0;
        for (const PanelValue& value : tags.values) {
            const std::size_t place = placeOf(value.address, entry.item.name);
            if (place == rows_.size()) {
                addRow(value);
                rows_.back().isOfFile = true;
            }
            RecipeRow& row = rows_.at(place);
            row.file = sliceOf(entry.data, entry.item.address, index++);
            if (row.isWritable())
                row.buffer = row.file;
            else
                ++locked;
        }
    }
    return locked;
}

void RecipeTable::save(const std::string& file)
{
    if (isProject(file))
        throw UsageFailure(tr("%1 is a project; name another file, as it would be lost")
                               .arg(QString::fromStdString(file))
                               .toStdString());
    std::vector<RecipeEntry> entries;
    std::map<std::string, std::size_t> names;
    const std::vector<RecipeShare> all = recipeShares(library_, rowsToSave(), RecipeKind::download);
    if (all.empty())
        throw UsageFailure(tr("the buffer is empty").toStdString());
    requireOneWish(entriesOf(all));
    requireNoDoubt();
    for (const RecipeShare& share : all) {
        const RecipeEntry entry{itemInFile(library_, share.entry.item), share.entry.data};
        const auto [same, isNew] = names.try_emplace(entry.item.name, entries.size());
        if (isNew)
            entries.push_back(entry);
        else if (!(entries.at(same->second).item.address == entry.item.address) ||
                 entries.at(same->second).data != entry.data)
            throw UsageFailure(
                tr("two values are called %1, and a recipe file has room for one of a name")
                    .arg(QString::fromStdString(entry.item.name))
                    .toStdString());
    }
    writeRecipe(file, entries);
    for (std::vector<RecipeRow>* const rows : {&rows_, &parked_})
        for (RecipeRow& row : *rows)
            row.file = row.buffer;
}

} // namespace dov417
