#include "panel/values/write_dialog.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include "panel/desk/dialog_size.h"
#include "panel/desk/state_words.h"

namespace dov417 {

WriteDialog::WriteDialog(PanelDesk& desk, const std::vector<PanelValue>& values, QWidget* parent)
    : QDialog(parent), desk_(desk), problem_(new QLabel), write_(nullptr)
{
    setWindowTitle(tr("Write values"));
    auto* const rows = new QVBoxLayout(this);
    auto* const inside = new QWidget;
    auto* const grid = new QGridLayout(inside);
    grid->setColumnStretch(3, 1);
    int row = 0;
    for (const PanelValue& value : values) {
        auto* const label = new QLabel(QString::fromStdString(value.label.name));
        label->setToolTip(QString::fromStdString(value.label.address));
        auto* const now = new QLabel;
        now->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        auto* const standing = new QLabel;
        for (const auto& [each, name] : {std::pair{now, "now"}, std::pair{standing, "standing"}})
            each->setObjectName(QLatin1String(name));
        auto* const field = new QLineEdit;
        field->setAccessibleName(tr("New value of %1").arg(label->text()));
        label->setBuddy(field);
        const std::string range = allowedRange(value);
        auto* const allowed = new QLabel(
            range.empty() ? QString() : tr("allowed: %1").arg(QString::fromStdString(range)));
        auto* const verdict = new QLabel;
        verdict->setWordWrap(true);
        grid->addWidget(label, row, 0);
        grid->addWidget(now, row, 1);
        grid->addWidget(standing, row, 2);
        grid->addWidget(field, row, 3);
        grid->addWidget(allowed, row, 4);
        grid->addWidget(verdict, row + 1, 0, 1, 5);
        row += 2;
        places_.emplace(value.address, fields_.size());
        fields_.push_back({value, now, standing, field, verdict});
        showKnown(fields_.back(), desk.book());
        connect(field, &QLineEdit::textChanged, this, [this]() { judge(); });
    }
    grid->setRowStretch(row, 1);
    auto* const scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus); // it follows the fields
    scroll->setWidget(inside);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    write_ = buttons->addButton(tr("&Write"), QDialogButtonBox::AcceptRole);
    problem_->setWordWrap(true);
    rows->addWidget(scroll, 1);
    rows->addWidget(problem_);
    rows->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &WriteDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(&desk, &PanelDesk::valuesChanged, this,
            [this](const std::vector<Address>& changed) { follow(changed); });
    constexpr int maxRows = 8; // else it scrolls
    const int line = fontMetrics().height();
    const int lines = 6 + 3 * std::min(maxRows, static_cast<int>(values.size()));
    const int beside = scroll->verticalScrollBar()->sizeHint().width() + 2 * line;
    resizeWithin(*this,
                 QSize(std::max(line * 32, inside->sizeHint().width() + beside), line * lines));
    if (!fields_.empty())
        fields_.front().text->setFocus(); // else the area around it has what is typed
    judge();
}

// As the page of values says it: what was known when the dialog came up may not hold any more.
void WriteDialog::showKnown(const Field& field, const ValueBook& book)
{
    field.now->setText(shownValue(field.value, book));
    field.standing->setText(standingText(book.standing(field.value.address)));
}

void WriteDialog::follow(const std::vector<Address>& changed)
{
    for (const Address& address : changed) {
        const auto [first, last] = places_.equal_range(address);
        for (auto place = first; place != last; ++place)
            showKnown(fields_.at(place->second), desk_.book());
    }
}

void WriteDialog::judge()
{
    bool isAny = false;
    bool areFit = true;
    for (const Field& field : fields_) {
        const QString text = field.text->text().trimmed();
        QString verdict;
        try {
            if (!text.isEmpty())
                bytesToWrite(field.value, text.toStdString());
        } catch (const Failure& failure) {
            verdict =
                symbolOf(ValueState::failed) + QLatin1Char(' ') + QString::fromUtf8(failure.what());
        }
        isAny = isAny || !text.isEmpty();
        areFit = areFit && verdict.isEmpty();
        field.verdict->setText(verdict);
    }
    write_->setEnabled(isAny && areFit);
}

void WriteDialog::accept()
{
    if (!write_->isEnabled())
        return;
    for (Field& field : fields_) {
        const QString text = field.text->text().trimmed();
        if (text.isEmpty())
            continue;
        try {
            desk_.write(field.value, text.toStdString());
        } catch (const Failure& failure) {
            problem_->setText(QString::fromUtf8(failure.what()));
            return;
        }
        field.text->clear(); // written once
    }
    QDialog::accept();
}

} // namespace dov417
