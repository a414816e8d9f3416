// Recipes as files: JSON, tag name -> value or list of values, written as the tag's format says.
//
//   { "speed": 1500, "preset": [1, 2, 3], "mask": "0x00FF" }
//
// A number is decimal whatever the format is; texts are read as they are typed.
#ifndef DOV417_SESSION_RECIPE_FILE_H
#define DOV417_SESSION_RECIPE_FILE_H

#include <functional>
#include <string>
#include <vector>

#include "session/recipe_job.h"

namespace dov417 {

// The entries that the file names, in its order; - is the standard input. Throws a UsageFailure
// that names the file, and the tag or the place, of the first mistake; two entries that want
// different things of one place are one.
std::vector<RecipeEntry> readRecipe(const std::string& file, const Items& items);
// The same where names are looked up elsewhere; `find` throws a UsageFailure where it knows none.
using FindItem = std::function<Item(const std::string& name)>;
std::vector<RecipeEntry> readRecipe(const std::string& file, const FindItem& find);

// Throws a Failure if the file cannot be written; an older file is then left as it was. - is the
// standard output.
void writeRecipe(const std::string& file, const std::vector<RecipeEntry>& entries);

} // namespace dov417

#endif
