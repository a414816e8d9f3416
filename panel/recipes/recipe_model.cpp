#include "panel/recipes/recipe_model.h"

#include <QFont>

#include "panel/desk/panel_clock.h"
#include "panel/desk/state_words.h"
#include "text/address_values.h"

namespace dov417 {

namespace {

const QString unequal = QStringLiteral("\u2260");

bool differs(const ValueBytes& bytes, const RecipeRow& row)
{
    return row.isInRecipe() && !bytes.empty() && bytes != row.buffer;
}

QString ageOf(const RecipeRow& row)
{
    if (row.controller.empty())
        return RecipeModel::tr("? not known");
    const double seconds = std::chrono::duration<double>(panelNow() - row.readAt).count();
    return symbolOf(row.isCurrent ? ValueState::good : ValueState::old) +
           RecipeModel::tr(" %1 s").arg(seconds, 0, 'f', seconds < 10 ? 1 : 0);
}

QString comparisonOf(const RecipeRow& row)
{
    if (!row.isInRecipe())
        return row.isWritable() ? QString() : RecipeModel::tr("read-only, stays out");
    if (const std::string why = whyOutside(row); !why.empty())
        return RecipeModel::tr("outside its limits: %1").arg(QString::fromStdString(why));
    const bool isOther = differs(row.controller, row);
    const bool isOtherFile = differs(row.file, row);
    const QString inFile = isOtherFile ? RecipeModel::tr(", %1 file").arg(unequal) : QString();
    if (row.controller.empty())
        return RecipeModel::tr("? controller") + inFile;
    const QString was = row.isCurrent ? QString() : RecipeModel::tr(" as it was");
    if (isOther)
        return RecipeModel::tr("%1 controller%2").arg(unequal, was) + inFile;
    if (isOtherFile)
        return RecipeModel::tr("= controller%1").arg(was) + inFile;
    return row.file.empty() ? RecipeModel::tr("= controller%1").arg(was)
                            : RecipeModel::tr("= the same in all%1").arg(was);
}

QString outcomeOf(const RecipeRow& row)
{
    const QString reason = QString::fromStdString(row.reason);
    switch (row.fate) {
    case RecipeFate::none:
        break;
    case RecipeFate::waiting:
        return RecipeModel::tr("\u2026 under way");
    case RecipeFate::read:
        return RecipeModel::tr("\u2713 read");
    case RecipeFate::written:
        return RecipeModel::tr("\u2713 written, read back");
    case RecipeFate::different:
        return RecipeModel::tr("\u2717 taken, but it reads back as %1")
            .arg(QString::fromStdString(recipeText(row, row.controller)));
    case RecipeFate::held:
        return RecipeModel::tr("\u2713 the controller holds it");
    case RecipeFate::notHeld:
        return RecipeModel::tr("\u2717 the controller holds %1")
            .arg(QString::fromStdString(recipeText(row, row.controller)));
    case RecipeFate::unknown:
        return RecipeModel::tr("? not known: %1").arg(reason);
    }
    return QString();
}

// With its sign where it is not the buffer's.
QString signedText(const RecipeRow& row, const ValueBytes& bytes)
{
    const QString text = QString::fromStdString(recipeText(row, bytes));
    return differs(bytes, row) ? unequal + QLatin1Char(' ') + text : text;
}

} // namespace

RecipeModel::RecipeModel(RecipeTable& table) : table_(table) {}

void RecipeModel::tellChanges()
{
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columns - 1));
}

const RecipeRow& RecipeModel::rowAt(int row) const
{
    return table_.rows().at(static_cast<std::size_t>(row));
}

int RecipeModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(table_.rows().size());
}

int RecipeModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns;
}

QString RecipeModel::text(const RecipeRow& row, int column) const
{
    switch (column) {
    case name:
        return QString::fromStdString(row.value.label.name);
    case address:
        return QString::fromStdString(row.value.label.address);
    case controller:
        return row.controller.empty() ? QStringLiteral("?") : signedText(row, row.controller);
    case age:
        return ageOf(row);
    case file:
        return signedText(row, row.file);
    case buffer:
        return QString::fromStdString(recipeText(row, row.buffer));
    case comparison:
        return comparisonOf(row);
    case outcome:
        return outcomeOf(row);
    default:
        return QString();
    }
}

int RecipeModel::rowOf(const RecipeKey& key) const
{
    for (int row = 0; row < rowCount(); ++row)
        if (rowAt(row).value.address == key.address && rowAt(row).value.label.name == key.name)
            return row;
    return -1;
}

bool RecipeModel::holds(int row, const QString& text) const
{
    const ViewLabel& label = rowAt(row).value.label;
    return QString::fromStdString(label.name + '\n' + label.address)
        .contains(text, Qt::CaseInsensitive);
}

bool RecipeModel::isDifferent(int row) const
{
    const RecipeRow& each = rowAt(row);
    return each.isInRecipe() && (each.controller != each.buffer || differs(each.file, each));
}

QVariant RecipeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const RecipeRow& row = rowAt(index.row());
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return text(row, column);
    case Qt::EditRole:
        return column != buffer || row.buffer.empty()
                   ? QString()
                   : QString::fromStdString(
                         valueTexts(row.value.address, row.value.label.format, row.buffer.data())
                             .front());
    case Qt::FontRole: {
        QFont font;
        font.setBold((column == controller && differs(row.controller, row)) ||
                     (column == file && differs(row.file, row)));
        return font;
    }
    case Qt::TextAlignmentRole:
        return static_cast<int>(
            (column == controller || column == file || column == buffer || column == age
                 ? Qt::AlignRight
                 : Qt::AlignLeft) |
            Qt::AlignVCenter);
    case Qt::ToolTipRole:
        if (column == buffer)
            return row.isWritable()
                       ? tr("allowed: %1").arg(QString::fromStdString(allowedRange(row.value)))
                       : QString::fromStdString(row.value.locked);
        return text(row, column);
    case Qt::AccessibleTextRole:
        return QStringLiteral("%1: %2").arg(headerData(column, Qt::Horizontal).toString(),
                                            text(row, column));
    default:
        return QVariant();
    }
}

QVariant RecipeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case name:
        return tr("Name");
    case address:
        return tr("Address");
    case controller:
        return tr("Controller");
    case age:
        return tr("Age");
    case file:
        return tr("File");
    case buffer:
        return tr("Buffer");
    case comparison:
        return tr("Buffer compared");
    case outcome:
        return tr("What became of it");
    default:
        return QVariant();
    }
}

Qt::ItemFlags RecipeModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags plain = QAbstractTableModel::flags(index);
    const bool isEditable =
        index.isValid() && index.column() == buffer && rowAt(index.row()).isWritable();
    return isEditable ? plain | Qt::ItemIsEditable : plain;
}

bool RecipeModel::setData(const QModelIndex& index, const QVariant& text, int role)
{
    if (role != Qt::EditRole || !index.isValid() || index.column() != buffer)
        return false;
    const RecipeCell before = table_.cellOf(static_cast<std::size_t>(index.row()));
    try {
        table_.edit(static_cast<std::size_t>(index.row()), text.toString().trimmed().toStdString());
    } catch (const Failure& failure) {
        emit refused(tr("%1: %2").arg(QString::fromStdString(rowAt(index.row()).value.label.name),
                                      failure.what()));
        return false;
    }
    emit dataChanged(this->index(index.row(), 0), this->index(index.row(), columns - 1));
    emit edited(index.row(), before);
    return true;
}

// ---- which rows are shown -------------------------------------------------------------------

RecipeFilter::RecipeFilter()
{
    setDynamicSortFilter(false); // who edits a row does not lose it
}

void RecipeFilter::setText(const QString& text)
{
    text_ = text;
    invalidateFilter();
}

void RecipeFilter::setDifferentOnly(bool isOn)
{
    isDifferentOnly_ = isOn;
    invalidateFilter();
}

bool RecipeFilter::filterAcceptsRow(int row, const QModelIndex&) const
{
    const auto* const model = static_cast<const RecipeModel*>(sourceModel());
    return (text_.isEmpty() || model->holds(row, text_)) &&
           (!isDifferentOnly_ || model->isDifferent(row));
}

} // namespace dov417
