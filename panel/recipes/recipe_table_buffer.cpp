// The buffer of a recipe, value by value.
#include <algorithm>

#include "panel/recipes/recipe_table.h"

namespace dov417 {

RecipeRow* RecipeTable::findParked(const RecipeKey& key)
{
    const auto row = std::find_if(parked_.begin(), parked_.end(), [&key](const RecipeRow& each) {
        return each.value.address == key.address && each.value.label.name == key.name;
    });
    return row == parked_.end() ? nullptr : &*row;
}

std::size_t RecipeTable::valuesOutside() const
{
    return static_cast<std::size_t>(std::count_if(
        rows_.begin(), rows_.end(), [](const RecipeRow& row) { return !whyOutside(row).empty(); }));
}

std::vector<RecipeRow> RecipeTable::rowsToSave() const
{
    std::vector<RecipeRow> all = rows_;
    all.insert(all.end(), parked_.begin(), parked_.end());
    for (std::size_t row = 0; row < all.size(); ++row)
        if (row >= rows_.size() || all.at(row).isOfFile)
            all.at(row).value.item = SharedItem(itemByAddress(library_, all.at(row).value.item));
    return all;
}

std::size_t RecipeTable::unwatchedInRecipe() const
{
    return static_cast<std::size_t>(std::count_if(
        parked_.begin(), parked_.end(), [](const RecipeRow& row) { return row.isInRecipe(); }));
}

bool RecipeTable::isChanged() const
{
    const auto isEdited = [](const RecipeRow& row) {
        return row.isWritable() && row.buffer != row.file;
    };
    return std::any_of(rows_.begin(), rows_.end(), isEdited) ||
           std::any_of(parked_.begin(), parked_.end(), isEdited);
}

RecipeCell RecipeTable::cellOf(std::size_t row) const
{
    const RecipeRow& each = rows_.at(row);
    return {{each.value.address, each.value.label.name},
            each.buffer,
            each.isOfFile ? std::make_shared<const PanelValue>(each.value) : nullptr,
            each.upload};
}

std::vector<RecipeCell> RecipeTable::buffer() const
{
    std::vector<RecipeCell> cells;
    for (std::size_t row = 0; row < rows_.size(); ++row)
        if (rows_.at(row).isInRecipe())
            cells.push_back(cellOf(row));
    for (const RecipeRow& row : parked_)
        if (row.isInRecipe())
            cells.push_back({{row.value.address, row.value.label.name},
                             row.buffer,
                             std::make_shared<const PanelValue>(row.value),
                             row.upload});
    return cells;
}

std::vector<RecipeCopyValue> RecipeTable::bufferToKeep() const
{
    std::vector<RecipeCopyValue> values;
    for (const std::vector<RecipeRow>* const rows : {&rows_, &parked_})
        for (const RecipeRow& row : *rows)
            if (row.isInRecipe())
                values.push_back(copyOf(library_, row, isDoubtful(row)));
    return values;
}

RecipeTakenUp RecipeTable::takenUp(const std::vector<RecipeCopyValue>& values) const
{
    RecipeTakenUp taken;
    taken.cells = buffer();
    for (RecipeCell& cell : taken.cells) {
        cell.bytes.clear();
        cell.upload = 0;
    }
    std::unordered_multimap<std::string, const RecipeRow*> byName;
    for (const RecipeRow& row : rows_)
        byName.emplace(row.value.label.name, &row);
    for (const RecipeCopyValue& value : values) {
        const int upload = value.isDoubtful ? keptInDoubt : 0;
        const auto [first, last] = byName.equal_range(value.name);
        const auto same = std::find_if(first, last, [this, &value](const auto& each) {
            return isOf(library_, value, each.second->value);
        });
        if (same != last) {
            taken.cells.push_back(
                {{same->second->value.address, value.name}, value.bytes, nullptr, upload});
            continue;
        }
        try {
            const auto own = std::make_shared<const PanelValue>(valueByAddress(library_, value));
            taken.cells.push_back({{own->address, own->label.name}, value.bytes, own, upload});
            if (own->label.name != value.name)
                taken.others += QString::fromStdString(value.name);
        } catch (const UsageFailure& failure) {
            taken.problems += QString::fromUtf8(failure.what());
        }
    }
    return taken;
}

void RecipeTable::put(const std::vector<RecipeCell>& cells)
{
    for (const RecipeCell& cell : cells) {
        RecipeRow* row = find(cell.key);
        if (!row)
            row = findParked(cell.key);
        if (!row && cell.ofFile && !cell.bytes.empty()) {
            addRow(*cell.ofFile);
            row = &rows_.back();
            row->isOfFile = true;
        }
        if (!row)
            continue;
        row->buffer = cell.bytes;
        row->upload = cell.upload;
        row->fate = RecipeFate::none;
        markDoubt(*row);
    }
    dropEmptyRows();
}

void RecipeTable::dropEmptyRows()
{
    std::vector<RecipeRow> before;
    before.swap(rows_);
    places_.clear();
    for (RecipeRow& row : before)
        if (!row.isOfFile || !row.file.empty() || !row.buffer.empty()) {
            places_.emplace(row.value.address, rows_.size());
            rows_.push_back(std::move(row));
        }
}

} // namespace dov417
