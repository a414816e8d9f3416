// The values of all plots as a table: each curve's sign, what it is now and how good that is, and
// what it was at the cursors and between them.
#ifndef DOV417_PANEL_TREND_READOUT_H
#define DOV417_PANEL_TREND_READOUT_H

#include <QAbstractTableModel>
#include <optional>
#include <vector>

#include "panel/desk/panel_desk.h"
#include "panel/trends/trend_arrangement.h"
#include "panel/trends/trend_statistics.h"

namespace dov417 {

class TrendReadout : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        plot,
        name,
        value,
        state,
        atA,
        atB,
        difference,
        minimum,
        maximum,
        mean,
        known
    };
    static constexpr int columns = 11;
    static constexpr int firstOfCursors = atA;

    // Both are to outlive it.
    TrendReadout(const PanelDesk& desk, const TrendHistory& history);

    void setPlots(const std::vector<TrendGroup>& plots);
    // Either may be missing.
    void setCursors(const std::optional<TrendTime>& a, const std::optional<TrendTime>& b);
    // Reads all anew: the page says when, and how often.
    void refresh();

    std::size_t plotOf(int row) const;
    const TrendValue& valueOf(int row) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    struct Row {
        std::size_t plot = 0;
        TrendValue value;
        QStringList texts;
        // As reckoned last, for these cursors, when so much was known.
        std::optional<TrendStatistics> statistics;
        TrendTime end = 0;
    };

    QStringList texts(Row& row) const;
    void addCursors(Row& row, QStringList& texts) const;
    const TrendStatistics& statistics(Row& row) const;

    const PanelDesk& desk_;
    const TrendHistory& history_;
    std::vector<Row> rows_;
    std::optional<TrendTime> a_;
    std::optional<TrendTime> b_;
};

// "request failed", "another line": why nothing is known.
QString gapWord(TrendGap gap);

} // namespace dov417

#endif
