// The requests of a plan, and what each merge gap would come to, as tables.
#ifndef DOV417_PANEL_PLAN_TABLES_H
#define DOV417_PANEL_PLAN_TABLES_H

#include <QAbstractTableModel>
#include <vector>

#include "panel/plan/plan_map.h"

namespace dov417 {

class PlanRequestsModel : public QAbstractTableModel {
    Q_OBJECT

public:
    void show(const Plan& plan, const std::vector<int>& readAlong);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    Plan plan_;
    std::vector<int> readAlong_; // by request
};

class GapsModel : public QAbstractTableModel {
    Q_OBJECT

public:
    // gap: the one in force.
    void show(const std::vector<GapOutcome>& outcomes, int gap);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    const std::vector<GapOutcome>& outcomes() const
    {
        return outcomes_;
    }
    int best() const; // a row, -1 for none
    int rowOf(int gap) const;

private:
    QString remarks(int row) const;

    std::vector<GapOutcome> outcomes_;
    int gap_ = 0;
};

} // namespace dov417

#endif
