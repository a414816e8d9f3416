#include "panel/health/health_model.h"

#include <QFont>
#include <QStringList>
#include <algorithm>
#include <map>

#include "line/frame_text.h"

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

QString exceptionsText(const RequestCounters& counters)
{
    QStringList texts;
    for (const auto& [code, times] : counters.exceptions)
        texts.append(timesText(times, QStringLiteral("%1 (%2)").arg(code).arg(
                                          QString::fromStdString(exceptionName(code)))));
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

QString remarkOf(const RequestCounters& counters)
{
    return QString::fromStdString(counters.notAsked > 0 && !counters.whyNotAsked.empty()
                                      ? counters.whyNotAsked
                                      : counters.givenUp);
}

std::vector<HealthRow> rowsOf(const LinkStatistics& statistics, const StationNames& names)
{
    std::map<int, std::vector<HealthRow>> stations; // the first row is the station's
    for (const std::string& request : statistics.order) {
        HealthRow row;
        row.name = QString::fromStdString(request);
        row.counters = statistics.requests.at(request);
        row.remark = remarkOf(row.counters);
        std::vector<HealthRow>& rows = stations[row.counters.station];
        if (rows.empty()) {
            HealthRow station;
            station.name = stationText(names, row.counters.station);
            station.isStation = true;
            rows.push_back(station);
        }
        rows.front().counters.add(row.counters);
        rows.push_back(row);
    }
    for (const StationTime& each : statistics.stations)
        if (const auto station = stations.find(each.station); station != stations.end()) {
            const auto milliseconds = [](Micros time) {
                return QString::number(static_cast<double>(time.count()) / 1000.0, 'f', 1);
            };
            station->second.front().remark =
                HealthModel::tr("answers after %1 ms (slowest %2 ms); time-out %3 ms")
                    .arg(milliseconds(each.last), milliseconds(each.slowest),
                         milliseconds(each.timeout));
        }
    std::vector<HealthRow> all;
    for (const auto& [number, rows] : stations)
        all.insert(all.end(), rows.begin(), rows.end());
    return all;
}

} // namespace

void HealthModel::show(const LinkStatistics& statistics, const StationNames& names)
{
    std::vector<HealthRow> rows = rowsOf(statistics, names);
    const bool isSame =
        std::equal(rows.begin(), rows.end(), rows_.begin(), rows_.end(),
                   [](const HealthRow& a, const HealthRow& b) { return a.name == b.name; });
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
    const RequestCounters& counters = row.counters;
    switch (column) {
    case name:
        return row.isStation ? row.name : QStringLiteral("    ") + row.name;
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
    case exceptions:
        return exceptionsText(counters);
    case others:
        return othersText(counters);
    case abandoned:
        return countText(counters.abandoned);
    case notAsked:
        return countText(counters.notAsked);
    case remark:
        return row.remark;
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
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return text(row, column);
    if (role == Qt::FontRole && row.isStation && column != remark) {
        QFont bold;
        bold.setBold(true);
        return bold;
    }
    const bool isNumber =
        column != name && column != exceptions && column != others && column != remark;
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
    case exceptions:
        return tr("exceptions");
    case others:
        return tr("other reasons");
    case abandoned:
        return tr("given up");
    case notAsked:
        return tr("not asked");
    case remark:
        return tr("Remark");
    default:
        return QVariant();
    }
}

} // namespace dov417
