// One step of what was edited in a recipe's buffer.
#ifndef DOV417_PANEL_RECIPE_CHANGE_H
#define DOV417_PANEL_RECIPE_CHANGE_H

#include <QUndoCommand>
#include <functional>
#include <vector>

#include "panel/recipes/recipe_rows.h"

namespace dov417 {

class RecipeChange : public QUndoCommand {
public:
    using Put = std::function<void(const std::vector<RecipeCell>&)>;
    // The cells that are different, as they were and as they are. `put` makes the buffer so.
    RecipeChange(const QString& what, const std::vector<RecipeCell>& before,
                 const std::vector<RecipeCell>& after, const Put& put);

    // All that both name is the same.
    bool isNothing() const
    {
        return before_.empty() && after_.empty();
    }
    void undo() override;
    void redo() override;

private:
    std::vector<RecipeCell> before_;
    std::vector<RecipeCell> after_;
    const Put put_;
    bool isDone_ = true; // when it is made
};

} // namespace dov417

#endif
