#include "panel/recipes/recipe_change.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace dov417 {

namespace {

struct RecipeKeyOrder {
    bool operator()(const RecipeKey& a, const RecipeKey& b) const
    {
        const auto parts = [](const RecipeKey& key) {
            return std::tie(key.address.station, key.address.regName, key.address.first,
                            key.address.length, key.address.width, key.name);
        };
        return parts(a) < parts(b);
    }
};

using CellsByKey = std::map<RecipeKey, RecipeCell, RecipeKeyOrder>;

CellsByKey byKey(const std::vector<RecipeCell>& cells)
{
    CellsByKey all;
    for (const RecipeCell& cell : cells)
        all.emplace(cell.key, cell);
    return all;
}

// Those of `cells` that `others` have otherwise, and as empty ones those that only `others` have.
std::vector<RecipeCell> differences(const CellsByKey& cells, const CellsByKey& others)
{
    std::vector<RecipeCell> different;
    for (const auto& [key, cell] : cells)
        if (const auto other = others.find(key);
            other == others.end() || other->second.bytes != cell.bytes)
            different.push_back(cell);
    for (const auto& [key, other] : others)
        if (cells.count(key) == 0 && !other.bytes.empty())
            different.push_back({key, {}, other.ofFile});
    return different;
}

} // namespace

RecipeChange::RecipeChange(const QString& what, const RecipeState& before, const RecipeState& after,
                           const Put& put)
    : QUndoCommand(what), fileBefore_(before.file), fileAfter_(after.file), put_(put)
{
    const CellsByKey old = byKey(before.cells);
    const CellsByKey now = byKey(after.cells);
    before_ = differences(old, now);
    after_ = differences(now, old);
}

void RecipeChange::undo()
{
    put_(before_, isOfOtherFile() ? &fileBefore_ : nullptr);
}

void RecipeChange::redo()
{
    if (!isDone_)
        put_(after_, isOfOtherFile() ? &fileAfter_ : nullptr);
    isDone_ = false;
}

} // namespace dov417
