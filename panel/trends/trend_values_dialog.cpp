#include "panel/trends/trend_values_dialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QVBoxLayout>

#include "panel/desk/column_widths.h"
#include "panel/desk/dialog_size.h"
#include "panel/desk/row_table.h"

namespace dov417 {

// ---- the values -----------------------------------------------------------------------------

TrendChoice::TrendChoice(const PanelDesk& desk) : desk_(desk)
{
    connect(&desk, &PanelDesk::tagsChanged, this, [this]() {
        beginResetModel();
        endResetModel();
    });
}

void TrendChoice::setGroup(const TrendGroup& group)
{
    group_ = group;
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCountOfChoice - 1));
}

int TrendChoice::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(desk_.tags().values.size());
}

int TrendChoice::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columnCountOfChoice;
}

QVariant TrendChoice::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const PanelValue& each = desk_.tags().values.at(static_cast<std::size_t>(index.row()));
    const bool isTaken = TrendHistory::takes(each.address);
    if (role == Qt::CheckStateRole && index.column() == name && isTaken)
        return group_.has(trendValueOf(each)) ? Qt::Checked : Qt::Unchecked;
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return QVariant();
    switch (index.column()) {
    case name:
        return QString::fromStdString(each.label.name);
    case address:
        return QString::fromStdString(each.label.address);
    case unit:
        return !isTaken ? tr("a text: no curve can show it")
               : each.address.width == Width::bit
                   ? tr("on / off")
                   : QString::fromStdString(each.label.format.scaling.unit);
    default:
        return QVariant();
    }
}

QVariant TrendChoice::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return section == name ? tr("Name") : section == address ? tr("Address") : tr("Unit");
}

Qt::ItemFlags TrendChoice::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const PanelValue& each = desk_.tags().values.at(static_cast<std::size_t>(index.row()));
    if (!TrendHistory::takes(each.address))
        return Qt::ItemIsSelectable;
    return QAbstractTableModel::flags(index) |
           (index.column() == name ? Qt::ItemIsUserCheckable : Qt::NoItemFlags);
}

bool TrendChoice::setData(const QModelIndex& index, const QVariant& data, int role)
{
    if (!index.isValid() || role != Qt::CheckStateRole)
        return false;
    // A copy: who listens may arrange all anew.
    const TrendValue each =
        trendValueOf(desk_.tags().values.at(static_cast<std::size_t>(index.row())));
    emit chosen(each, data.toInt() == Qt::Checked);
    return true;
}

// ---- the dialog -----------------------------------------------------------------------------

TrendValuesDialog::TrendValuesDialog(const PanelDesk& desk, QWidget* parent)
    : QDialog(parent), choice_(desk), search_(new QLineEdit), table_(new QTableView),
      title_(new QLabel)
{
    setWindowTitle(tr("Values of a plot"));
    filter_.setSourceModel(&choice_);
    filter_.setFilterKeyColumn(-1);
    filter_.setFilterCaseSensitivity(Qt::CaseInsensitive);
    search_->setPlaceholderText(tr("Show only names, addresses and units with \u2026"));
    search_->setAccessibleName(tr("Show only values with this text"));
    search_->setObjectName(QStringLiteral("trendSearch"));
    search_->setClearButtonEnabled(true);
    table_->setModel(&filter_);
    table_->setObjectName(QStringLiteral("trendChoice"));
    table_->setAccessibleName(tr("Values, those with a tick are in the plot"));
    showRows(*table_, roomInEditedRow);
    const int letter = table_->fontMetrics().averageCharWidth();
    setColumnLetters(*table_, {34, 20}); // name, address
    fillWithLast(*table_->horizontalHeader());
    table_->installEventFilter(this);
    title_->setWordWrap(true);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(title_);
    rows->addWidget(search_);
    rows->addWidget(table_, 1);
    rows->addWidget(buttons);
    resizeWithin(*this, QSize(letter * 90, table_->fontMetrics().height() * 26));
    connect(search_, &QLineEdit::textChanged, &filter_,
            &QSortFilterProxyModel::setFilterFixedString);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void TrendValuesDialog::showPlot(std::size_t plot, const TrendGroup& group)
{
    title_->setText(tr("Plot %1 shows the values with a tick. It has room for two units; a value "
                       "of a third one gets a plot of its own.")
                        .arg(plot + 1) +
                    QLatin1Char(' ') +
                    tr("There is room for %n value(s) on this page.", nullptr,
                       static_cast<int>(TrendArrangement::maxValues)));
    choice_.setGroup(group);
}

// The space bar, whatever column one is in.
bool TrendValuesDialog::eventFilter(QObject* object, QEvent* event)
{
    if (object == table_ && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space) {
        const QModelIndex index =
            table_->currentIndex().sibling(table_->currentIndex().row(), TrendChoice::name);
        const QVariant tick = index.data(Qt::CheckStateRole);
        if (tick.isValid())
            table_->model()->setData(index,
                                     tick.toInt() == Qt::Checked ? Qt::Unchecked : Qt::Checked,
                                     Qt::CheckStateRole);
        return true;
    }
    return QDialog::eventFilter(object, event);
}

} // namespace dov417
