#include "panel/values/writes_model.h"

#include "panel/desk/state_words.h"

namespace dov417 {

namespace {

enum WriteColumn {
    writeTime,
    writeName,
    writeAddress,
    writeValue,
    writeOutcome
};
constexpr int writeColumns = 5;

} // namespace

WritesModel::WritesModel(PanelDesk& desk) : desk_(desk)
{
    connect(&desk, &PanelDesk::writesChanged, this, [this]() {
        beginResetModel();
        endResetModel();
    });
}

int WritesModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(desk_.writes().size());
}

int WritesModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : writeColumns;
}

QVariant WritesModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return QVariant();
    const std::size_t place = desk_.writes().size() - 1 - static_cast<std::size_t>(index.row());
    const PanelWrite& write = desk_.writes().at(place);
    switch (index.column()) {
    case writeTime:
        return write.asked.toString(QStringLiteral("HH:mm:ss"));
    case writeName:
        return QString::fromStdString(write.name);
    case writeAddress:
        return QString::fromStdString(write.address);
    case writeValue:
        return QString::fromStdString(write.text);
    case writeOutcome:
        break;
    default:
        return QVariant();
    }
    if (!write.hasEnded)
        return symbolOf(ValueState::beingWritten) + tr(" being written");
    return write.result.accepted
               ? symbolOf(ValueState::good) + tr(" the controller has taken it")
               : symbolOf(ValueState::failed) +
                     tr(" failed: %1").arg(QString::fromStdString(write.result.reason));
}

QVariant WritesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case writeTime:
        return tr("Written at");
    case writeName:
        return tr("Name");
    case writeAddress:
        return tr("Address");
    case writeValue:
        return tr("Value");
    case writeOutcome:
        return tr("What became of it");
    default:
        return QVariant();
    }
}

} // namespace dov417
