#include "panel/values/values_model.h"

#include <algorithm>
#include <tuple>

#include "panel/desk/panel_clock.h"
#include "panel/desk/state_words.h"
#include "text/values.h"

namespace dov417 {

ValuesModel::ValuesModel(PanelDesk& desk) : desk_(desk)
{
    connect(&desk, &PanelDesk::tagsChanged, this, [this]() { beginAnew(); });
    connect(&desk, &PanelDesk::valuesChanged, this,
            [this](const std::vector<Address>& addresses) { tell(addresses); });
    connect(&desk, &PanelDesk::stationNamesChanged, this, [this]() { beginAnew(); });
}

void ValuesModel::setSeen(bool isSeen)
{
    isSeen_ = isSeen;
    if (isSeen && !hasRows_)
        beginAnew();
}

// Rows are places in what is watched now, and found by address: nothing of before is kept.
void ValuesModel::beginAnew()
{
    beginResetModel();
    hasRows_ = isSeen_;
    rows_.clear();
    searched_.clear();
    endResetModel();
}

// When the first values come, as to open thousands takes long enough.
const ValuesModel::Rows& ValuesModel::rows() const
{
    if (!rows_.empty())
        return rows_;
    int row = 0;
    rows_.reserve(desk_.tags().values.size());
    for (const PanelValue& each : desk_.tags().values)
        rows_.emplace(each.address, row++);
    return rows_;
}

const std::vector<QString>& ValuesModel::searched() const
{
    if (!searched_.empty())
        return searched_;
    searched_.reserve(desk_.tags().values.size());
    for (const PanelValue& each : desk_.tags().values)
        searched_.push_back(QString::fromStdString(each.label.name + '\n' + each.label.address +
                                                   '\n' + each.item->comment + '\n') +
                            stationName(each));
    return searched_;
}

// Where it has one: its number stands in the address.
QString ValuesModel::stationName(const PanelValue& each) const
{
    const StationNames& names = desk_.stationNames();
    return names.count(each.address.station) == 0 ? QString()
                                                  : stationText(names, each.address.station);
}

// In stretches of rows, as a view takes longer for each signal than for a row.
void ValuesModel::tell(const std::vector<Address>& addresses)
{
    if (!hasRows_)
        return;
    std::vector<int> changed;
    for (const Address& each : addresses)
        for (auto [row, end] = rows().equal_range(each); row != end; ++row)
            changed.push_back(row->second);
    if (changed.empty())
        return;
    constexpr int maxHole = 32;
    std::sort(changed.begin(), changed.end());
    int first = changed.front();
    int last = first;
    for (const int row : changed) {
        if (row > last + maxHole) {
            emit dataChanged(index(first, value), index(last, changes));
            first = row;
        }
        last = row;
    }
    emit dataChanged(index(first, value), index(last, changes));
}

const PanelValue& ValuesModel::valueAt(int row) const
{
    return desk_.tags().values.at(static_cast<std::size_t>(row));
}

int ValuesModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() || !hasRows_ ? 0 : static_cast<int>(desk_.tags().values.size());
}

int ValuesModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns;
}

QString ValuesModel::text(const PanelValue& each, int column) const
{
    const View* const view = desk_.book().find(each.address);
    switch (column) {
    case name:
        return QString::fromStdString(each.label.name);
    case address:
        return QString::fromStdString(each.label.address);
    case value:
        return shownValue(each, desk_.book());
    case state:
        return standingText(desk_.book().standing(each.address));
    case age:
        return ageText(view, panelNow());
    case changes:
        return view ? QString::number(view->changes) : QString();
    default:
        return QString();
    }
}

bool ValuesModel::isBefore(int left, int right, int column) const
{
    const PanelValue& a = valueAt(left);
    const PanelValue& b = valueAt(right);
    const ValueBook& book = desk_.book();
    if (column == name)
        return a.label.name < b.label.name;
    if (column == address)
        return std::tie(a.address.station, a.address.regName, a.address.first) <
               std::tie(b.address.station, b.address.regName, b.address.first);
    if (column == state)
        return book.standing(a.address).state < book.standing(b.address).state;
    const View* const one = book.find(a.address);
    const View* const other = book.find(b.address);
    if (!one || !other)
        return !one && other; // what was never read comes first
    if (column == age)
        return one->lastGood > other->lastGood;
    if (column == changes)
        return one->changes < other->changes;
    return exactNumber(a.address.width, a.label.format, one->value.data()) <
           exactNumber(b.address.width, b.label.format, other->value.data());
}

bool ValuesModel::holds(int row, const QString& text) const
{
    return searched().at(static_cast<std::size_t>(row)).contains(text, Qt::CaseInsensitive);
}

QVariant ValuesModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const PanelValue& each = valueAt(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return text(each, index.column());
    case Qt::EditRole: {
        const View* const view = desk_.book().find(each.address);
        return view ? QString::fromStdString(valueText(*view, each.label)) : QString();
    }
    case Qt::TextAlignmentRole:
        return static_cast<int>(index.column() == name || index.column() == address ||
                                        index.column() == state
                                    ? Qt::AlignLeft | Qt::AlignVCenter
                                    : Qt::AlignRight | Qt::AlignVCenter);
    case Qt::ToolTipRole:
        return index.column() == state     ? text(each, state)
               : index.column() == address ? stationText(desk_.stationNames(), each.address.station)
                                           : QString::fromStdString(each.item->comment);
    case Qt::AccessibleTextRole: {
        const QString told = QStringLiteral("%1: %2").arg(
            headerData(index.column(), Qt::Horizontal).toString(), text(each, index.column()));
        const QString station = index.column() == address ? stationName(each) : QString();
        return station.isEmpty() ? told : told + QStringLiteral(", ") + station;
    }
    case stationRole:
        return stationText(desk_.stationNames(), each.address.station);
    case areaRole:
        return tr("area %1").arg(QString::fromStdString(areaOf(each.address.regName)));
    default:
        return QVariant();
    }
}

QVariant ValuesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case name:
        return tr("Name");
    case address:
        return tr("Address");
    case value:
        return tr("Value");
    case state:
        return tr("State");
    case age:
        return tr("Age");
    case changes:
        return tr("Changes");
    default:
        return QVariant();
    }
}

Qt::ItemFlags ValuesModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags common = QAbstractTableModel::flags(index);
    const bool isEditable = index.isValid() && index.column() == value &&
                            desk_.state().isUnlocked && valueAt(index.row()).locked.empty();
    return isEditable ? common | Qt::ItemIsEditable : common;
}

bool ValuesModel::setData(const QModelIndex& index, const QVariant& text, int role)
{
    if (role != Qt::EditRole || !index.isValid() || index.column() != value)
        return false;
    const PanelValue each = valueAt(index.row());
    try {
        desk_.write(each, text.toString().trimmed().toStdString());
    } catch (const Failure& failure) {
        emit refused(tr("%1: %2").arg(QString::fromStdString(each.label.name), failure.what()));
        return false;
    }
    return true;
}

} // namespace dov417
