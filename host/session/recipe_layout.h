// Where the values of a recipe lie: on the controller and in the buffer that the driver moves.
#ifndef DOV417_SESSION_RECIPE_LAYOUT_H
#define DOV417_SESSION_RECIPE_LAYOUT_H

#include <cstddef>
#include <vector>

#include "session/whole_values.h"
#include "text/addresses.h"

namespace dov417 {

// A run of words of one register type and its place in the recipe buffer.
struct RecipeRecord {
    Address address;
    int bufferOffset = 0; // in words
};

// The driver joins touching runs up to 128 words, more than one request may write on a strict
// controller. Records that touch therefore go in different rounds.
struct RecipeLayout {
    std::vector<std::vector<RecipeRecord>> rounds;
    std::size_t bufferWords = 0;
    WholeValues wholeValues; // no request ends within one

    // Place of a word in the buffer; the word must lie in one of the addresses laid out.
    std::size_t offsetOf(const Address& address) const;
};

// Lays out word addresses; those that overlap or touch share their words.
RecipeLayout layOutRecipe(const std::vector<Address>& addresses);

} // namespace dov417

#endif
