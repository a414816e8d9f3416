#include "panel/recipes/recipes_page.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QVBoxLayout>
#include <algorithm>

#include "panel/desk/flow_layout.h"
#include "panel/desk/panel_icons.h"

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
      takeOut_(new QPushButton(tr("&Take out"))), progress_(new QProgressBar),
      cancel_(new QPushButton(tr("&Cancel"))), file_(new QLabel), result_(new QLabel)
{
    history_.setUndoLimit(maxSteps);
    makeTable();
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(makeMoves());
    rows->addWidget(file_);
    rows->addWidget(makeTools());
    rows->addWidget(table_, 1);
    rows->addWidget(result_);
    rows->addWidget(sideBySide({progress_, cancel_}));
    for (QLabel* const label : {file_, result_})
        label->setWordWrap(true);
    result_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    file_->setObjectName(QStringLiteral("recipeFile"));
    result_->setObjectName(QStringLiteral("recipeResult"));
    result_->setAccessibleName(tr("What became of the recipe"));
    progress_->setObjectName(QStringLiteral("recipeProgress"));
    progress_->setAccessibleName(tr("How far the recipe has come"));
    progress_->hide();
    cancel_->setObjectName(QStringLiteral("cancelRecipe"));
    cancel_->setToolTip(tr("Ends it here (Esc); what is being written elsewhere ends, too"));
    cancel_->setShortcut(Qt::Key_Escape);
    cancel_->hide();
    connect(cancel_, &QPushButton::clicked, this, [this]() {
        cancel_->setEnabled(false);
        desk_.cancelRecipe();
    });

    connect(&model_, &RecipeModel::refused, this, &PanelPage::told);
    connect(&model_, &RecipeModel::edited, this, [this](int row, const RecipeCell& before) {
        emit told(QString());
        showState();
        if (!isChanging_)
            keepStep(tr("%1 in the recipe").arg(QString::fromStdString(before.key.name)),
                     {{before}, bufferFile_},
                     {{recipe_.cellOf(static_cast<std::size_t>(row))}, bufferFile_});
    });
    connect(&desk, &PanelDesk::projectBegan, this, [this]() { beginProject(); });
    connect(&desk, &PanelDesk::tagsChanged, this, [this]() {
        isStale_ = true;
        // Of many values it takes as long as all that the others do at once; where there is no
        // recipe it is done when somebody looks.
        if (isVisible())
            setTags();
        else if (order_ != 0 || recipe_.isAny())
            tagsTimer_.start();
    });
    connect(&desk, &PanelDesk::recipeTold, this, &RecipesPage::hear);
    connect(&desk, &PanelDesk::lineBegan, this, [this]() {
        recipe_.forgetController();
        model_.tellChanges();
    });
    connect(&desk, &PanelDesk::repliesDoubted, this, [this]() {
        recipe_.doubt();
        model_.tellChanges();
    });
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { showState(); });
    lookTimer_.setInterval(lookPauseMs);
    connect(&lookTimer_, &QTimer::timeout, this, [this]() {
        if (isVisible())
            look();
    });
    lookTimer_.start();
    tagsTimer_.setSingleShot(true);
    tagsTimer_.setInterval(0);
    connect(&tagsTimer_, &QTimer::timeout, this, [this]() { setTags(); });
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
    tagsTimer_.stop();
    isStale_ = false;
    model_.makeAnew([this]() { recipe_.setTags(desk_.tags()); });
    showState();
}

void RecipesPage::settleTags()
{
    if (isStale_)
        setTags();
}

void RecipesPage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    settleTags();
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
    const QModelIndexList chosen = table_->selectionModel()->selectedRows(RecipeModel::buffer);
    change(tr("values taken out of the recipe"), [&]() {
        for (const QModelIndex& index : chosen)
            model_.setData(filter_.mapToSource(index), QString());
    });
}

void RecipesPage::showState()
{
    const bool isIdle = order_ == 0;
    const auto values = static_cast<int>(recipe_.valuesInRecipe());
    const bool hasLine = desk_.hasLine();
    const bool isUnlocked = desk_.state().isUnlocked;
    load_->setEnabled(isIdle);
    const auto unwatched = static_cast<int>(recipe_.unwatchedInRecipe());
    save_->setEnabled(isIdle && values + unwatched > 0);
    read_->setEnabled(isIdle && hasLine && !recipe_.rows().empty());
    upload_->setEnabled(isIdle && hasLine && !recipe_.rows().empty());
    download_->setEnabled(isIdle && hasLine && isUnlocked && values > 0);
    download_->setToolTip(isUnlocked || !hasLine
                              ? tr("From the buffer into the controller; then it is read back")
                              : tr("Writing is locked: unlock it in the status line"));
    takeOut_->setEnabled(isIdle && table_->selectionModel()->hasSelection());
    const QString changed = recipe_.isChanged() ? tr(" It is not saved.") : QString();
    const QString besides =
        unwatched == 0 ? QString()
                       : tr(" %n more of tags that are not watched: saved by address, and not "
                            "downloaded.",
                            nullptr, unwatched);
    const QString inBuffer = tr("%n value(s) in the buffer.", nullptr, values) + besides;
    file_->setText(
        recipe_.rows().empty() && unwatched == 0
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
    if (!hasUnsaved())
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

bool RecipesPage::chooseFileToSave()
{
    const QString proposed = isOfPath() ? path_ : QFileInfo(path_).path();
    const QString file = QFileDialog::getSaveFileName(this, tr("Save the recipe"), proposed);
    return !file.isEmpty() && saveFile(file);
}

void RecipesPage::readFile(const QString& file)
{
    std::size_t locked = 0;
    model_.makeAnew([&]() { locked = recipe_.load(file.toStdString()); });
    noteFile(file);
    QStringList said;
    if (const auto outside = static_cast<int>(recipe_.valuesOutside()); outside > 0)
        said += tr("%n value(s) of the file lie outside their limits; as long as they do, nothing "
                   "is downloaded.",
                   nullptr, outside);
    if (locked > 0)
        said += tr("%n value(s) of the file can only be read and stay out of the buffer.", nullptr,
                   static_cast<int>(locked));
    result_->setText(said.join(QLatin1Char(' ')));
    emit told(QString());
}

bool RecipesPage::loadFile(const QString& file)
{
    settleTags();
    try {
        change(tr("loading a recipe"), [&]() { readFile(file); });
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
    settleTags();
    try {
        recipe_.save(file.toStdString());
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
        return false;
    }
    noteFile(file);
    emit unsavedChanged();
    emit told(tr("%1 is written; dov417 recipe reads it, too.").arg(path_));
    model_.tellChanges();
    showState();
    emit settingsChanged();
    return true;
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
        forgetRecipe();
        path_ = file;
        showState();
        // Its names are those of the project, which may not be there yet.
        namedFile_ = file;
        QTimer::singleShot(0, this, [this]() { loadNamedFile(); });
    };
}

void RecipesPage::loadNamedFile()
{
    const QString file = std::exchange(namedFile_, QString());
    if (!file.isEmpty() && file == path_ && QFileInfo::exists(file) && loadFile(file))
        history_.clear();
}

// Undoing what was edited elsewhere would exchange the file, and with it the buffer.
bool RecipesPage::settingsAreSteps() const
{
    return false;
}

} // namespace dov417
