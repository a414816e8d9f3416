#include "panel/frames/wire_shares_model.h"

#include <QApplication>

#include "panel/frames/wire_look.h"
#include "panel/frames/wire_words.h"

namespace dov417 {

namespace {

constexpr int shareDecimals = 2; // of milliseconds

} // namespace

void WireSharesModel::show(const WireShares& shares)
{
    shares_ = shares;
    emit dataChanged(index(0, 0), index(wireUses - 1, columns - 1));
}

int WireSharesModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : wireUses;
}

int WireSharesModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columns;
}

QString WireSharesModel::text(WireUse use, int column) const
{
    switch (column) {
    case what:
        return wordOf(use);
    case part:
        return tr("%1 %").arg(100 * shares_.part(shares_.of(use)), 0, 'f', 1);
    case perCycle:
        return shares_.cycles == 0 ? QStringLiteral("\u2013")
                                   : wireTimeText(shares_.perCycle(use), shareDecimals);
    case inAll:
        return wireTimeText(shares_.of(use), shareDecimals);
    default:
        return QString();
    }
}

QVariant WireSharesModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const WireUse use = static_cast<WireUse>(index.row());
    if (role == Qt::DisplayRole)
        return text(use, index.column());
    if (role == Qt::ToolTipRole)
        return explanationOf(use);
    if (role == Qt::DecorationRole && index.column() == what)
        return iconOf(use, QSize(32, 16), QApplication::palette());
    if (role == Qt::TextAlignmentRole && index.column() != what)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    return QVariant();
}

QVariant WireSharesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    switch (section) {
    case what:
        return tr("Used for");
    case part:
        return tr("Share");
    case perCycle:
        return tr("In a cycle");
    case inAll:
        return tr("In all");
    default:
        return QVariant();
    }
}

} // namespace dov417
