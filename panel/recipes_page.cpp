#include "panel/recipes_page.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QVBoxLayout>

#include "panel/panel_icons.h"
#include "panel/recipe_words.h"

namespace dov417 {

namespace {

constexpr int lookPauseMs = 250;
const char* const recipeFileMember = "file";

} // namespace

RecipesPage::RecipesPage(PanelDesk& desk)
    : PanelPage(desk), recipe_(desk.library()), model_(recipe_), table_(new QTableView),
      load_(new QPushButton(tr("L&oad \u2026"))), save_(new QPushButton(tr("&Save \u2026"))),
      read_(new QPushButton(tr("&Read"))), upload_(new QPushButton(tr("&Upload"))),
      download_(new QPushButton(tr("&Download \u2026"))),
      takeOut_(new QPushButton(tr("&Take out"))), progress_(new QProgressBar), file_(new QLabel),
      result_(new QLabel)
{
    makeTable();
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(makeMoves());
    rows->addWidget(file_);
    rows->addWidget(makeTools());
    rows->addWidget(table_, 1);
    rows->addWidget(result_);
    rows->addWidget(progress_);
    for (QLabel* const label : {file_, result_})
        label->setWordWrap(true);
    result_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    file_->setObjectName(QStringLiteral("recipeFile"));
    result_->setObjectName(QStringLiteral("recipeResult"));
    result_->setAccessibleName(tr("What became of the recipe"));
    progress_->setObjectName(QStringLiteral("recipeProgress"));
    progress_->setAccessibleName(tr("How far the recipe has come"));
    progress_->hide();

    connect(&model_, &RecipeModel::refused, this, &PanelPage::told);
    connect(&model_, &RecipeModel::edited, this, [this]() {
        emit told(QString());
        showState();
    });
    connect(&desk, &PanelDesk::tagsChanged, this, [this]() { setTags(); });
    connect(&desk, &PanelDesk::recipeTold, this, &RecipesPage::hear);
    connect(&desk, &PanelDesk::lineBegan, this, [this]() {
        recipe_.forgetController();
        model_.tellChanges();
    });
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { showState(); });
    lookTimer_.setInterval(lookPauseMs);
    connect(&lookTimer_, &QTimer::timeout, this, [this]() {
        if (isVisible())
            look();
    });
    lookTimer_.start();
    setTags();
}

QString RecipesPage::title() const
{
    return tr("Recipes");
}

QIcon RecipesPage::icon() const
{
    return iconOf(PanelIcon::recipes);
}

// ---- what there is --------------------------------------------------------------------------

void RecipesPage::setTags()
{
    model_.makeAnew([this]() { recipe_.setTags(desk_.tags()); });
    showState();
}

void RecipesPage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    look();
}

void RecipesPage::look()
{
    if (!desk_.hasLine())
        recipe_.forgetController(); // whoever answers on the next line is not known
    else
        recipe_.look(desk_.book());
    table_->viewport()->update();
}

void RecipesPage::takeOut()
{
    for (const QModelIndex& index : table_->selectionModel()->selectedRows(RecipeModel::buffer))
        model_.setData(filter_.mapToSource(index), QString());
}

void RecipesPage::showState()
{
    const bool isIdle = order_ == 0;
    const auto values = static_cast<int>(recipe_.valuesInRecipe());
    const bool hasLine = desk_.hasLine();
    const bool isUnlocked = desk_.state().isUnlocked;
    load_->setEnabled(isIdle);
    save_->setEnabled(isIdle && values > 0);
    read_->setEnabled(isIdle && hasLine && !recipe_.rows().empty());
    upload_->setEnabled(isIdle && hasLine && !recipe_.rows().empty());
    download_->setEnabled(isIdle && hasLine && isUnlocked && values > 0);
    download_->setToolTip(isUnlocked || !hasLine
                              ? tr("From the buffer into the controller; then it is read back")
                              : tr("Writing is locked: unlock it in the status line"));
    takeOut_->setEnabled(isIdle && table_->selectionModel()->hasSelection());
    const QString changed = recipe_.isChanged() ? tr(" It is not saved.") : QString();
    const QString inBuffer = tr("%n value(s) in the buffer.", nullptr, values);
    file_->setText(
        recipe_.rows().empty()
            ? tr("A recipe is made of the values that are watched, and there are none: add them "
                 "on the page of values, or load a recipe of addresses.")
        : path_.isEmpty()
            ? tr("No file. %1%2 F2 or a double-click edits the buffer.").arg(inBuffer, changed)
            : tr("File: %1. %2%3").arg(QFileInfo(path_).fileName(), inBuffer, changed));
    file_->setToolTip(path_);
}

// ---- files ----------------------------------------------------------------------------------

bool RecipesPage::mayReplaceBuffer()
{
    if (!recipe_.isChanged() || recipe_.valuesInRecipe() == 0)
        return true;
    return QMessageBox::question(this, tr("Replace the buffer"),
                                 tr("What is in the buffer has not been saved. Replace it?"),
                                 QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::No) == QMessageBox::Yes;
}

void RecipesPage::chooseFile()
{
    if (!mayReplaceBuffer())
        return;
    const QString file = QFileDialog::getOpenFileName(this, tr("Load a recipe"), path_);
    if (!file.isEmpty())
        loadFile(file);
}

void RecipesPage::chooseFileToSave()
{
    const QString file = QFileDialog::getSaveFileName(this, tr("Save the recipe"), path_);
    if (!file.isEmpty())
        saveFile(file);
}

bool RecipesPage::loadFile(const QString& file)
{
    try {
        std::size_t locked = 0;
        model_.makeAnew([&]() { locked = recipe_.load(file.toStdString()); });
        path_ = QFileInfo(file).absoluteFilePath();
        result_->setText(locked == 0 ? QString()
                                     : tr("%n value(s) of the file can only be read and stay out "
                                          "of the buffer.",
                                          nullptr, static_cast<int>(locked)));
        emit told(QString());
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return false;
    }
    look();
    showState();
    emit settingsChanged();
    return true;
}

bool RecipesPage::saveFile(const QString& file)
{
    try {
        recipe_.save(file.toStdString());
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return false;
    }
    path_ = QFileInfo(file).absoluteFilePath();
    emit told(tr("%1 is written; dov417 recipe reads it, too.").arg(path_));
    model_.tellChanges();
    showState();
    emit settingsChanged();
    return true;
}

// ---- transfers ------------------------------------------------------------------------------

bool RecipesPage::mayDownload(int line, std::size_t values)
{
    const auto answer =
        QMessageBox::question(this, tr("Download a recipe"),
                              tr("Write %n value(s) of the buffer to the controller on %1?",
                                 nullptr, static_cast<int>(values))
                                  .arg(QString::fromStdString(desk_.state().port)),
                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    return answer == QMessageBox::Yes && line == desk_.lineNumber();
}

void RecipesPage::move(RecipeKind kind)
{
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
    if (!news.hasEnded) {
        showProgress(news);
        return;
    }
    const bool isOfLine = orderLine_ == desk_.lineNumber();
    recipe_.ended(shares_, news, isOfLine);
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
    result_->setText(recipeProgressText(news));
}

void RecipesPage::showEnd(const RecipeNews& news, bool isOfLine)
{
    progress_->hide();
    std::vector<RecipeRow> rows;
    for (const RecipeRow& row : recipe_.rows())
        if (row.fate != RecipeFate::none)
            rows.push_back(row);
    result_->setText(recipeEndText(news, rows, isOfLine));
}

// ---- the project ----------------------------------------------------------------------------

std::string RecipesPage::settingsName() const
{
    return "recipes";
}

OrderedJson RecipesPage::settings() const
{
    return path_.isEmpty() ? OrderedJson::object()
                           : OrderedJson{{recipeFileMember, path_.toStdString()}};
}

std::function<void()> RecipesPage::prepared(const OrderedJson& settings)
{
    const OrderedJson file = settings.value(recipeFileMember, OrderedJson(""));
    if (!file.is_string())
        throw UsageFailure(std::string(recipeFileMember) + ": is the name of a file");
    return [this, file = QString::fromStdString(file.get<std::string>())]() {
        if (file == path_)
            return;
        path_ = file;
        model_.makeAnew([this]() { recipe_.clear(); });
        showState();
        // Its names are those of the project, which may not be there yet.
        if (!file.isEmpty())
            QTimer::singleShot(0, this, [this, file]() {
                if (file == path_ && QFileInfo::exists(file))
                    loadFile(file);
            });
    };
}

} // namespace dov417
