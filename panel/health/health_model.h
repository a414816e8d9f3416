// The counters of each request as rows, below those of its station.
#ifndef DOV417_PANEL_HEALTH_MODEL_H
#define DOV417_PANEL_HEALTH_MODEL_H

#include <QAbstractTableModel>
#include <vector>

#include "link/link_statistics.h"
#include "panel/desk/station_words.h"

namespace dov417 {

struct HealthRow {
    QString name;
    bool isStation = false; // of all its requests
    RequestCounters counters;
    QString remark; // why it was given up last; of a station, what it takes
};

class HealthModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        name,
        sent,
        good,
        retries,
        noByte,
        badCrc,
        exceptions,
        others,
        abandoned,
        notAsked,
        remark
    };
    static constexpr int columns = 11;

    using QAbstractTableModel::QAbstractTableModel;

    void show(const LinkStatistics& statistics, const StationNames& names);
    // Has any row something to say there?
    bool hasAny(Column column) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    static QString text(const HealthRow& row, int column);

    std::vector<HealthRow> rows_;
};

} // namespace dov417

#endif
