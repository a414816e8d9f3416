// The counters of each request as rows, below those of its station.
#ifndef DOV417_PANEL_HEALTH_MODEL_H
#define DOV417_PANEL_HEALTH_MODEL_H

#include <QAbstractTableModel>
#include <vector>

#include "link/link_statistics.h"
#include "panel/desk/station_words.h"

namespace dov417 {

struct HealthRow {
    enum class Kind {
        station, // all its requests
        request,
        remark // of the row above: what a station takes, why a request was given up last
    };

    QString name; // of a remark: all there is
    Kind kind = Kind::request;
    RequestCounters counters;
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
        abandoned,
        notSent,
        notAsked,
        exceptions, // words, which grow with time
        others
    };
    static constexpr int columns = 11;

    using QAbstractTableModel::QAbstractTableModel;

    void show(const LinkStatistics& statistics, const StationNames& names);
    // Has any row something to say there?
    bool hasAny(Column column) const;
    // It has the row to itself.
    bool isRemark(int row) const;

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
