#include "panel/plan/plan_page.h"

#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "panel/desk/panel_icons.h"

namespace dov417 {

namespace {

constexpr int beginPauseMs = 150; // several changes in a row are planned once

QString cycleText(std::chrono::microseconds cycle)
{
    return QString::number(std::chrono::duration<double, std::milli>(cycle).count(), 'f', 1);
}

} // namespace

PlanPage::PlanPage(PanelDesk& desk)
    : PanelPage(desk), heading_(new QLabel), named_(new QLabel), notes_(new QLabel),
      measured_(new QLabel), mapTable_(new QTableView), requestTable_(new QTableView),
      gapTable_(new QTableView), plot_(new GapPlot), responseTime_(new QSpinBox),
      useBest_(new QPushButton), useChosen_(new QPushButton)
{
    for (QLabel* const label : {heading_, named_, notes_, measured_})
        label->setWordWrap(true);
    heading_->setObjectName(QStringLiteral("planHeading"));
    named_->setObjectName(QStringLiteral("planWord"));
    notes_->setObjectName(QStringLiteral("planNotes"));
    auto* const splitter = new QSplitter(Qt::Horizontal);
    splitter->setObjectName(QStringLiteral("planSplit"));
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(makeMap());
    splitter->addWidget(makeGaps());
    splitter->setSizes({1000, 820}); // in this proportion
    splitter->setStretchFactor(0, 4);
    splitter->setStretchFactor(1, 3);
    auto* const rows = new QVBoxLayout(this);
    rows->addWidget(heading_);
    rows->addWidget(splitter, 1);

    beginTimer_.setSingleShot(true);
    beginTimer_.setInterval(beginPauseMs);
    connect(&beginTimer_, &QTimer::timeout, this, [this]() { begin(); });
    connect(&desk, &PanelDesk::tagsChanged, this, [this]() { planAnew(); });
    connect(&desk, &PanelDesk::lineSetupChanged, this, [this]() {
        chosenGap_.reset();
        planAnew();
    });
    map_.setStationNames(desk.stationNames());
    connect(&desk, &PanelDesk::stationNamesChanged, this,
            [this]() { map_.setStationNames(desk_.stationNames()); });
    connect(&desk, &PanelDesk::stateChanged, this, [this]() {
        if (isVisible())
            showMeasured();
    });
    planAnew();
}

QString PlanPage::title() const
{
    return tr("Plan");
}

QIcon PlanPage::icon() const
{
    return iconOf(PanelIcon::plan);
}

bool PlanPage::isBusy() const
{
    return isStale_ || process_ != nullptr;
}

// ---- planning -------------------------------------------------------------------------------

void PlanPage::planAnew()
{
    isStale_ = true;
    process_.reset(); // what it would tell is of before
    if (isVisible())
        beginTimer_.start();
    showButtons();
}

void PlanPage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    showMeasured();
    if (isStale_ && !process_)
        beginTimer_.start();
}

void PlanPage::begin()
{
    beginTimer_.stop();
    isStale_ = false;
    plannedTime_ = isTimeMeasured() ? measuredTime()
                                    : Micros(std::chrono::milliseconds(responseTime_->value()));
    showMeasured();
    values_ = desk_.tags().values;
    shownGap_ = chosenGap_.value_or(desk_.lineSetup().mergeGap());
    const std::vector<Item>& items = desk_.tags().items;
    if (items.empty()) {
        showPlan({}, PlanReport());
        heading_->setText(tr("Nothing is watched, so there is nothing to plan. Addresses are added "
                             "on the page of values."));
        return;
    }
    try {
        const LineSetup& setup = desk_.lineSetup();
        PlanOrder order;
        order.library = desk_.library().path();
        order.addresses = plannedAddresses(items);
        order.format = serialFormat(desk_.library(), setup);
        order.responseTime = plannedTime_;
        order.gap = shownGap_;
        order.maxRegisters = setup.maxRegisters.value_or(noMaximum);
        order.stationMaxRegisters = setup.stationMaxRegisters;
        heading_->setText(tr("It is being planned \u2026"));
        process_ = std::make_unique<PlanProcess>(
            order,
            [this](const PlanReport& report) {
                process_.reset();
                showPlan(std::exchange(values_, {}), report);
            },
            [this](const std::string& why) {
                process_.reset();
                failed(QString::fromStdString(why));
            });
    } catch (const Failure& failure) {
        failed(QString::fromUtf8(failure.what()));
    }
    showButtons();
}

void PlanPage::showPlan(std::vector<PanelValue> values, const PlanReport& report)
{
    const int inUse = desk_.lineSetup().mergeGap();
    map_.show(std::move(values), report.plan);
    requests_.show(report.plan, wordsReadAlong(map_.rows(), report.plan));
    gaps_.show(report.outcomes, inUse);
    plot_->show(report.outcomes, inUse);
    if (chosenGap_) {
        const QSignalBlocker quiet(gapTable_->selectionModel());
        gapTable_->selectRow(gaps_.rowOf(*chosenGap_));
    }
    named_->setText(tr("The mouse, or the arrow keys, name a word."));
    showHeading(report);
    showNotes(report);
    showButtons();
}

void PlanPage::failed(const QString& why)
{
    values_.clear();
    chosenGap_.reset();
    showPlan({}, PlanReport());
    heading_->setText(tr("There is no plan: %1").arg(why));
}

void PlanPage::showHeading(const PlanReport& report)
{
    const QString plan = tr("%n request(s), a cycle takes %1 ms on the wire", nullptr,
                            static_cast<int>(report.plan.requests.size()))
                             .arg(cycleText(report.plan.cycle));
    const LineSetup& setup = desk_.lineSetup();
    const QString wire = QString::fromStdString(toText(serialFormat(desk_.library(), setup)));
    heading_->setText(
        (chosenGap_ ? tr("Looked at, not in use: with a merge gap of %1, %2 (%3).")
                    : tr("With the merge gap of %1 that is in use: %2 (%3)."))
            .arg(shownGap_)
            .arg(plan, desk_.hasLine() ? wire : tr("no line is open; planned for %1").arg(wire)));
}

void PlanPage::showNotes(const PlanReport& report)
{
    QStringList notes;
    for (const Stretch& stretch : report.uncovered)
        notes.append(
            tr("\u2717 No request reads %1.")
                .arg(QString::fromStdString(planWordsText(
                    stretch.station, wordTypeOf(stretch.regName), stretch.first, stretch.count))));
    for (const Stretch& value : report.divided)
        notes.append(
            tr("\u26a0 Two requests read the value at %1: its words are not of one moment.")
                .arg(QString::fromStdString(planWordsText(value.station, wordTypeOf(value.regName),
                                                          value.first, value.count))));
    constexpr int maxNotes = 3;
    const int more = notes.size() - maxNotes;
    notes = notes.mid(0, maxNotes);
    if (more > 0)
        notes.append(tr("And %n more.", nullptr, more));
    notes_->setText(notes.join(QLatin1Char('\n')));
    notes_->setVisible(!notes.isEmpty());
}

// ---- gaps -----------------------------------------------------------------------------------

void PlanPage::choose()
{
    const QModelIndexList rows = gapTable_->selectionModel()->selectedRows();
    if (!rows.isEmpty()) {
        const GapOutcome& outcome =
            gaps_.outcomes().at(static_cast<std::size_t>(rows.front().row()));
        const int gap = gaps_.rowOf(desk_.lineSetup().mergeGap()) == rows.front().row()
                            ? desk_.lineSetup().mergeGap()
                            : gapToUse(outcome);
        chosenGap_ = gap == desk_.lineSetup().mergeGap() ? std::nullopt : std::optional<int>(gap);
        if (gap != shownGap_)
            planAnew();
    }
    showButtons();
}

void PlanPage::showButtons()
{
    const int best = gaps_.best();
    const int inUse = gaps_.rowOf(desk_.lineSetup().mergeGap());
    const bool isReady = !isBusy() && best >= 0;
    useBest_->setEnabled(isReady && best != inUse);
    useBest_->setText(
        best < 0        ? tr("Use the &best gap")
        : best == inUse ? tr("The &best gap is in use")
                        : tr("Use the &best gap, %1")
                              .arg(gapToUse(gaps_.outcomes().at(static_cast<std::size_t>(best)))));
    useChosen_->setEnabled(isReady && chosenGap_);
    useChosen_->setText(chosenGap_ ? tr("&Use the gap %1").arg(*chosenGap_)
                                   : tr("&Use the chosen gap"));
}

void PlanPage::use(int row)
{
    if (row < 0 || row >= gaps_.rowCount())
        return;
    const int gap = gapToUse(gaps_.outcomes().at(static_cast<std::size_t>(row)));
    try {
        desk_.setGap(gap);
        emit told(desk_.hasLine() ? tr("The line is planned anew, with a merge gap of %1.").arg(gap)
                                  : QString());
    } catch (const Failure& failure) {
        emit told(QString::fromUtf8(failure.what()));
    }
}

void PlanPage::name(const QModelIndex& index)
{
    if (index.isValid())
        named_->setText(index.data(Qt::AccessibleTextRole).toString());
}

} // namespace dov417
