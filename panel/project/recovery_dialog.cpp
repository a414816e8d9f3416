#include "panel/project/recovery_dialog.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QVBoxLayout>

#include "panel/desk/column_widths.h"
#include "panel/desk/dialog_size.h"
#include "panel/desk/yes_question.h"

namespace dov417 {

namespace {

QString timeText(const QDateTime& time)
{
    return QLocale().toString(time, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

} // namespace

RecoveryDialog::RecoveryDialog(std::vector<UnsavedCopy>& copies, QWidget* parent)
    : QDialog(parent), copies_(copies), table_(new QTreeWidget)
{
    setWindowTitle(tr("Work that was not saved"));
    auto* const rows = new QVBoxLayout(this);
    auto* const what = new QLabel(
        tr("A panel ended before this was saved. Whatever is taken up is shown as it was then; the "
           "project's own file stays as it is until you save."));
    what->setWordWrap(true);
    table_->setObjectName(QStringLiteral("unsaved"));
    table_->setAccessibleName(tr("Work that was not saved"));
    table_->setHeaderLabels(
        {tr("Project"), tr("Kept at"), tr("The file is"), tr("What is different from the file")});
    table_->setRootIsDecorated(false);
    table_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    constexpr int differences = 3;
    table_->header()->setSectionResizeMode(differences, QHeaderView::Interactive);
    fillWithLast(*table_->header());
    auto* const buttons = new QDialogButtonBox;
    take_ = buttons->addButton(tr("&Take it up"), QDialogButtonBox::AcceptRole);
    remove_ = buttons->addButton(tr("&Remove it \u2026"), QDialogButtonBox::DestructiveRole);
    auto* const later = buttons->addButton(tr("&Later"), QDialogButtonBox::RejectRole);
    take_->setObjectName(QStringLiteral("takeUp"));
    remove_->setObjectName(QStringLiteral("removeUnsaved"));
    later->setObjectName(QStringLiteral("later"));
    rows->addWidget(what);
    rows->addWidget(table_, 1);
    rows->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(remove_, &QPushButton::clicked, this, [this]() { removeCurrent(); });
    connect(table_, &QTreeWidget::itemSelectionChanged, this, [this]() { showButtons(); });
    const int letter = fontMetrics().averageCharWidth();
    resizeWithin(*this, QSize(letter * 140, fontMetrics().height() * 18));
    list();
}

void RecoveryDialog::list()
{
    table_->clear();
    for (const UnsavedCopy& copy : copies_) {
        const QString project = copy.project.isEmpty() ? tr("untitled") : copy.project;
        const QString file = !copy.saved.isValid() ? tr("not there")
                             : copy.saved < copy.made
                                 ? tr("older, of %1").arg(timeText(copy.saved))
                                 : tr("newer, of %1").arg(timeText(copy.saved));
        const QString what = copy.problem.isEmpty() ? copy.differences.join(QLatin1Char('\n'))
                                                    : tr("it cannot be used: %1").arg(copy.problem);
        auto* const row = new QTreeWidgetItem(table_, {project, timeText(copy.made), file, what});
        row->setToolTip(3, what);
        for (int column = 0; column < table_->columnCount(); ++column)
            row->setTextAlignment(column, Qt::AlignLeft | Qt::AlignTop);
    }
    if (table_->topLevelItemCount() > 0)
        table_->setCurrentItem(table_->topLevelItem(0));
    showButtons();
}

UnsavedCopy* RecoveryDialog::chosen() const
{
    const int row = table_->indexOfTopLevelItem(table_->currentItem());
    const auto at = static_cast<std::size_t>(row);
    return row < 0 || at >= copies_.size() ? nullptr : &copies_.at(at);
}

void RecoveryDialog::showButtons()
{
    const UnsavedCopy* const copy = chosen();
    take_->setEnabled(copy && copy->problem.isEmpty());
    remove_->setEnabled(copy != nullptr);
}

void RecoveryDialog::removeCurrent()
{
    UnsavedCopy* const copy = chosen();
    if (!copy || !saysYes(this, tr("Remove it"), tr("What was not saved is lost then. Remove it?")))
        return;
    removeUnsaved(*copy);
    copies_.erase(copies_.begin() + (copy - copies_.data()));
    list();
    if (copies_.empty())
        reject();
}

} // namespace dov417
