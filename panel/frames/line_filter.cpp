#include "panel/frames/line_filter.h"

namespace dov417 {

void LineFilter::setStation(int station)
{
    station_ = station;
    invalidateFilter();
}

void LineFilter::setDirection(std::optional<Direction> direction)
{
    direction_ = direction;
    invalidateFilter();
}

void LineFilter::setTroubleOnly(bool troubleOnly)
{
    troubleOnly_ = troubleOnly;
    invalidateFilter();
}

void LineFilter::setText(const QString& text)
{
    text_ = text;
    invalidateFilter();
}

bool LineFilter::filterAcceptsRow(int row, const QModelIndex& parent) const
{
    const auto* const model = static_cast<const LineModel*>(sourceModel());
    const LineRow& each = model->rowAt(row);
    if (station_ != 0 && each.station != station_)
        return false;
    if (direction_ && each.entry.direction != *direction_)
        return false;
    if (troubleOnly_ && !each.isTrouble)
        return false;
    if (text_.isEmpty())
        return true;
    for (const int column : {LineModel::meaning, LineModel::bytes})
        if (model->index(row, column, parent)
                .data(Qt::ToolTipRole) // in full
                .toString()
                .contains(text_, Qt::CaseInsensitive))
            return true;
    return false;
}

} // namespace dov417
