// What is kept of the buffer for the case that the program ends, and taken up by the next one.
#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

#include "panel/desk/yes_question.h"
#include "panel/recipes/recipe_copy.h"
#include "panel/recipes/recipes_page.h"

namespace dov417 {

namespace {

// Of what the file holds now; empty where it cannot be read.
std::string hashOf(const QString& name)
{
    QFile file(name);
    QCryptographicHash hash(QCryptographicHash::Sha1);
    const bool isRead = file.open(QIODevice::ReadOnly) && hash.addData(&file);
    return isRead ? hash.result().toHex().toStdString() : std::string();
}

} // namespace

// What was emptied by hand is not missed.
bool RecipesPage::hasUnsaved() const
{
    return recipe_.isChanged() && recipe_.valuesInRecipe() + recipe_.unwatchedInRecipe() > 0;
}

OrderedJson RecipesPage::unsaved() const
{
    return toJson({bufferFile_.toStdString(), isOfPath() ? fileHash_ : std::string(),
                   recipe_.bufferToKeep()});
}

QString RecipesPage::takeUpUnsaved(const OrderedJson& unsaved)
{
    loadNamedFile();
    settleTags();
    RecipeCopy copy;
    try {
        copy = recipeCopy(unsaved);
    } catch (const UsageFailure& failure) {
        return QString::fromUtf8(failure.what());
    }
    const RecipeTakenUp taken = recipe_.takenUp(copy.values);
    change(tr("the recipe that was not saved"), [&]() {
        bufferFile_ = QString::fromStdString(copy.file);
        model_.makeAnew([&]() { recipe_.put(taken.cells); });
    });
    if (isOfPath())
        fileHash_ = copy.fileHash;
    look();
    showState();
    QStringList said;
    if (!taken.others.isEmpty())
        said +=
            tr("What is not watched any more as it was edited stands in rows of its addresses: %1.")
                .arg(taken.others.join(QStringLiteral(", ")));
    if (!taken.problems.isEmpty())
        said += tr("Not taken up: %1.").arg(taken.problems.join(QStringLiteral("; ")));
    return said.join(QLatin1Char(' '));
}

void RecipesPage::noteFile(const QString& file)
{
    path_ = QFileInfo(file).absoluteFilePath();
    bufferFile_ = path_;
    fileHash_ = hashOf(path_);
}

bool RecipesPage::saveInPath()
{
    if (QFileInfo::exists(path_) && hashOf(path_) != fileHash_ &&
        !saysYes(window(), tr("Changed by another program"),
                 tr("%1 was written by another program since it was loaded or saved here. Save "
                    "over it?")
                     .arg(path_)))
        return false;
    return saveFile(path_);
}

} // namespace dov417
