#include "panel/trends/trends_page.h"

#include <algorithm>
#include <unordered_set>

#include "panel/desk/panel_clock.h"
#include "panel/desk/panel_icons.h"
#include "panel/trends/trend_absence.h"

namespace dov417 {

namespace {

// What it shows before anybody has chosen: values that move, as they are met in this time.
constexpr TrendTime lookingFrom = 700 * trendSecond / 1000;
constexpr TrendTime lookingUntil = 4 * trendSecond;
constexpr int maxNumbers = 5;
constexpr int maxBits = 4;

} // namespace

QString TrendsPage::title() const
{
    return tr("Trends");
}

QIcon TrendsPage::icon() const
{
    return iconOf(PanelIcon::trends);
}

// ---- the project ----------------------------------------------------------------------------

std::string TrendsPage::settingsName() const
{
    return "trends";
}

OrderedJson TrendsPage::settings() const
{
    TrendArrangement kept = arrangement_;
    if (!isArranged_)
        kept.plots.clear();
    return toJson(kept);
}

std::function<void()> TrendsPage::prepared(const OrderedJson& settings)
{
    return [this, arrangement = trendsOf(settings)]() {
        // What it has chosen by itself stays where no more is known, as when a note is taken back.
        const bool staysAsItChose =
            !isArranged_ && arrangement.plots.empty() && arrangement_.isWatched();
        std::vector<TrendGroup> chosen = std::move(arrangement_.plots);
        arrangement_ = arrangement;
        isArranged_ = !arrangement.plots.empty();
        if (staysAsItChose)
            arrangement_.plots = std::move(chosen);
        else
            begun_ = 0;
        const auto span = static_cast<TrendTime>(arrangement.span * trendSecond);
        if (span != stack_->view().span())
            stack_->arrange([span](TrendView& view) { view.setSpan(span); });
        takeNotes();
        resolve();
        showArrangement(); // which draws them, too
    };
}

// Nothing of the one before may be seen, or written into a file, under this one's names.
void TrendsPage::beginProject()
{
    if (export_)
        endTable(tr("The table was not written: another project was opened meanwhile."));
    arrangement_ = TrendArrangement();
    isArranged_ = false;
    begun_ = 0;
    stack_->clear();
    showNotes();
    showArrangement();
}

// ---- which values -----------------------------------------------------------------------------

bool TrendsPage::resolve()
{
    const std::vector<TrendGroup> before = arrangement_.plots;
    arrangement_.resolve(desk_.tags());
    const std::vector<TrendGroup>& plots = arrangement_.plots;
    const bool isAnyLeft = std::any_of(plots.begin(), plots.end(), [](const TrendGroup& plot) {
        return std::any_of(plot.values.begin(), plot.values.end(),
                           [](const TrendValue& value) { return value.isWatched; });
    });
    if (!isArranged_ && !isAnyLeft) {
        arrangement_.plots.clear();
        begun_ = 0;
    }
    return !(arrangement_.plots == before);
}

void TrendsPage::arrange()
{
    isArranged_ = true;
    showArrangement();
    emit settingsChanged();
}

void TrendsPage::showArrangement()
{
    history_.setLimit(arrangement_.memory * TrendHistory::mebibyte);
    history_.setKept(arrangement_.addresses());
    memory_->setValue(static_cast<int>(arrangement_.memory));
    const bool isAny = !arrangement_.plots.empty();
    upper_->setCurrentWidget(isAny ? static_cast<QWidget*>(stack_) : empty_);
    stack_->setPlots(arrangement_.plots);
    readout_.setPlots(arrangement_.plots);
    if (stack_->current() < arrangement_.plots.size())
        dialog_->showPlot(stack_->current(), arrangement_.plots.at(stack_->current()));
    showView();
}

// Values that move, until a person has chosen: they are looked for while the first come.
void TrendsPage::chooseByItself()
{
    const TrendTime now = toTrendTime(panelNow());
    if (begun_ == 0)
        begun_ = now;
    const bool isEnough = !arrangement_.plots.empty() && now - begun_ > lookingUntil;
    if (isArranged_ || isEnough || now - begun_ < lookingFrom)
        return;
    TrendArrangement chosen;
    int numbers = 0;
    int bits = 0;
    for (const PanelValue& each : desk_.tags().values) {
        const View* const view = desk_.book().find(each.address);
        if (!view || view->changes == 0 || !TrendHistory::takes(each.address))
            continue;
        const bool isBit = each.address.width == Width::bit;
        if (isBit ? bits++ < maxBits : numbers++ < maxNumbers)
            chosen.place(trendValueOf(each), 0);
    }
    if (toJson(chosen)["plots"] == toJson(arrangement_)["plots"])
        return;
    arrangement_.plots = chosen.plots;
    showArrangement();
}

bool TrendsPage::hasRoom()
{
    const bool hasIt = arrangement_.count() < TrendArrangement::maxValues;
    if (!hasIt)
        emit told(tr("There is room for %n value(s) on this page.", nullptr,
                     static_cast<int>(TrendArrangement::maxValues)));
    return hasIt;
}

void TrendsPage::showValues(const std::vector<Address>& addresses)
{
    const std::unordered_set<Address, AddressHash> wanted(addresses.begin(), addresses.end());
    QStringList refused;
    emit told(QString());
    for (const PanelValue& each : desk_.tags().values) {
        if (wanted.count(each.address) == 0)
            continue;
        if (!TrendHistory::takes(each.address))
            refused.append(QString::fromStdString(each.label.name));
        else if (hasRoom())
            arrangement_.place(trendValueOf(each), stack_->current());
        else
            break;
    }
    arrange();
    if (!refused.isEmpty())
        emit told(tr("A text cannot be shown as a curve: %1").arg(refused.join(", ")));
}

void TrendsPage::putIn(const TrendValue& value, bool isIn)
{
    const std::size_t wanted = stack_->current();
    if (isIn && !hasRoom())
        return;
    if (arrangement_.plots.empty())
        arrangement_.plots.emplace_back();
    if (!isIn) {
        arrangement_.remove(wanted, value);
        arrange();
        return;
    }
    const std::size_t place = arrangement_.place(value, wanted);
    arrange();
    emit told(place == wanted ? QString()
                              : tr("%1 is in plot %2: plot %3 has two units already.")
                                    .arg(QString::fromStdString(value.name))
                                    .arg(place + 1)
                                    .arg(wanted + 1));
}

void TrendsPage::removeChosen()
{
    std::vector<std::pair<std::size_t, TrendValue>> chosen;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows())
        chosen.emplace_back(readout_.plotOf(index.row()), readout_.valueOf(index.row()));
    for (const auto& [plot, value] : chosen)
        arrangement_.remove(plot, value);
    if (!chosen.empty())
        arrange();
}

void TrendsPage::removePlot()
{
    const std::size_t plot = stack_->current();
    if (plot >= arrangement_.plots.size())
        return;
    arrangement_.plots.erase(arrangement_.plots.begin() + static_cast<std::ptrdiff_t>(plot));
    arrange();
}

// ---- what is seen -----------------------------------------------------------------------------

void TrendsPage::refresh()
{
    if (const TrendTime moved = clock_.moved(); moved != 0) {
        addNote(tr("this computer's clock was moved by %1 s; times before are as it was then")
                    .arg(static_cast<double>(moved) / trendSecond, 0, 'f', 1));
        showNotes();
        stack_->followClock();
    }
    if (!isVisible())
        return;
    readout_.refresh();
    for (std::size_t i = 0; i < stack_->plots().size(); ++i)
        stack_->plots()[i]->setAbsence(
            whyNothingIsDrawn(arrangement_.plots.at(i), desk_, history_));
    memory_->setToolTip(
        tr("Recorded values take no more than this, and %1 MB now. Then the oldest go: first those "
           "that are in no plot and older than ten minutes.")
            .arg(static_cast<double>(history_.bytes()) / TrendHistory::mebibyte, 0, 'f', 1));
}

void TrendsPage::showCursors()
{
    const TrendStack::Cursors& at = stack_->cursors();
    readout_.setCursors(at.front(), at.back());
    const bool isAny = at.front() || at.back();
    const bool areBoth = at.front() && at.back();
    for (int column = TrendReadout::firstOfCursors; column < TrendReadout::columns; ++column)
        table_->setColumnHidden(column, !(column <= TrendReadout::atB ? isAny : areBoth));
    QString text;
    for (int cursor = 0; cursor < TrendPlot::cursors; ++cursor)
        if (const auto& each = at.at(static_cast<std::size_t>(cursor)))
            text += tr("%1 at %2   ").arg(TrendPlot::cursorNames().at(cursor), clock_.text(*each));
    if (areBoth)
        text += tr("B \u2212 A = %1 s")
                    .arg(static_cast<double>(*at.back() - *at.front()) / trendSecond, 0, 'f', 3);
    between_->setText(isAny ? text
                            : tr("A click sets cursor A, with Shift cursor B; dragging zooms."));
}

void TrendsPage::showEvent(QShowEvent* event)
{
    PanelPage::showEvent(event);
    refresh();
}

void TrendsPage::changeEvent(QEvent* event)
{
    PanelPage::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && stack_)
        stack_->setPalettes();
}

} // namespace dov417
