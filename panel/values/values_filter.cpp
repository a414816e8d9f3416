#include "panel/values/values_filter.h"

#include "panel/values/values_model.h"

namespace dov417 {

ValuesFilter::ValuesFilter(QObject* parent) : QSortFilterProxyModel(parent)
{
    setDynamicSortFilter(false);
}

void ValuesFilter::setText(const QString& text)
{
    text_ = text;
    invalidate();
}

void ValuesFilter::setGrouping(Grouping grouping)
{
    grouping_ = grouping;
    invalidate();
    sort(column_, sortOrder());
}

void ValuesFilter::sort(int column, Qt::SortOrder order)
{
    column_ = column;
    // Groups are in order by themselves, and Qt puts nothing in order without a column.
    const bool isOfGroups = column < 0 && grouping_ != Grouping::none;
    QSortFilterProxyModel::sort(isOfGroups ? ValuesModel::name : column,
                                column < 0 ? Qt::AscendingOrder : order);
}

QString ValuesFilter::group(const QModelIndex& index) const
{
    switch (grouping_) {
    case Grouping::none:
        break;
    case Grouping::byStation:
        return index.data(ValuesModel::stationRole).toString();
    case Grouping::byArea:
        return index.data(ValuesModel::areaRole).toString();
    }
    return QString();
}

// Beside the rows: the group, where there are any.
QVariant ValuesFilter::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal)
        return QSortFilterProxyModel::headerData(section, orientation, role);
    if (role != Qt::DisplayRole || grouping_ == Grouping::none)
        return QVariant();
    return group(mapToSource(index(section, 0)));
}

bool ValuesFilter::filterAcceptsRow(int row, const QModelIndex&) const
{
    return text_.isEmpty() || static_cast<const ValuesModel*>(sourceModel())->holds(row, text_);
}

bool ValuesFilter::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    if (grouping_ != Grouping::none) {
        const auto* const model = static_cast<const ValuesModel*>(sourceModel());
        const int order = grouping_ == Grouping::byStation // by number, whatever they are called
                              ? model->valueAt(left.row()).address.station -
                                    model->valueAt(right.row()).address.station
                              : QString::localeAwareCompare(group(left), group(right));
        if (order != 0)
            return sortOrder() == Qt::AscendingOrder ? order < 0 : order > 0;
    }
    return column_ < 0 ? left.row() < right.row()
                       : static_cast<const ValuesModel*>(sourceModel())
                             ->isBefore(left.row(), right.row(), column_);
}

} // namespace dov417
