#include "panel/frames/line_model.h"

#include <QDateTime>
#include <algorithm>

#include "line/conversation.h"
#include "line/failure.h"
#include "line/frame_bytes.h"
#include "line/frame_text.h"
#include "line/replace_file.h"
#include "live/log_entries.h"
#include "panel/desk/panel_clock.h"
#include "panel/desk/request_words.h"
#include "panel/desk/write_failure.h"

namespace dov417 {

namespace {

// In the table: to lay out all of a long frame takes longer than all else that is painted.
constexpr int maxShownLetters = 200;

QString shortened(const QString& text)
{
    return text.size() > maxShownLetters ? text.left(maxShownLetters) + QStringLiteral(" \u2026")
                                         : text;
}

int stationIn(const QByteArray& frame)
{
    return frame.isEmpty() ? -1 : stationOf(frame);
}

QString timeText(LogTime time)
{
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    return QDateTime::fromMSecsSinceEpoch(millis).toString(QStringLiteral("HH:mm:ss.zzz"));
}

LineRow noteRow(LogTime at, const std::string& text)
{
    LineRow row;
    row.entry = {at, Direction::note, QByteArray(), text};
    return row;
}

// A request that is given up ends in the silence in which the last frame of it has ended, and both
// are told; nothing was sent in between.
bool isToldAlready(const LineRow& before, const LineRow& row)
{
    return tellsNoAnswer(row.entry) && tellsNoAnswer(before.entry) &&
           row.station == before.station && row.entry.meaning == before.entry.meaning;
}

} // namespace

QString directionText(Direction direction)
{
    switch (direction) {
    case Direction::sent:
        return LineModel::tr("\u2192 request");
    case Direction::received:
        return LineModel::tr("\u2190 reply");
    case Direction::stray:
        return LineModel::tr("\u2190 ? stray");
    case Direction::note:
        return LineModel::tr("\u2013 remark");
    }
    return QString();
}

LineModel::LineModel(const std::vector<Area>& areas) : areas_(areas) {}

std::optional<LineRow> LineModel::rowOf(const Passed& passed) const
{
    LineRow row;
    const Transmission& frame = passed.transmission;
    row.number = frame.number;
    switch (passed.what) {
    case Passed::What::began:
        row.entry = beganEntry(frame, areas_);
        row.entry.time = panelLogTime(frame.sendBegin);
        row.station = stationIn(frame.sent);
        return row;
    case Passed::What::ended: {
        const std::optional<LogEntry> entry = endedEntry(frame, areas_);
        if (!entry)
            return std::nullopt;
        row.entry = *entry;
        row.entry.time = panelLogTime(
            entry->direction == Direction::note ? passed.at : frame.reception.lastByte);
        row.station = stationIn(frame.sent);
        row.isTrouble = frame.why != Reason::none;
        row.request = frame.sent;
        return row;
    }
    case Passed::What::stray:
        row.entry = strayEntry(passed.stray);
        row.entry.time = panelLogTime(passed.stray.at);
        row.station = stationIn(passed.stray.bytes);
        row.isTrouble = true;
        return row;
    case Passed::What::note:
        return noteRow(panelLogTime(passed.at), passed.text);
    }
    return std::nullopt;
}

std::vector<LineRow> LineModel::rowsOf(const std::vector<Passed>& passed,
                                       const LineRow* before) const
{
    std::vector<LineRow> rows;
    rows.reserve(passed.size());
    for (const Passed& each : passed) {
        const LineRow* const last = rows.empty() ? before : &rows.back();
        if (const std::optional<LineRow> row = rowOf(each);
            row && !(last && isToldAlready(*last, *row)))
            rows.push_back(*row);
    }
    return rows;
}

void LineModel::add(const std::vector<LineRow>& rows, long long notTold)
{
    std::vector<LineRow> all;
    if (notTold > 0) {
        const LogTime at = rows.empty() ? panelLogTime(panelNow()) : rows.front().entry.time;
        all.push_back(noteRow(at, tr("%n frame(s) are missing here: this computer was too busy to "
                                     "show them",
                                     nullptr, static_cast<int>(notTold))
                                      .toStdString()));
        all.back().isTrouble = true;
        all.back().missing = notTold;
    }
    all.insert(all.end(), rows.begin(), rows.end());
    append(all);
}

// The oldest go many at a time, as a view takes long for each time.
void LineModel::append(const std::vector<LineRow>& rows)
{
    if (rows.empty())
        return;
    if (rows_.size() + rows.size() > maxRows) {
        const std::size_t surplus = std::min(rows_.size(), rows.size() + maxRows / 10);
        if (surplus > 0) {
            beginRemoveRows(QModelIndex(), 0, static_cast<int>(surplus) - 1);
            rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(surplus));
            endRemoveRows();
        }
    }
    const int first = static_cast<int>(rows_.size());
    beginInsertRows(QModelIndex(), first, first + static_cast<int>(rows.size()) - 1);
    rows_.insert(rows_.end(), rows.begin(), rows.end());
    endInsertRows();
}

void LineModel::clear()
{
    beginResetModel();
    rows_.clear();
    endResetModel();
}

void LineModel::load(const RecordedLog& log)
{
    Conversation conversation(areas_);
    int asked = -1; // the station that was asked last
    std::vector<LineRow> rows;
    rows.reserve(log.entries.size());
    for (const LogEntry& entry : log.entries) {
        LineRow row;
        row.isAfterBreak = std::binary_search(log.breaks.begin(), log.breaks.end(), rows.size());
        if (row.isAfterBreak) {
            conversation.forget();
            asked = -1;
        }
        row.entry = entry;
        row.number = numberOfEntry(rows.size());
        row.station = stationIn(entry.bytes);
        switch (entry.direction) {
        case Direction::sent:
            asked = row.station;
            row.entry.meaning = conversation.request(entry.bytes);
            break;
        case Direction::received:
            row.request = conversation.asked();
            row.entry.meaning = conversation.reply(entry.bytes);
            row.isTrouble = isBadReply(entry.bytes);
            break;
        case Direction::stray:
            row.isTrouble = true;
            break;
        case Direction::note:
            conversation.note(entry);
            row.station = asked;
            row.isTrouble = tellsGap(entry);
            break;
        }
        rows.push_back(std::move(row));
    }
    clear();
    append(rows);
}

void LineModel::save(const std::string& file, const std::string& wire) const
{
    std::string text = "# saved from dov417-panel";
    text.append(wire.empty() ? "" : ", line ").append(wire).append("\n");
    for (const LineRow& row : rows_) {
        if (row.isAfterBreak && &row != &rows_.front())
            text.append("# not recorded up to here\n");
        LogEntry entry = row.entry;
        if (row.missing > 0) // a log is read again: whatever language the window is in
            entry.meaning = gapText(row.missing);
        text.append(logLine(entry)).append("\n");
    }
    QString error;
    if (!replaceFile(QString::fromStdString(file), QByteArray::fromStdString(text), &error))
        throw cannotWrite(QString::fromStdString(file), error);
}

const LineRow* LineModel::lastRow() const
{
    return rows_.empty() ? nullptr : &rows_.back();
}

const LineRow& LineModel::rowAt(int row) const
{
    return rows_.at(static_cast<std::size_t>(row));
}

std::optional<int> LineModel::rowOfRequest(long long number) const
{
    const auto found = std::find_if(rows_.rbegin(), rows_.rend(), [number](const LineRow& row) {
        return row.number == number && row.entry.direction == Direction::sent;
    });
    if (number == 0 || found == rows_.rend())
        return std::nullopt;
    return static_cast<int>(rows_.rend() - found) - 1;
}

int LineModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int LineModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns;
}

QString LineModel::text(int row, int column) const
{
    const LineRow& each = rowAt(row);
    switch (column) {
    case when:
        return timeText(each.entry.time);
    case since:
        return sinceText(row);
    case direction:
        return directionText(each.entry.direction);
    case meaning:
        return (each.isTrouble ? QStringLiteral("\u2717 ") : QString()) +
               (each.entry.direction == Direction::note
                    ? withAddresses(each.entry.meaning)
                    : QString::fromStdString(each.entry.meaning));
    case bytes:
        return QString::fromStdString(hexText(each.entry.bytes));
    default:
        return QString();
    }
}

// A remark is told once it is known, which may be after the next request has begun: none then.
QString LineModel::sinceText(int row) const
{
    if (row == 0)
        return QString();
    const double micros =
        static_cast<double>((rowAt(row).entry.time - rowAt(row - 1).entry.time).count());
    return micros < 0 ? QString() : QString::number(micros / 1000.0, 'f', 3);
}

QVariant LineModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    if (role == Qt::DisplayRole)
        return shortened(text(index.row(), index.column()));
    if (role == Qt::ToolTipRole && index.column() >= meaning)
        return text(index.row(), index.column());
    if (role == Qt::TextAlignmentRole && index.column() == since)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    return QVariant();
}

QVariant LineModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case when:
        return tr("Time");
    case since:
        return tr("ms later");
    case direction:
        return tr("What");
    case meaning:
        return tr("In words");
    case bytes:
        return tr("Bytes");
    default:
        return QVariant();
    }
}

} // namespace dov417
