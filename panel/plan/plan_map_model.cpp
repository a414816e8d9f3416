#include "panel/plan/plan_map_model.h"

#include <QStringList>
#include <utility>

namespace dov417 {

namespace {

constexpr int maxNames = 4; // of values, where a word holds many bits

QString useText(WordUse use)
{
    switch (use) {
    case WordUse::watched:
        return PlanMapModel::tr("watched");
    case WordUse::readAlong:
        return PlanMapModel::tr("read along, nobody watches it");
    case WordUse::uncovered:
        return PlanMapModel::tr("\u2717 watched, and no request reads it");
    case WordUse::notAsked:
        break;
    }
    return PlanMapModel::tr("not asked for");
}

} // namespace

void PlanMapModel::show(std::vector<PanelValue> values, const Plan& plan)
{
    beginResetModel();
    values_ = std::move(values);
    plan_ = plan;
    rows_ = planRows(values_, plan_);
    endResetModel();
}

void PlanMapModel::setStationNames(const StationNames& names)
{
    names_ = names;
    if (!rows_.empty())
        emit headerDataChanged(Qt::Vertical, 0, rowCount() - 1);
}

const PlanRow& PlanMapModel::rowAt(int row) const
{
    return rows_.at(static_cast<std::size_t>(row));
}

const PlanWord& PlanMapModel::wordAt(const QModelIndex& index) const
{
    return rowAt(index.row()).cells.at(static_cast<std::size_t>(index.column()));
}

QModelIndex PlanMapModel::startOf(int request) const
{
    const PlannedRequest& wanted = plan_.requests.at(static_cast<std::size_t>(request));
    const std::string regName = wordTypeOf(wanted.regName);
    int number = 0;
    for (const PlanRow& row : rows_) {
        if (row.station == wanted.station && row.regName == regName &&
            row.first == wanted.address - wanted.address % PlanRow::words)
            return index(number, wanted.address % PlanRow::words);
        ++number;
    }
    return QModelIndex();
}

int PlanMapModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int PlanMapModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : PlanRow::words;
}

QString PlanMapModel::requestText(int number, int word) const
{
    const PlannedRequest& request = plan_.requests.at(static_cast<std::size_t>(number));
    const QString words = QString::fromStdString(planWordsText(
        request.station, wordTypeOf(request.regName), request.address, request.length));
    const double ms = std::chrono::duration<double, std::milli>(request.time).count();
    QString text = tr("request %1 reads %2 (%n word(s), %3 ms)", nullptr, request.length)
                       .arg(number + 1)
                       .arg(words)
                       .arg(ms, 0, 'f', 1);
    int count = 0;
    for (const PlannedPart& part : request.parts) {
        ++count;
        if (word >= part.address && word < part.address + part.length)
            text += tr(", in part %1 of %2").arg(count).arg(request.parts.size());
    }
    return text;
}

QString PlanMapModel::textOf(const QModelIndex& index) const
{
    const PlanRow& row = rowAt(index.row());
    const PlanWord& word = wordAt(index);
    const int address = row.first + index.column();
    QString text = QString::fromStdString(planWordsText(row.station, row.regName, address, 1));
    if (names_.count(row.station) > 0)
        text += tr(" of %1").arg(stationText(names_, row.station));
    text += QStringLiteral(": ") + useText(word.use);
    QStringList names;
    for (const int value : word.values)
        names.append(
            QString::fromStdString(values_.at(static_cast<std::size_t>(value)).label.name));
    const int more = names.size() - maxNames;
    names = names.mid(0, maxNames);
    if (more > 0)
        names.append(tr("%n more", nullptr, more));
    if (!names.isEmpty())
        text += QStringLiteral(" (%1)").arg(names.join(QStringLiteral(", ")));
    for (const int request : word.requests)
        text += QStringLiteral("; ") + requestText(request, address);
    if (word.isBeyondLimit)
        text +=
            tr("; beyond the %1 registers that a strict controller answers").arg(maxWordsOfARead);
    return text;
}

QVariant PlanMapModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || (role != Qt::ToolTipRole && role != Qt::AccessibleTextRole))
        return QVariant();
    return textOf(index);
}

QVariant PlanMapModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const bool isRow = orientation == Qt::Vertical;
    if (role == Qt::ToolTipRole && isRow)
        return stationText(names_, rowAt(section).station);
    if (role != Qt::DisplayRole)
        return QVariant();
    if (!isRow)
        return QStringLiteral("+%1").arg(section);
    const PlanRow& row = rowAt(section);
    return QString::fromStdString(planWordsText(row.station, row.regName, row.first, 1));
}

} // namespace dov417
