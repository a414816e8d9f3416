// What passed on the line as rows: a frame or a remark each, in words. Fixed memory: the oldest
// rows go first.
#ifndef DOV417_PANEL_LINE_MODEL_H
#define DOV417_PANEL_LINE_MODEL_H

#include <QAbstractTableModel>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "line/areas.h"
#include "line/line_log.h"
#include "panel/desk/line_batch.h"
#include "panel/frames/recorded_log.h"

namespace dov417 {

struct LineRow {
    LogEntry entry;
    int station = -1; // -1: of none
    bool isTrouble = false;
    long long number = 0;      // of the transmission, or of the log's entry; 0: of none
    QByteArray request;        // that the bytes were received for
    long long missing = 0;     // frames that are not told of, which this row says
    bool isAfterBreak = false; // what passed before it was not recorded
};

class LineModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        when,
        since, // the row before
        direction,
        meaning,
        bytes
    };
    static constexpr int columns = 5;
    static constexpr std::size_t maxRows = 100000;

    // The areas tell what the numbers on the line are called.
    explicit LineModel(const std::vector<Area>& areas);

    // In words, and at the time of day that it is now: a clock that is moved later moves none of
    // them. before: the row that these follow; null where there is none, or frames are missing.
    std::vector<LineRow> rowsOf(const std::vector<Passed>& passed, const LineRow* before) const;
    void add(const std::vector<LineRow>& rows, long long notTold);
    void clear();
    // What a line log holds, in place of what is here.
    void load(const RecordedLog& log);
    // All rows as such a log, of a line of these settings; empty where it has none. Throws a
    // Failure where it cannot be written.
    void save(const std::string& file, const std::string& wire) const;

    const LineRow& rowAt(int row) const;
    // Null where there is none.
    const LineRow* lastRow() const;
    // The request of the transmission of this number; nothing: it is not here any more.
    std::optional<int> rowOfRequest(long long number) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

private:
    std::optional<LineRow> rowOf(const Passed& passed) const;
    void append(const std::vector<LineRow>& rows);
    QString text(int row, int column) const;
    QString sinceText(int row) const;

    std::vector<Area> areas_;
    std::deque<LineRow> rows_;
};

// "→ request", "← reply", ...
QString directionText(Direction direction);

} // namespace dov417

#endif
