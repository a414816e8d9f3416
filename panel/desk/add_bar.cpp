#include "panel/desk/add_bar.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "panel/desk/state_words.h"

namespace dov417 {

namespace {

constexpr int maxSeries = 5000;
constexpr int maxStep = 4096;

} // namespace

AddBar::AddBar(PanelDesk& desk)
    : desk_(desk), field_(new QLineEdit), count_(new QSpinBox), step_(new QSpinBox),
      add_(new QPushButton(tr("&Add"))), verdict_(new QLabel)
{
    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* const row = new QHBoxLayout;
    auto* const label = new QLabel(tr("A&ddress:"));
    label->setBuddy(field_);
    field_->setPlaceholderText(tr("R_W:100, R_W:100..107, 2/M_bit:1.5, R_D:600@float"));
    field_->setAccessibleName(tr("Address to watch"));
    field_->setObjectName(QStringLiteral("address"));
    field_->setClearButtonEnabled(true);
    auto* const series = new QLabel(tr("a &series of"));
    series->setBuddy(count_);
    count_->setRange(1, maxSeries);
    count_->setAccessibleName(tr("How many of a series"));
    count_->setObjectName(QStringLiteral("count"));
    auto* const distance = new QLabel(tr("in steps &of"));
    distance->setBuddy(step_);
    step_->setRange(1, maxStep);
    step_->setAccessibleName(tr("Distance within the series, in words or bits"));
    step_->setToolTip(step_->accessibleName());
    step_->setObjectName(QStringLiteral("step"));
    add_->setObjectName(QStringLiteral("add"));
    row->addWidget(label);
    row->addWidget(field_, 1);
    row->addWidget(series);
    row->addWidget(count_);
    row->addWidget(distance);
    row->addWidget(step_);
    row->addWidget(add_);
    verdict_->setAccessibleName(tr("What the driver says of the address"));
    verdict_->setObjectName(QStringLiteral("verdict"));
    verdict_->setWordWrap(true);
    rows->addLayout(row);
    rows->addWidget(verdict_);
    connect(field_, &QLineEdit::textChanged, this, [this]() { judge(); });
    connect(count_, QOverload<int>::of(&QSpinBox::valueChanged), this, [this]() { judge(); });
    connect(step_, QOverload<int>::of(&QSpinBox::valueChanged), this, [this]() { judge(); });
    connect(field_, &QLineEdit::returnPressed, this, [this]() { add(); });
    connect(add_, &QPushButton::clicked, this, [this]() { add(); });
    judge();
}

std::vector<Item> AddBar::typed() const
{
    const Item item = Items(desk_.library(), ItemSource())
                          .find(field_->text().trimmed().toStdString(), Access::read);
    return count_->value() == 1 ? std::vector<Item>{item}
                                : seriesOf(desk_.library(), item, count_->value(), step_->value());
}

void AddBar::judge()
{
    add_->setEnabled(false);
    if (field_->text().trimmed().isEmpty()) {
        verdict_->setText(tr("The driver says here, while you type, whether there is such an "
                             "address."));
        return;
    }
    try {
        const std::vector<Item> items = typed();
        int values = 0;
        for (const Item& item : items)
            values += valueCount(item.address);
        const QString first =
            QString::fromStdString(toText(desk_.library(), items.front().address));
        const QString last = QString::fromStdString(toText(desk_.library(), items.back().address));
        verdict_->setText(symbolOf(ValueState::good) + QLatin1Char(' ') +
                          (items.size() == 1
                               ? tr("%1, %n value(s)", nullptr, values).arg(first)
                               : tr("%1 to %2, %n value(s)", nullptr, values).arg(first, last)));
        add_->setEnabled(true);
    } catch (const Failure& failure) {
        verdict_->setText(symbolOf(ValueState::failed) + QLatin1Char(' ') +
                          QString::fromUtf8(failure.what()));
    }
}

void AddBar::add()
{
    if (!add_->isEnabled())
        return;
    emit wanted(typed());
    field_->clear();
    count_->setValue(1);
    field_->setFocus();
}

} // namespace dov417
