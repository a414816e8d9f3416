// A recipe's buffer as it is kept for the case that the program ends: value by value, each bound to
// what it was edited for. Pure.
#ifndef DOV417_PANEL_RECIPE_COPY_H
#define DOV417_PANEL_RECIPE_COPY_H

#include <string>
#include <vector>

#include "panel/recipes/recipe_rows.h"
#include "text/placed_json.h"

namespace dov417 {

struct RecipeCopyValue {
    std::string name;
    // In full, with what a recipe file says of its format.
    std::string address;
    // What the bytes meant under this name: the tag's own format and scale. {} of an address.
    OrderedJson meaning = OrderedJson::object();
    ValueBytes bytes;
    bool isDoubtful = false; // it may be another address's
};

struct RecipeCopy {
    std::string file;     // that the buffer is of; may be empty
    std::string fileHash; // of its text then
    std::vector<RecipeCopyValue> values;
};

RecipeCopyValue copyOf(const Library& library, const RecipeRow& row, bool isDoubtful);
// Is it still what was edited under this name? Its address is compared, too.
bool isOf(const Library& library, const RecipeCopyValue& value, const PanelValue& now);
// Of nobody's, by its address alone. Throws a UsageFailure where there is none such, or where its
// bytes are no value of it.
PanelValue valueByAddress(const Library& library, const RecipeCopyValue& value);

OrderedJson toJson(const RecipeCopy& copy);
// Throws a UsageFailure where it is none.
RecipeCopy recipeCopy(const OrderedJson& json);

} // namespace dov417

#endif
