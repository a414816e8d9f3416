#include "panel/trends/trend_notes_dialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>

#include "panel/desk/column_widths.h"
#include "panel/desk/dialog_size.h"
#include "panel/desk/row_table.h"

namespace dov417 {

// ---- the notes ------------------------------------------------------------------------------

// Rows stay where they are the same moments: one of them may be edited just now.
void TrendNotesModel::setNotes(const std::vector<TrendNote>& notes)
{
    std::vector<TrendNote> sorted = notes;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const TrendNote& a, const TrendNote& b) { return a.at < b.at; });
    const bool areSameRows = std::equal(
        sorted.begin(), sorted.end(), notes_.begin(), notes_.end(),
        [](const TrendNote& a, const TrendNote& b) { return a.at == b.at && a.isOwn == b.isOwn; });
    if (!areSameRows)
        beginResetModel();
    notes_ = std::move(sorted);
    if (!areSameRows)
        endResetModel();
    else if (!notes_.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCountOfNotes - 1));
}

int TrendNotesModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(notes_.size());
}

int TrendNotesModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columnCountOfNotes;
}

QVariant TrendNotesModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const TrendNote& each = note(index.row());
    if (role == Qt::ToolTipRole)
        return each.isOwn ? tr("F2 changes it, Delete takes it away")
                          : tr("It was noted by itself, and is not kept in the project");
    if (role == Qt::EditRole && index.column() == text)
        return each.text;
    if (role != Qt::DisplayRole)
        return QVariant();
    return index.column() == time
               ? clock_.dateTime(each.at).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"))
               : noteText(each);
}

QVariant TrendNotesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return section == time ? tr("Time") : tr("What happened");
}

Qt::ItemFlags TrendNotesModel::flags(const QModelIndex& index) const
{
    const bool isEditable = index.isValid() && index.column() == text && note(index.row()).isOwn;
    return QAbstractTableModel::flags(index) | (isEditable ? Qt::ItemIsEditable : Qt::NoItemFlags);
}

bool TrendNotesModel::setData(const QModelIndex& index, const QVariant& data, int role)
{
    const QString given = data.toString().trimmed();
    if (!index.isValid() || role != Qt::EditRole || given.isEmpty())
        return false;
    // A copy: who listens sets all anew.
    const TrendNote each = note(index.row());
    if (given != each.text)
        emit edited(each, given);
    return true;
}

// ---- the dialog -----------------------------------------------------------------------------

TrendNotesDialog::TrendNotesDialog(const TrendClock& clock, QWidget* parent)
    : QDialog(parent), model_(clock), table_(new QTableView),
      show_(new QPushButton(tr("&Show in the plots"))), remove_(new QPushButton(tr("&Take away")))
{
    setWindowTitle(tr("Notes at a moment"));
    table_->setModel(&model_);
    table_->setObjectName(QStringLiteral("trendNotes"));
    table_->setAccessibleName(tr("Notes by their time"));
    showRows(*table_, roomInEditedRow);
    const int letter = table_->fontMetrics().averageCharWidth();
    setColumnLetters(*table_, {28}); // time
    fillWithLast(*table_->horizontalHeader());
    auto* const remove =
        new QShortcut(QKeySequence::Delete, table_, nullptr, nullptr, Qt::WidgetShortcut);
    auto* const about =
        new QLabel(tr("They are kept in the project, with day and time. Where nothing was recorded "
                      "then, as in another run of this program, they stand here alone."));
    about->setWordWrap(true);
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(about);
    rows->addWidget(table_, 1);
    addButtons(rows);
    resizeWithin(*this, QSize(letter * 90, table_->fontMetrics().height() * 22));
    connect(remove, &QShortcut::activated, this, [this]() { removeChosen(); });
    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this]() { showState(); });
    connect(&model_, &QAbstractItemModel::modelReset, this, [this]() { showState(); });
    showState();
}

void TrendNotesDialog::addButtons(QLayout* rows)
{
    auto* const save = new QPushButton(tr("Save as &CSV \u2026"));
    show_->setObjectName(QStringLiteral("showNote"));
    remove_->setObjectName(QStringLiteral("removeNote"));
    save->setObjectName(QStringLiteral("saveNotes"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    for (QPushButton* const each : {show_, remove_, save}) {
        buttons->addButton(each, QDialogButtonBox::ActionRole);
        each->setAutoDefault(false); // Enter ends what is typed in the table
    }
    buttons->button(QDialogButtonBox::Close)->setAutoDefault(false);
    rows->addWidget(buttons);
    connect(show_, &QPushButton::clicked, this, [this]() { showChosen(); });
    connect(remove_, &QPushButton::clicked, this, [this]() { removeChosen(); });
    connect(save, &QPushButton::clicked, this, &TrendNotesDialog::saveAsked);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void TrendNotesDialog::removeChosen()
{
    std::vector<TrendNote> own;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows())
        if (model_.note(index.row()).isOwn)
            own.push_back(model_.note(index.row()));
    if (!own.empty())
        emit removed(own);
}

void TrendNotesDialog::showChosen()
{
    const QModelIndexList chosen = table_->selectionModel()->selectedRows();
    if (!chosen.isEmpty())
        emit wanted(model_.note(chosen.constFirst().row()).at);
}

void TrendNotesDialog::showState()
{
    const QModelIndexList chosen = table_->selectionModel()->selectedRows();
    show_->setEnabled(chosen.size() == 1);
    remove_->setEnabled(std::any_of(chosen.begin(), chosen.end(), [this](const QModelIndex& index) {
        return model_.note(index.row()).isOwn;
    }));
}

} // namespace dov417
