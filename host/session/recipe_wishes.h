// What the entries of a recipe want of each place of the controllers.
#ifndef DOV417_SESSION_RECIPE_WISHES_H
#define DOV417_SESSION_RECIPE_WISHES_H

#include <vector>

#include "session/recipe_job.h"

namespace dov417 {

// Throws a UsageFailure where two entries want different things of one place: which of them the
// controller would hold in the end would be a guess.
void requireOneWish(const std::vector<RecipeEntry>& entries);

} // namespace dov417

#endif
