// The values of a recipe one by one, and what is moved of them as one. Pure.
#ifndef DOV417_PANEL_RECIPE_ROWS_H
#define DOV417_PANEL_RECIPE_ROWS_H

#include <memory>
#include <string>
#include <vector>

#include "panel/desk/panel_tags.h"
#include "panel/desk/recipe_order.h"

namespace dov417 {

enum class RecipeFate {
    none,
    waiting, // under way
    read,
    written,   // and read back
    different, // taken, and reads back as another value
    held,      // the controller holds the value, perhaps not by this transfer
    notHeld,   // whether it was taken or not
    unknown    // see the row's reason
};

struct RecipeRow {
    PanelValue value;
    bool isOfFile = false; // a file names it, and nobody watches it
    // Bytes of the value; empty: not known, not in the file, not in the recipe.
    ValueBytes controller;
    ValueBytes file;
    ValueBytes buffer;
    Clock::time_point readAt{}; // the controller's
    bool isCurrent = false;     // it is polled, and was good when it was last looked at
    RecipeFate fate = RecipeFate::none;
    std::string reason;
    int upload = 0; // that the buffer is of; 0: typed, or of a file

    bool isInRecipe() const
    {
        return !buffer.empty();
    }
    bool isWritable() const
    {
        return value.locked.empty();
    }
};

// How a value is found again, whatever is watched meanwhile.
struct RecipeKey {
    Address address;
    std::string name;
};

// What the buffer holds of a value; empty bytes: nothing.
struct RecipeCell {
    RecipeKey key;
    ValueBytes bytes;
    std::shared_ptr<const PanelValue> ofFile; // that nobody watches; else null
    int upload = 0;                           // as its row has it
};

// What is moved as one, and its values.
struct RecipeShare {
    RecipeEntry entry;
    std::vector<RecipeKey> values;
};

// The rows' values item by item; an item that is not there as a whole value by value.
std::vector<RecipeShare> recipeShares(const Library& library, const std::vector<RecipeRow>& rows,
                                      RecipeKind kind);

std::vector<RecipeEntry> entriesOf(const std::vector<RecipeShare>& shares);

// Why the buffer's value lies outside the limits of what is watched there, whatever a file calls
// it; empty where it does not. A controller may hold such a value, and a copy of it keeps it.
std::string whyOutside(const RecipeRow& row);

// Throws a UsageFailure that names the first value of the buffer that lies outside its limits.
void requireBuffersWithinLimits(const std::vector<RecipeRow>& rows);

// Of an item's bytes those of one of its values.
ValueBytes sliceOf(const std::vector<unsigned char>& data, const Address& address,
                   std::size_t value);

// Has it a name of its own, which a file of tags explains?
bool isTag(const Library& library, const Item& item);

// Under its address: whoever reads the file may have no such tag.
Item itemByAddress(const Library& library, const Item& item);

// As a recipe file names it and writes its values, so that whoever reads it with the same tags, and
// with formats of his own, reads the same bytes.
Item itemInFile(const Library& library, const Item& item);

} // namespace dov417

#endif
