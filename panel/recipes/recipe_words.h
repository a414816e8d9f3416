// What is told of a recipe as a whole.
#ifndef DOV417_PANEL_RECIPE_WORDS_H
#define DOV417_PANEL_RECIPE_WORDS_H

#include <QString>
#include <vector>

#include "panel/recipes/recipe_rows.h"

namespace dov417 {

QString recipeProgressText(const RecipeNews& news);
// rows: those that it was about.
QString recipeEndText(const RecipeNews& news, const std::vector<RecipeRow>& rows, bool isOfLine);

} // namespace dov417

#endif
