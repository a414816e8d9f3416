// The rows of the line that a person wants to see.
#ifndef DOV417_PANEL_LINE_FILTER_H
#define DOV417_PANEL_LINE_FILTER_H

#include <QSortFilterProxyModel>
#include <optional>

#include "panel/frames/line_model.h"

namespace dov417 {

class LineFilter : public QSortFilterProxyModel {
    Q_OBJECT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    void setStation(int station); // 0: all
    void setDirection(std::optional<Direction> direction);
    void setTroubleOnly(bool troubleOnly);
    void setText(const QString& text); // in words or bytes, in any case

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    int station_ = 0;
    std::optional<Direction> direction_;
    bool troubleOnly_ = false;
    QString text_;
};

} // namespace dov417

#endif
