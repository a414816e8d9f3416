// One step of what was edited in a recipe's buffer.
#ifndef DOV417_PANEL_RECIPE_CHANGE_H
#define DOV417_PANEL_RECIPE_CHANGE_H

#include <QString>
#include <QUndoCommand>
#include <functional>
#include <vector>

#include "panel/recipes/recipe_rows.h"

namespace dov417 {

struct RecipeState {
    std::vector<RecipeCell> cells;
    QString file; // that they are of
};

class RecipeChange : public QUndoCommand {
public:
    // The file that the buffer is of then; null: as before, whichever it is by now.
    using Put = std::function<void(const std::vector<RecipeCell>&, const QString* file)>;
    // The cells that are different, as they were and as they are, and the file they are of. `put`
    // makes the buffer so.
    RecipeChange(const QString& what, const RecipeState& before, const RecipeState& after,
                 const Put& put);

    // All that both name is the same.
    bool isNothing() const
    {
        return before_.empty() && after_.empty() && !isOfOtherFile();
    }
    void undo() override;
    void redo() override;

private:
    bool isOfOtherFile() const
    {
        return fileBefore_ != fileAfter_;
    }

    std::vector<RecipeCell> before_;
    std::vector<RecipeCell> after_;
    const QString fileBefore_;
    const QString fileAfter_;
    const Put put_;
    bool isDone_ = true; // when it is made
};

} // namespace dov417

#endif
