#include "panel/plan/plan_tables.h"

#include <QStringList>

namespace dov417 {

namespace {

enum RequestColumn {
    requestNumber,
    requestWords,
    requestLength,
    requestAlong,
    requestTime,
    requestRemarks
};
constexpr int requestColumns = 6;

enum GapColumn {
    gapWords,
    gapRequests,
    gapCycle,
    gapRemarks
};
constexpr int gapColumns = 4;

QString msText(std::chrono::microseconds time)
{
    return QString::number(std::chrono::duration<double, std::milli>(time).count(), 'f', 1);
}

QVariant aligned(bool isText)
{
    return static_cast<int>((isText ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
}

enum class RemarkLength {
    inBrief,
    inFull
};

QString remarksOf(const PlannedRequest& request, RemarkLength how)
{
    QStringList remarks;
    if (!request.parts.empty())
        remarks.append(PlanRequestsModel::tr("in %n part(s)", nullptr,
                                             static_cast<int>(request.parts.size())));
    if (request.isAboveLimit())
        remarks.append((how == RemarkLength::inBrief
                            ? PlanRequestsModel::tr("\u26a0 over %1 registers")
                            : PlanRequestsModel::tr("\u26a0 more than the %1 registers that a "
                                                    "strict controller answers: set Registers in "
                                                    "one request, among the settings of the line"))
                           .arg(maxWordsOfARead));
    return remarks.join(QStringLiteral("; "));
}

} // namespace

// ---- requests -------------------------------------------------------------------------------

void PlanRequestsModel::show(const Plan& plan, const std::vector<int>& readAlong)
{
    beginResetModel();
    plan_ = plan;
    readAlong_ = readAlong;
    endResetModel();
}

int PlanRequestsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(plan_.requests.size());
}

int PlanRequestsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : requestColumns;
}

QVariant PlanRequestsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const int column = index.column();
    if (role == Qt::TextAlignmentRole)
        return aligned(column == requestWords || column == requestRemarks);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return QVariant();
    const auto place = static_cast<std::size_t>(index.row());
    const PlannedRequest& request = plan_.requests.at(place);
    switch (column) {
    case requestNumber:
        return index.row() + 1;
    case requestWords:
        return QString::fromStdString(planWordsText(request.station, wordTypeOf(request.regName),
                                                    request.address, request.length));
    case requestLength:
        return request.length;
    case requestAlong:
        return readAlong_.at(place);
    case requestTime:
        return msText(request.time);
    case requestRemarks:
        return remarksOf(request,
                         role == Qt::ToolTipRole ? RemarkLength::inFull : RemarkLength::inBrief);
    default:
        return QVariant();
    }
}

QVariant PlanRequestsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case requestNumber:
        return tr("Request");
    case requestWords:
        return tr("Reads");
    case requestLength:
        return tr("Words");
    case requestAlong:
        return tr("Read along");
    case requestTime:
        return tr("Takes (ms)");
    case requestRemarks:
        return tr("Remarks");
    default:
        return QVariant();
    }
}

// ---- gaps -----------------------------------------------------------------------------------

void GapsModel::show(const std::vector<GapOutcome>& outcomes, int gap)
{
    beginResetModel();
    outcomes_ = outcomes;
    gap_ = gap;
    endResetModel();
}

int GapsModel::best() const
{
    return bestOutcome(outcomes_);
}

int GapsModel::rowOf(int gap) const
{
    int found = -1;
    int row = 0;
    for (const GapOutcome& outcome : outcomes_) {
        if (gap >= outcome.firstGap)
            found = row;
        ++row;
    }
    return found;
}

int GapsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(outcomes_.size());
}

int GapsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : gapColumns;
}

QString GapsModel::remarks(int row) const
{
    const GapOutcome& outcome = outcomes_.at(static_cast<std::size_t>(row));
    QStringList texts;
    if (row == best())
        texts.append(tr("\u2605 best"));
    if (row == rowOf(gap_))
        texts.append(tr("\u25cf in use"));
    if (outcome.aboveLimit > 0)
        texts.append(tr("\u26a0 %n over %1", nullptr, outcome.aboveLimit).arg(maxWordsOfARead));
    if (outcome.uncoveredWords > 0)
        texts.append(tr("\u2717 %n word(s) not read", nullptr, outcome.uncoveredWords));
    return texts.join(QStringLiteral(", "));
}

QVariant GapsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const int column = index.column();
    if (role == Qt::TextAlignmentRole)
        return aligned(column == gapRemarks);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return QVariant();
    const GapOutcome& outcome = outcomes_.at(static_cast<std::size_t>(index.row()));
    switch (column) {
    case gapWords:
        return QString::fromStdString(gapRange(outcome));
    case gapRequests:
        return outcome.requests;
    case gapCycle:
        return msText(outcome.cycle);
    case gapRemarks:
        return remarks(index.row());
    default:
        return QVariant();
    }
}

QVariant GapsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case gapWords:
        return tr("Gap (words)");
    case gapRequests:
        return tr("Requests");
    case gapCycle:
        return tr("Cycle (ms)");
    case gapRemarks:
        return tr("Remarks");
    default:
        return QVariant();
    }
}

} // namespace dov417
