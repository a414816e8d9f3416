#include "panel/trends/trend_readout.h"

#include <QApplication>
#include <QFontMetrics>
#include <cmath>

#include "panel/desk/state_words.h"
#include "panel/trends/trend_style.h"

namespace dov417 {

namespace {

struct ReadoutTexts {
    Q_DECLARE_TR_FUNCTIONS(ReadoutTexts)
};

QString momentText(const TrendValue& value, const TrendMoment& moment)
{
    if (moment.raw)
        return QString::fromStdString(trendText(value, *moment.raw));
    return moment.gap ? gapWord(*moment.gap) : ReadoutTexts::tr("not recorded");
}

QString trendNumberText(const TrendValue& value, double number)
{
    return std::isnan(number) ? ReadoutTexts::tr("no number")
                              : QString::fromStdString(trendText(value, number));
}

// More than nothing is never 0 %, and less than all never 100 %.
QString partText(TrendTime part, TrendTime whole)
{
    constexpr double percent = 100;
    const double exact = percent * static_cast<double>(part) / static_cast<double>(whole);
    const double shown = part == whole ? percent : std::min(exact, percent - 0.1);
    return ReadoutTexts::tr("%1 %").arg(shown, 0, 'f', part == whole ? 0 : 1);
}

} // namespace

QString gapWord(TrendGap gap)
{
    switch (gap) {
    case TrendGap::failed:
        return ReadoutTexts::tr("request failed");
    case TrendGap::lineGone:
        return ReadoutTexts::tr("line not open");
    case TrendGap::lineHung:
        return ReadoutTexts::tr("line hung");
    case TrendGap::otherLine:
        return ReadoutTexts::tr("another line");
    case TrendGap::notWatched:
        return ReadoutTexts::tr("not watched");
    case TrendGap::doubtful:
        return ReadoutTexts::tr("in doubt");
    }
    return QString();
}

TrendReadout::TrendReadout(const PanelDesk& desk, const TrendHistory& history)
    : desk_(desk), history_(history)
{
}

void TrendReadout::setPlots(const std::vector<TrendGroup>& plots)
{
    beginResetModel();
    rows_.clear();
    std::size_t place = 0;
    for (const TrendGroup& group : plots) {
        for (const TrendValue& each : group.values) {
            Row row;
            row.plot = place;
            row.value = each;
            row.texts = texts(row);
            rows_.push_back(row);
        }
        ++place;
    }
    endResetModel();
}

void TrendReadout::setCursors(const std::optional<TrendTime>& a, const std::optional<TrendTime>& b)
{
    a_ = a;
    b_ = b;
    for (Row& row : rows_)
        row.statistics.reset();
    emit headerDataChanged(Qt::Horizontal, atA, known);
    refresh();
}

void TrendReadout::refresh()
{
    int place = 0;
    for (Row& row : rows_) {
        const QStringList before = row.texts;
        row.texts = texts(row);
        if (row.texts != before)
            emit dataChanged(index(place, 0), index(place, columns - 1));
        ++place;
    }
}

QStringList TrendReadout::texts(Row& row) const
{
    const TrendValue& each = row.value;
    QStringList texts = {QString::number(row.plot + 1), QString::fromStdString(each.name)};
    const View* const view = each.isWatched ? desk_.book().find(each.at) : nullptr;
    if (view) {
        ViewLabel label;
        label.format = each.format;
        texts << QString::fromStdString(shownText(*view, label));
    } else {
        texts << QStringLiteral("?");
    }
    texts << (each.isWatched ? standingText(desk_.book().standing(each.at))
                             : QStringLiteral("? ") + gapWord(TrendGap::notWatched));
    addCursors(row, texts);
    return texts;
}

void TrendReadout::addCursors(Row& row, QStringList& texts) const
{
    const TrendNumbers numbers(row.value.at.width, row.value.format);
    std::vector<std::optional<std::uint64_t>> held;
    for (const std::optional<TrendTime>& cursor : {a_, b_}) {
        const TrendMoment moment =
            cursor ? momentOf(history_, row.value.at, *cursor) : TrendMoment();
        texts << (cursor ? momentText(row.value, moment) : QString());
        held.push_back(moment.raw);
    }
    if (a_ && b_) {
        const TrendStatistics& between = statistics(row);
        const bool isComparable = held.front() && held.back() && !between.isOfTwoLines;
        texts << (isComparable
                      ? trendNumberText(row.value, numbers(*held.back()) - numbers(*held.front()))
                      : QString());
        if (between.isOfTwoLines)
            texts << gapWord(TrendGap::otherLine) << QString() << QString();
        else if (between.known == 0)
            texts << QStringLiteral("?") << QStringLiteral("?") << QStringLiteral("?");
        else
            texts << trendNumberText(row.value, between.minimum)
                  << trendNumberText(row.value, between.maximum)
                  << trendNumberText(row.value, between.mean);
        texts << (between.whole > 0 ? partText(between.known, between.whole) : QString());
    }
    while (texts.size() < columns)
        texts << QString();
}

// Again where more is known meanwhile of the time between the cursors.
const TrendStatistics& TrendReadout::statistics(Row& row) const
{
    const TrendTime from = std::min(*a_, *b_);
    const TrendTime to = std::max(*a_, *b_);
    const TrendTime end = std::min(to, history_.end(row.value.at).value_or(0));
    if (!row.statistics || row.end != end) {
        row.statistics = statisticsOf(history_, row.value.at,
                                      TrendNumbers(row.value.at.width, row.value.format), from, to);
        row.end = end;
    }
    return *row.statistics;
}

std::size_t TrendReadout::plotOf(int row) const
{
    return rows_.at(static_cast<std::size_t>(row)).plot;
}

const TrendValue& TrendReadout::valueOf(int row) const
{
    return rows_.at(static_cast<std::size_t>(row)).value;
}

int TrendReadout::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int TrendReadout::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns;
}

QVariant TrendReadout::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const QString text =
        rows_.at(static_cast<std::size_t>(index.row())).texts.value(index.column());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return text;
    case Qt::DecorationRole:
        if (index.column() != name)
            return QVariant();
        return trendSample(index.row(), QApplication::palette(),
                           QSize(28, QFontMetrics(QApplication::font()).height()));
    case Qt::AccessibleTextRole:
        return QStringLiteral("%1: %2").arg(headerData(index.column(), Qt::Horizontal).toString(),
                                            text);
    case Qt::TextAlignmentRole:
        return static_cast<int>(
            (index.column() == name || index.column() == state ? Qt::AlignLeft : Qt::AlignRight) |
            Qt::AlignVCenter);
    default:
        return QVariant();
    }
}

QVariant TrendReadout::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return QVariant();
    if (role == Qt::ToolTipRole && section == mean)
        return tr("Each value counts for as long as it held; gaps count for nothing");
    if (role == Qt::ToolTipRole && section == known)
        return tr("Of the time between the cursors; the rest are gaps");
    if (role != Qt::DisplayRole)
        return QVariant();
    static const char* const titles[] = {
        QT_TR_NOOP("Plot"),    QT_TR_NOOP("Name"), QT_TR_NOOP("Value now"),  QT_TR_NOOP("State"),
        QT_TR_NOOP("At A"),    QT_TR_NOOP("At B"), QT_TR_NOOP("B \u2212 A"), QT_TR_NOOP("Minimum"),
        QT_TR_NOOP("Maximum"), QT_TR_NOOP("Mean"), QT_TR_NOOP("Known")};
    return tr(titles[section]);
}

} // namespace dov417
