// What is edited in the buffer: taken back step by step, and lost only when a person says so.
#include <QFileInfo>
#include <QMessageBox>
#include <QScopedValueRollback>

#include "panel/recipes/recipes_page.h"

namespace dov417 {

void RecipesPage::forgetRecipe()
{
    history_.clear();
    path_.clear();
    bufferFile_.clear();
    fileHash_.clear();
    namedFile_.clear();
    model_.makeAnew([this]() { recipe_.clear(); });
    result_->clear();
    emit unsavedChanged();
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
    if (!hasUnsaved())
        return true;
    const auto values = static_cast<int>(recipe_.valuesInRecipe() + recipe_.unwatchedInRecipe());
    const QString name = QFileInfo(path_).fileName();
    const QString question = path_.isEmpty() ? tr("Save it?")
                             : isOfPath()
                                 ? tr("Save it in %1?").arg(name)
                                 : tr("It is not of %1. Save it in a file of its own?").arg(name);
    const auto answer = QMessageBox::question(
        window(), tr("The recipe is not saved"),
        tr("The recipe in the buffer, of %n value(s), is not saved.", nullptr, values) +
            QLatin1Char(' ') + question,
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    if (answer == QMessageBox::Save)
        return isOfPath() ? saveInPath() : chooseFileToSave();
    return answer == QMessageBox::Discard;
}

bool RecipesPage::isOfPath() const
{
    return !path_.isEmpty() && path_ == bufferFile_;
}

// ---- steps ----------------------------------------------------------------------------------

QUndoStack* RecipesPage::ownHistory()
{
    return &history_;
}

void RecipesPage::change(const QString& what, const std::function<void()>& todo)
{
    const RecipeState before{recipe_.buffer(), bufferFile_};
    {
        const QScopedValueRollback<bool> changing(isChanging_, true);
        todo();
    }
    keepStep(what, before, {recipe_.buffer(), bufferFile_});
}

void RecipesPage::keepStep(const QString& what, const RecipeState& before, const RecipeState& after)
{
    auto step = std::make_unique<RecipeChange>(
        what, before, after,
        [this](const std::vector<RecipeCell>& cells, const QString* file) { put(cells, file); });
    if (!step->isNothing())
        history_.push(step.release());
    emit unsavedChanged();
}

// Shows where it was.
void RecipesPage::put(const std::vector<RecipeCell>& cells, const QString* file)
{
    settleTags();
    if (file)
        bufferFile_ = *file;
    model_.makeAnew([&]() { recipe_.put(cells); });
    look();
    showState();
    emit unsavedChanged();
    if (cells.empty())
        return; // another file of the same values
    const int row = model_.rowOf(cells.front().key);
    if (row >= 0)
        table_->setCurrentIndex(filter_.mapFromSource(model_.index(row, RecipeModel::buffer)));
}

} // namespace dov417
