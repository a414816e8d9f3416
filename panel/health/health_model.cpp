#include "panel/health/health_model.h"

#include <QFont>
#include <QStringList>
#include <algorithm>
#include <map>

#include "line/frame_text.h"
#include "panel/desk/request_words.h"

namespace dov417 {

namespace {

// Those without a column of their own.
const Reason otherReasons[] = {Reason::noFrame,      Reason::otherStation, Reason::otherFunction,
                               Reason::otherRequest, Reason::late,         Reason::heldBack,
                               Reason::cutShort};

QString timesText(long long times, const QString& what)
{
    return QStringLiteral("%1 \u00d7 %2").arg(times).arg(what);
}

// A station's in brief: what the codes mean stands with its requests, and in the tip.
enum class CodeText {
    alone,
    withName
};

QString exceptionsText(const RequestCounters& counters, CodeText how)
{
    QStringList texts;
    for (const auto& [code, times] : counters.exceptions) {
        const QString name =
            how == CodeText::alone
                ? QString()
                : QStringLiteral(" (%1)").arg(QString::fromStdString(exceptionName(code)));
        texts.append(timesText(times, QString::number(code) + name));
    }
    return texts.join(QStringLiteral(", "));
}

QString othersText(const RequestCounters& counters)
{
    QStringList texts;
    for (const Reason reason : otherReasons)
        if (counters.badFor(reason) > 0)
            texts.append(timesText(counters.badFor(reason), QString::fromUtf8(nameOf(reason))));
    return texts.join(QStringLiteral(", "));
}

QString countText(long long count)
{
    return count == 0 ? QString() : QString::number(count);
}

HealthRow remarkRow(const QString& text)
{
    HealthRow row;
    row.name = text;
    row.kind = HealthRow::Kind::remark;
    return row;
}

QString remarkOf(const RequestCounters& counters)
{
    return withAddresses(counters.notAsked > 0 && !counters.whyNotAsked.empty()
                             ? counters.whyNotAsked
                             : counters.givenUp);
}

QString remarkOf(const StationTime& time)
{
    const auto milliseconds = [](Micros each) {
        return QString::number(static_cast<double>(each.count()) / 1000.0, 'f', 1);
    };
    return HealthModel::tr("answers after %1 ms (slowest %2 ms); time-out %3 ms")
        .arg(milliseconds(time.last), milliseconds(time.slowest), milliseconds(time.timeout));
}

std::vector<HealthRow> rowsOf(const LinkStatistics& statistics, const StationNames& names)
{
    std::map<int, std::vector<HealthRow>> stations; // the first row is the station's
    for (const std::string& request : statistics.order) {
        HealthRow row;
        row.name = withAddresses(request);
        row.counters = statistics.requests.at(request);
        std::vector<HealthRow>& rows = stations[row.counters.station];
        if (rows.empty()) {
            HealthRow station;
            station.name = stationText(names, row.counters.station);
            station.kind = HealthRow::Kind::station;
            rows.push_back(station);
        }
        rows.front().counters.add(row.counters);
        rows.push_back(row);
        const QString remark = remarkOf(row.counters);
        if (!remark.isEmpty())
            rows.push_back(remarkRow(remark));
    }
    for (const StationTime& each : statistics.stations)
        if (const auto found = stations.find(each.station); found != stations.end())
            found->second.insert(found->second.begin() + 1, remarkRow(remarkOf(each)));
    std::vector<HealthRow> all;
    for (const auto& [number, rows] : stations)
        all.insert(all.end(), rows.begin(), rows.end());
    return all;
}

} // namespace

void HealthModel::show(const LinkStatistics& statistics, const StationNames& names)
{
    std::vector<HealthRow> rows = rowsOf(statistics, names);
    const bool isSame = std::equal(
        rows.begin(), rows.end(), rows_.begin(), rows_.end(),
        [](const HealthRow& a, const HealthRow& b) {
            return a.kind == b.kind && (a.name == b.name || a.kind == HealthRow::Kind::remark);
        });
    if (!isSame)
        beginResetModel();
    rows_ = std::move(rows);
    if (!isSame)
        endResetModel();
    else if (!rows_.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, columns - 1));
}

bool HealthModel::hasAny(Column column) const
{
    return std::any_of(rows_.begin(), rows_.end(),
                       [column](const HealthRow& row) { return !text(row, column).isEmpty(); });
}

bool HealthModel::isRemark(int row) const
{
    return rows_.at(static_cast<std::size_t>(row)).kind == HealthRow::Kind::remark;
}

int HealthModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int HealthModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns;
}

QString HealthModel::text(const HealthRow& row, int column)
{
    static const QString indent = QStringLiteral("    ");
    const RequestCounters& counters = row.counters;
    if (row.kind == HealthRow::Kind::remark)
        return column == name ? indent + indent + row.name : QString();
    switch (column) {
    case name:
        return row.kind == HealthRow::Kind::station ? row.name : indent + row.name;
    case sent:
        return QString::number(counters.sent);
    case good:
        return QString::number(counters.good);
    case retries:
        return countText(counters.retries);
    case noByte:
        return countText(counters.badFor(Reason::silence));
    case badCrc:
        return countText(counters.badFor(Reason::badCrc));
    case abandoned:
        return countText(counters.abandoned);
    case notSent:
        return countText(counters.notSent);
    case notAsked:
        return countText(counters.notAsked);
    case exceptions:
        return exceptionsText(counters, row.kind == HealthRow::Kind::station ? CodeText::alone
                                                                             : CodeText::withName);
    case others:
        return othersText(counters);
    default:
        return QString();
    }
}

QVariant HealthModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const HealthRow& row = rows_.at(static_cast<std::size_t>(index.row()));
    const int column = index.column();
    if (role == Qt::ToolTipRole && column == exceptions)
        return exceptionsText(row.counters, CodeText::withName);
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return text(row, column);
    if (role == Qt::FontRole && row.kind == HealthRow::Kind::station) {
        QFont bold;
        bold.setBold(true);
        return bold;
    }
    const bool isNumber = column != name && column != exceptions && column != others;
    if (role == Qt::TextAlignmentRole && isNumber)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    return QVariant();
}

QVariant HealthModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case name:
        return tr("Request");
    case sent:
        return tr("sent");
    case good:
        return tr("good");
    case retries:
        return tr("retries");
    case noByte:
        return tr("no byte came");
    case badCrc:
        return tr("bad CRC");
    case abandoned:
        return tr("given up");
    case notSent:
        return tr("not sent");
    case notAsked:
        return tr("not asked");
    case exceptions:
        return tr("exceptions");
    case others:
        return tr("other reasons");
    default:
        return QVariant();
    }
}

} // namespace dov417
