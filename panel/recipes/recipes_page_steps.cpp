// What is edited in the buffer: taken back step by step, and lost only when a person says so.
#include <QMessageBox>
#include <QScopedValueRollback>

#include "panel/recipes/recipes_page.h"

namespace dov417 {

void RecipesPage::forgetRecipe()
{
    history_.clear();
    path_.clear();
    model_.makeAnew([this]() { recipe_.clear(); });
    result_->clear();
}

// What is under way was another machine's.
void RecipesPage::beginProject()
{
    order_ = 0;
    shares_.clear();
    progress_->hide();
    cancel_->hide();
    forgetRecipe();
    model_.makeAnew([this]() { recipe_.setTags(PanelTags()); });
}

bool RecipesPage::mayForget()
{
    settleTags();
    const auto values = static_cast<int>(recipe_.valuesInRecipe());
    if (!recipe_.isChanged() || values == 0)
        return true;
    const auto answer = QMessageBox::question(
        window(), tr("The recipe is not saved"),
        tr("The recipe in the buffer, of %n value(s), is not saved. Save it?", nullptr, values),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    if (answer == QMessageBox::Save)
        return path_.isEmpty() ? chooseFileToSave() : saveFile(path_);
    return answer == QMessageBox::Discard;
}

// ---- steps ----------------------------------------------------------------------------------

QUndoStack* RecipesPage::ownHistory()
{
    return &history_;
}

void RecipesPage::change(const QString& what, const std::function<void()>& todo)
{
    const std::vector<RecipeCell> before = recipe_.buffer();
    {
        const QScopedValueRollback<bool> changing(isChanging_, true);
        todo();
    }
    keepStep(what, before, recipe_.buffer());
}

void RecipesPage::keepStep(const QString& what, const std::vector<RecipeCell>& before,
                           const std::vector<RecipeCell>& after)
{
    auto step = std::make_unique<RecipeChange>(
        what, before, after, [this](const std::vector<RecipeCell>& cells) { put(cells); });
    if (!step->isNothing())
        history_.push(step.release());
}

// Shows where it was.
void RecipesPage::put(const std::vector<RecipeCell>& cells)
{
    settleTags();
    model_.makeAnew([&]() { recipe_.put(cells); });
    look();
    showState();
    const int row = model_.rowOf(cells.front().key);
    if (row >= 0)
        table_->setCurrentIndex(filter_.mapFromSource(model_.index(row, RecipeModel::buffer)));
}

} // namespace dov417
