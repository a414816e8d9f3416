#include "session/views.h"

#include <utility>

namespace dov417 {

namespace {

constexpr int doubleWordLength = 2;

// Two bits of one word are two things; all else that shares a word shares a value.
bool share(const Address& a, const Address& b)
{
    return a.width != Width::bit || b.width != Width::bit ||
           (a.first < b.first + b.length && b.first < a.first + a.length);
}

} // namespace

Quality View::quality() const
{
    if (writes > 0)
        return Quality::beingWritten;
    return !hasValue ? Quality::neverRead : isOld ? Quality::old : Quality::good;
}

Views::Views(const Library& library) : library_(library) {}

const std::vector<View>& Views::all() const
{
    return views_;
}

void Views::replace(const std::vector<Address>& addresses, const std::vector<Address>& written)
{
    std::map<UnitKey, View> before;
    for (const View& view : views_)
        before.emplace(UnitKey{view.address.station, view.address.regName, view.address.first},
                       view);
    views_.clear();
    isAnnounced_.clear();
    byName_.clear();
    byWord_.clear();
    announced_.clear();
    for (const Address& range : addresses)
        add(range, before);
    for (const Address& address : written)
        for (const std::size_t index : sharing(address))
            ++views_.at(index).writes;
    for (ViewChange& change : takeChanges()) {
        const Address& address = change.view.address;
        const auto stays = byName_.find({address.station, address.regName, address.first});
        if (stays == byName_.end())
            continue;
        change.index = stays->second.front();
        changes_.push_back(std::move(change));
    }
}

void Views::add(const Address& range, const std::map<UnitKey, View>& before)
{
    const int step = range.width == Width::doubleWord ? doubleWordLength : 1;
    for (int unit = 0; unit + step <= range.length; unit += step) {
        const std::size_t index = views_.size();
        const UnitKey key{range.station, range.regName, range.first + unit};
        const auto known = before.find(key);
        View view = known == before.end() ? View() : known->second;
        view.address = range;
        view.address.first = range.first + unit;
        view.address.length = step;
        view.writes = 0;
        byName_[key].push_back(index);
        const Words words = wordsOf(range.width, view.address.first, step);
        for (int word = words.first; word < words.first + words.count; ++word)
            byWord_[{range.station, areaOf(range.regName), word}].push_back(index);
        views_.push_back(view);
        isAnnounced_.push_back(false);
    }
}

template <typename Call>
void Views::forEachOf(const Request& words, Call call)
{
    const std::string area = areaOf(words.regName);
    for (int word = words.address; word < words.address + words.length; ++word) {
        const auto found = byWord_.find({words.station, area, word});
        if (found == byWord_.end())
            continue;
        for (const std::size_t index : found->second)
            call(index);
    }
}

void Views::announce(int station, const std::string& regName, int address)
{
    const auto found = byName_.find({station, regName, address});
    if (found != byName_.end())
        announced_.insert(announced_.end(), found->second.begin(), found->second.end());
}

void Views::readAnnounced()
{
    std::vector<std::size_t> announced;
    announced.swap(announced_);
    for (const std::size_t index : announced)
        if (isAnnounced_.at(index))
            read(index);
}

void Views::read(std::size_t index)
{
    View& view = views_.at(index);
    ValueBytes value{};
    library_.intf_getData(view.address.station, QString::fromStdString(view.address.regName),
                          view.address.first, view.address.length, value.data());
    if (view.hasValue && value == view.value)
        return;
    if (view.hasValue) {
        view.previous = view.value;
        ++view.changes;
    }
    view.value = value;
    view.hasValue = true;
    view.lastChange = Clock::now();
    changed(index, true);
}

void Views::changed(std::size_t index, bool isValue)
{
    changes_.push_back({index, views_.at(index), isValue});
}

void Views::confirm(const Request& request)
{
    const Clock::time_point now = Clock::now();
    forEachOf(request, [this, now](std::size_t index) {
        View& view = views_.at(index);
        view.lastGood = now;
        if (view.isOld) {
            view.isOld = false;
            changed(index, false);
        }
        if (isAnnounced_.at(index))
            return;
        // What the cache held before this reply was announced to nobody.
        isAnnounced_.at(index) = true;
        read(index);
    });
}

void Views::giveUp(const Request& request)
{
    forEachOf(request, [this](std::size_t index) {
        View& view = views_.at(index);
        if (view.isOld || !view.hasValue)
            return;
        view.isOld = true;
        changed(index, false);
    });
}

std::set<std::size_t> Views::sharing(const Address& address)
{
    const Words words = wordsOf(address.width, address.first, address.length);
    std::set<std::size_t> found; // a value of two words is met twice
    forEachOf({0, address.station, address.regName, words.first, words.count},
              [&](std::size_t index) {
                  if (share(views_.at(index).address, address))
                      found.insert(index);
              });
    return found;
}

void Views::countWrite(const Address& address, int step)
{
    for (const std::size_t index : sharing(address)) {
        views_.at(index).writes += step;
        changed(index, false);
    }
}

void Views::driverStartedAnew()
{
    isAnnounced_.assign(views_.size(), false);
    announced_.clear();
}

void Views::makeOld()
{
    for (std::size_t i = 0; i < views_.size(); ++i) {
        if (!views_.at(i).hasValue || views_.at(i).isOld)
            continue;
        views_.at(i).isOld = true;
        changed(i, false);
    }
}

void Views::forget()
{
    for (std::size_t i = 0; i < views_.size(); ++i) {
        View fresh;
        fresh.address = views_.at(i).address;
        fresh.writes = views_.at(i).writes;
        const bool had = views_.at(i).hasValue;
        views_.at(i) = fresh;
        if (had)
            changed(i, false);
    }
}

ViewChanges Views::takeChanges()
{
    ViewChanges taken;
    taken.swap(changes_);
    return taken;
}

bool Views::haveChanged() const
{
    return !changes_.empty();
}

} // namespace dov417
