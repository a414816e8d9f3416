// The map of a plan as a table: a row is a stretch of words, a column one of them.
#ifndef DOV417_PANEL_PLAN_MAP_MODEL_H
#define DOV417_PANEL_PLAN_MAP_MODEL_H

#include <QAbstractTableModel>
#include <vector>

#include "panel/desk/station_words.h"
#include "panel/plan/plan_map.h"

namespace dov417 {

class PlanMapModel : public QAbstractTableModel {
    Q_OBJECT

public:
    // The plan is one of these values.
    void show(std::vector<PanelValue> values, const Plan& plan);

    void setStationNames(const StationNames& names);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    const PlanRow& rowAt(int row) const;
    const PlanWord& wordAt(const QModelIndex& index) const;
    const std::vector<PlanRow>& rows() const
    {
        return rows_;
    }
    const Plan& plan() const
    {
        return plan_;
    }
    // Where a request begins; of no index where there is none.
    QModelIndex startOf(int request) const;

private:
    QString textOf(const QModelIndex& index) const;
    QString requestText(int number, int word) const;

    std::vector<PanelValue> values_;
    Plan plan_;
    StationNames names_;
    std::vector<PlanRow> rows_;
};

} // namespace dov417

#endif
