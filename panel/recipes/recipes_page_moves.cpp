// What moves between buffer and controller.
#include <QMessageBox>

#include "panel/recipes/recipe_words.h"
#include "panel/recipes/recipes_page.h"

namespace dov417 {

bool RecipesPage::mayDownload(int line, std::size_t values)
{
    const QString controller =
        desk_.state().isSimulated
            ? tr("the simulated controller")
            : tr("the controller on %1").arg(QString::fromStdString(desk_.state().port));
    const auto answer = QMessageBox::question(
        this, tr("Download a recipe"),
        tr("Write %n value(s) of the buffer to %1?", nullptr, static_cast<int>(values))
            .arg(controller),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    return answer == QMessageBox::Yes && line == desk_.lineNumber();
}

void RecipesPage::move(RecipeKind kind)
{
    settleTags();
    // What is asked about is what goes out, and to this line alone.
    const int line = desk_.lineNumber();
    try {
        const std::vector<RecipeShare> shares = recipe_.shares(kind);
        std::vector<RecipeEntry> entries;
        std::size_t values = 0;
        for (const RecipeShare& share : shares) {
            entries.push_back(share.entry);
            values += share.values.size();
        }
        if (kind == RecipeKind::upload && !mayReplaceBuffer())
            return;
        if (kind == RecipeKind::download && !mayDownload(line, values))
            return;
        order_ = desk_.moveRecipe(line, kind, entries);
        orderLine_ = line;
        shares_ = shares;
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return;
    }
    emit told(QString());
    recipe_.began(shares_, kind);
    model_.tellChanges();
    RecipeNews begun;
    begun.kind = kind;
    begun.isReadingBack = kind == RecipeKind::read;
    showProgress(begun);
    showState();
}

void RecipesPage::hear(const RecipeNews& news)
{
    if (order_ == 0 || news.number != order_)
        return;
    settleTags();
    if (!news.hasEnded) {
        showProgress(news);
        return;
    }
    const bool isOfLine = orderLine_ == desk_.lineNumber();
    change(tr("upload into the recipe"), [&]() { recipe_.ended(shares_, news, isOfLine); });
    order_ = 0;
    showEnd(news, isOfLine);
    shares_.clear();
    look();
    model_.tellChanges();
    showState();
}

void RecipesPage::showProgress(const RecipeNews& news)
{
    const auto all = static_cast<int>(news.progress.allWords + news.progress.allBits);
    progress_->setRange(0, news.isReadingBack ? 0 : all); // 0: it is not known how much is left
    progress_->setValue(static_cast<int>(news.progress.words + news.progress.bits));
    progress_->show();
    cancel_->show();
    cancel_->setEnabled(!news.isCancelled || news.isReadingBack);
    result_->setText(recipeProgressText(news));
}

void RecipesPage::showEnd(const RecipeNews& news, bool isOfLine)
{
    progress_->hide();
    cancel_->hide();
    std::vector<RecipeRow> rows;
    for (const RecipeRow& row : recipe_.rows())
        if (row.fate != RecipeFate::none)
            rows.push_back(row);
    result_->setText(recipeEndText(news, rows, isOfLine));
}

} // namespace dov417
