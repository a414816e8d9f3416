#include "panel/desk/panel_desk.h"

#include <algorithm>

#include "driver/areas.h"
#include "panel/desk/panel_clock.h"

namespace dov417 {

namespace {

constexpr std::chrono::milliseconds listenPause{500};

} // namespace

PanelDesk::PanelDesk(const Library& library) : PanelDesk(library, Source::line) {}

PanelDesk::PanelDesk(const Library& library, Source source)
    : library_(library), areas_(learnAreas(library)), line_(library)
{
    if (source == Source::line) {
        connect(&line_, &LineThread::batchCame, this, &PanelDesk::apply);
        connect(&line_, &LineThread::recipeTold, this, &PanelDesk::hearOfRecipe);
    }
    listenTimer_.setInterval(listenPause);
    connect(&listenTimer_, &QTimer::timeout, this, [this]() { listen(); });
}

// ---- the line -------------------------------------------------------------------------------

bool PanelDesk::hasLine() const
{
    return state_.phase != LinePhase::closed && state_.phase != LinePhase::refused;
}

void PanelDesk::open(const LineSetup& setup, const simulator::SimulationOptions& controller)
{
    forgetLine();
    setup_ = setup;
    ownController_ = controller;
    line_.open(setup, watched_, controller);
    book_.watch(line_.generation(), book_.addresses());
    state_.phase = LinePhase::opening;
    state_.port = setup.port;
    state_.isSimulated = setup.simulated;
    listenTimer_.start();
    emit lineBegan();
    emit lineSetupChanged();
    emit stateChanged();
    tellAllValues();
}

void PanelDesk::forgetLine()
{
    book_.forget();
    statistics_.reset();
    controller_.reset();
    state_ = LineState();
    lastHeard_ = panelNow();
}

void PanelDesk::close()
{
    line_.close();
}

bool PanelDesk::end()
{
    listenTimer_.stop();
    return line_.end();
}

void PanelDesk::setUnlocked(bool isUnlocked)
{
    if (!isUnlocked || !book_.isSilent())
        line_.setUnlocked(isUnlocked);
}

void PanelDesk::setConditions(const simulator::Conditions& conditions)
{
    line_.setConditions(conditions);
}

// ---- what is watched ------------------------------------------------------------------------

void PanelDesk::setItems(const std::vector<Item>& items)
{
    tags_ = panelTags(library_, items);
    std::vector<Address> watched = watchedAddresses(items);
    if (watched != watched_) {
        watched_ = std::move(watched);
        watch(watched_);
    }
    emit tagsChanged();
}

void PanelDesk::watch(const std::vector<Address>& addresses)
{
    line_.watch(addresses);
    book_.watch(line_.generation(), valueAddresses());
}

std::vector<Address> PanelDesk::valueAddresses() const
{
    std::vector<Address> values;
    values.reserve(tags_.values.size());
    for (const PanelValue& value : tags_.values)
        values.push_back(value.address);
    return values;
}

void PanelDesk::beginProject(const std::vector<Item>& items)
{
    forgetLine();
    ownController_ = {};
    recipe_ = 0;
    recipeValues_ = 0;
    watched_ = watchedAddresses(items);
    line_.leave(watched_.size());
    writes_.clear();
    emit writesChanged();
    emit projectBegan();
    emit lineBegan();
    tags_ = panelTags(library_, items);
    book_.watch(line_.generation(), valueAddresses());
    emit tagsChanged();
    emit stateChanged();
}

void PanelDesk::addItems(const std::vector<Item>& items)
{
    std::vector<Item> all = tags_.items;
    all.insert(all.end(), items.begin(), items.end());
    setItems(all);
}

void PanelDesk::removeItems(const std::vector<std::size_t>& places)
{
    std::vector<Item> left;
    for (std::size_t i = 0; i < tags_.items.size(); ++i)
        if (std::find(places.begin(), places.end(), i) == places.end())
            left.push_back(tags_.items.at(i));
    setItems(left);
}

// ---- writing --------------------------------------------------------------------------------

// What was ordered would go out whenever the port goes on, with nobody there.
void PanelDesk::requireHearing() const
{
    if (book_.isSilent())
        throw UsageFailure(tr("the port hangs, and nothing is asked of it; pull its plug, or end "
                              "this program")
                               .toStdString());
}

void PanelDesk::requireWriting() const
{
    requireHearing();
    if (state_.phase != LinePhase::open)
        throw UsageFailure(portIsAway().toStdString());
    if (!state_.isUnlocked)
        throw UsageFailure(
            tr("writing is locked on this line; unlock it in the status line").toStdString());
}

void PanelDesk::write(const PanelValue& value, const std::string& text)
{
    if (!hasLine())
        throw UsageFailure(tr("no line is open").toStdString());
    requireWriting();
    // A recipe reads what the driver holds, which would be what is still on its way.
    if (recipeIsUnderWay())
        throw UsageFailure(
            tr("a recipe is under way; wait until it has ended, or cancel it").toStdString());
    const std::vector<unsigned char> bytes = bytesToWrite(value, text);
    PanelWrite write;
    write.number = line_.write(value.address, bytes);
    write.asked = panelTimeOfDay();
    write.name = value.label.name;
    write.address = value.label.address;
    write.text = withUnit(text, value.label.format);
    if (writes_.size() >= maxWrites)
        writes_.erase(writes_.begin(), writes_.begin() + maxWrites / 10);
    writes_.push_back(write);
    book_.writeBegan(write.number, {value.address});
    emit writesChanged();
    emit valuesChanged({value.address});
}

std::size_t PanelDesk::writesUnderWay() const
{
    const auto waiting = std::count_if(writes_.begin(), writes_.end(),
                                       [](const PanelWrite& write) { return !write.hasEnded; });
    return static_cast<std::size_t>(waiting) + recipeValues_;
}

void PanelDesk::endWrite(const WriteOutcome& outcome)
{
    for (auto write = writes_.rbegin(); write != writes_.rend(); ++write)
        if (write->number == outcome.number) {
            write->hasEnded = true;
            write->result = outcome.result;
            return;
        }
}

// ---- what the line's thread tells -----------------------------------------------------------

void PanelDesk::apply(const LineBatch& batch)
{
    for (const WriteOutcome& outcome : batch.outcomes) {
        endWrite(outcome);
        const std::vector<Address> changed = book_.writeEnded(outcome);
        if (!changed.empty())
            emit valuesChanged(changed);
    }
    if (!batch.outcomes.empty())
        emit writesChanged();
    if (batch.line != line_.line())
        return; // of one before
    lastHeard_ = panelNow();
    if (book_.isSilent()) {
        book_.heardAgain(batch.made);
        tellAllValues();
    }
    const bool isDoubt = batch.state.doubts > state_.doubts;
    state_ = batch.state;
    if (batch.statistics)
        statistics_ = batch.statistics;
    if (batch.controller)
        controller_ = batch.controller;
    const std::vector<Address> changed = book_.apply(batch);
    if (isDoubt)
        emit repliesDoubted(batch.made);
    if (!changed.empty())
        emit valuesChanged(changed);
    if (!batch.values.empty() && batch.generation == line_.generation())
        emit valuesCame(batch.values, batch.made);
    if (!batch.passed.empty() || batch.notTold > 0)
        emit framesPassed(batch.passed, batch.notTold);
    emit stateChanged();
}

void PanelDesk::play(LineBatch batch)
{
    batch.line = line_.line();
    batch.generation = line_.generation();
    apply(batch);
}

void PanelDesk::listen()
{
    if (book_.isSilent() || panelNow() - lastHeard_ < patience)
        return;
    hanging_ = state_;
    book_.setSilent(true);
    line_.endHang();
    tellAllValues();
    emit stateChanged();
}

void PanelDesk::tellAllValues()
{
    emit valuesChanged(book_.addresses());
}

} // namespace dov417
