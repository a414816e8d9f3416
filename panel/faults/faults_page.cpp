#include "panel/faults/faults_page.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QScrollArea>
#include <QVBoxLayout>
#include <cmath>

#include "panel/desk/panel_icons.h"
#include "panel/faults/fault_words.h"

namespace dov417 {

namespace {

constexpr int stepsPerPercent = 10;
constexpr int maxPercent = 100;
constexpr int maxShownResponseTimeMs = 5000;

QLabel* headOf(const QString& text)
{
    auto* const head = new QLabel(text);
    QFont bold = head->font();
    bold.setBold(true);
    head->setFont(bold);
    return head;
}

} // namespace

FaultsPage::FaultsPage(PanelDesk& desk)
    : PanelPage(desk), sentence_(new QLabel), counters_(new QLabel), power_(new QPushButton),
      cable_(new QPushButton), responseTime_(new QSpinBox),
      none_(new QPushButton(tr("&No faults"))), controller_(makeController()), rates_(makeRates())
{
    sentence_->setObjectName(QStringLiteral("faultSentence"));
    sentence_->setAccessibleName(tr("What is to be seen"));
    counters_->setObjectName(QStringLiteral("faultCounters"));
    counters_->setAccessibleName(tr("What the replies have suffered"));
    for (QLabel* const text : {sentence_, counters_})
        text->setWordWrap(true);
    // Of three lines, so that what is below does not jump when the text changes.
    sentence_->setMinimumHeight(3 * sentence_->fontMetrics().lineSpacing());
    sentence_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    auto* const content = new QWidget;
    auto* const rows = new QVBoxLayout(content);
    rows->addWidget(sentence_);
    rows->addWidget(controller_);
    rows->addWidget(rates_);
    rows->addWidget(counters_);
    rows->addStretch(1);
    auto* const area = new QScrollArea; // for large letters
    area->setWidget(content);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    auto* const whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(area);
    connect(&desk, &PanelDesk::lineBegan, this, [this]() { beginAnew(); });
    connect(&desk, &PanelDesk::stateChanged, this, [this]() { showState(); });
    beginAnew();
}

QString FaultsPage::title() const
{
    return tr("Faults");
}

QIcon FaultsPage::icon() const
{
    return iconOf(PanelIcon::faults);
}

QWidget* FaultsPage::makeController()
{
    auto* const box = new QGroupBox(tr("The controller"));
    auto* const row = new QHBoxLayout(box);
    power_->setObjectName(QStringLiteral("power"));
    cable_->setObjectName(QStringLiteral("cable"));
    responseTime_->setObjectName(QStringLiteral("responseTime"));
    responseTime_->setRange(0, maxShownResponseTimeMs);
    responseTime_->setSingleStep(10);
    responseTime_->setSuffix(tr(" ms"));
    responseTime_->setKeyboardTracking(false);
    responseTime_->setAccessibleName(tr("What the controller takes before it answers"));
    auto* const label = new QLabel(tr("&Response time:"));
    label->setBuddy(responseTime_);
    row->addWidget(power_);
    row->addWidget(cable_);
    row->addSpacing(fontMetrics().height());
    row->addWidget(label);
    row->addWidget(responseTime_);
    row->addStretch(1);
    connect(power_, &QPushButton::clicked, this, [this]() {
        isOn_ = !isOn_;
        order();
    });
    connect(cable_, &QPushButton::clicked, this, [this]() {
        isPlugged_ = !isPlugged_;
        order();
    });
    connect(responseTime_, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this]() { order(); });
    return box;
}

QWidget* FaultsPage::makeRates()
{
    auto* const box = new QGroupBox(tr("Faults of its replies"));
    auto* const grid = new QGridLayout(box);
    grid->setColumnStretch(2, 1);
    grid->setHorizontalSpacing(2 * fontMetrics().averageCharWidth());
    int column = 0;
    for (const QString& head : {tr("Fault"), tr("What happens to a reply"), tr("Share of replies"),
                                QString(), tr("So far")})
        grid->addWidget(headOf(head), 0, column++);
    int line = 1;
    for (const simulator::FaultKind kind : faultKinds())
        rows_.push_back(makeRow(grid, kind, line++));
    none_->setObjectName(QStringLiteral("noFaults"));
    none_->setToolTip(tr("Sets every rate to nothing, and the response time to what it was"));
    grid->addWidget(none_, line, 3);
    connect(none_, &QPushButton::clicked, this, [this]() {
        clearRates();
        order();
    });
    return box;
}

FaultsPage::FaultRow FaultsPage::makeRow(QGridLayout* grid, simulator::FaultKind kind, int line)
{
    const QString name = QString::fromStdString(simulator::faultName(kind));
    const QString rateName = tr("Rate of the fault %1, in percent").arg(name);
    FaultRow row{kind, new QSlider(Qt::Horizontal), new QDoubleSpinBox, new QLabel};
    row.slider->setObjectName(QStringLiteral("slider-") + name);
    row.slider->setAccessibleName(rateName);
    row.slider->setFocusPolicy(Qt::StrongFocus);
    row.slider->setRange(0, maxPercent * stepsPerPercent);
    row.slider->setSingleStep(stepsPerPercent);
    row.slider->setPageStep(10 * stepsPerPercent);
    row.rate->setObjectName(QStringLiteral("rate-") + name);
    row.rate->setAccessibleName(rateName);
    row.rate->setRange(0, maxPercent);
    row.rate->setDecimals(1);
    row.rate->setSuffix(tr(" %"));
    row.rate->setKeyboardTracking(false);
    row.count->setObjectName(QStringLiteral("count-") + name);
    row.count->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(new QLabel(name), line, 0);
    grid->addWidget(new QLabel(faultEffect(kind)), line, 1);
    grid->addWidget(row.slider, line, 2);
    grid->addWidget(row.rate, line, 3);
    grid->addWidget(row.count, line, 4);
    connect(row.slider, &QSlider::valueChanged, row.rate, [rate = row.rate](int steps) {
        rate->setValue(static_cast<double>(steps) / stepsPerPercent);
    });
    connect(row.rate, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            [this, slider = row.slider](double percent) {
                slider->setValue(static_cast<int>(std::lround(percent * stepsPerPercent)));
                order();
            });
    return row;
}

void FaultsPage::beginAnew()
{
    isOn_ = true;
    isPlugged_ = true;
    clearRates();
    showState();
}

void FaultsPage::clearRates()
{
    isShowing_ = true;
    responseTime_->setValue(desk_.ownController().responseTimeMs);
    for (const FaultRow& row : rows_)
        row.rate->setValue(0);
    isShowing_ = false;
}

simulator::Conditions FaultsPage::wanted() const
{
    simulator::Conditions conditions;
    conditions.responseTimeMs = responseTime_->value();
    conditions.isOn = isOn_;
    conditions.isPlugged = isPlugged_;
    for (const FaultRow& row : rows_) {
        simulator::FaultRule rule;
        rule.kind = row.kind;
        rule.probability = row.rate->value() / maxPercent;
        if (rule.probability > 0)
            conditions.faults.push_back(simulator::faultRuleText(rule));
    }
    return conditions;
}

void FaultsPage::order()
{
    if (isShowing_)
        return;
    desk_.setConditions(wanted());
    showState();
}

void FaultsPage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    showState();
}

void FaultsPage::showState()
{
    if (!isVisible())
        return;
    const bool isOwn = desk_.hasLine() && desk_.state().isSimulated;
    controller_->setEnabled(isOwn);
    rates_->setEnabled(isOwn);
    power_->setText(isOn_ ? tr("S&witch the controller off") : tr("S&witch the controller on"));
    cable_->setText(isPlugged_ ? tr("P&ull the cable") : tr("Pl&ug the cable in"));
    sentence_->setText(faultSentence(desk_, wanted()));
    counters_->setText(faultCounters(desk_));
    const auto& report = desk_.controllerReport();
    for (const FaultRow& row : rows_) {
        if (row.kind == simulator::FaultKind::any)
            continue; // counted as what it became
        const auto name = simulator::faultName(row.kind);
        const bool isCounted = isOwn && report && report->counts.kinds.count(name) > 0;
        row.count->setText(isCounted ? QString::number(report->counts.kinds.at(name)) : QString());
    }
}

} // namespace dov417
