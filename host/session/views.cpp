#include "session/views.h"

#include <utility>

#include "text/address_values.h"

namespace dov417 {

namespace {

// Two bits of one word are two things; all else that shares a word shares a value.
bool share(const Address& a, const Address& b)
{
    return a.width != Width::bit || b.width != Width::bit ||
           (a.first < b.first + b.length && b.first < a.first + a.length);
}

// Was a part of it written? Of a bit that was written the other bits of its word were not, whatever
// went out with it: the driver reads them before, for that alone.
bool isTorn(const Address& value, const Address& written)
{
    if (value.width == Width::bit || written.width == Width::bit)
        return value.width != Width::bit;
    const Words words = wordsOf(value.width, value.first, value.length);
    const Words part = wordsOf(written.width, written.first, written.length);
    return words.first < part.first || part.first + part.count < words.first + words.count;
}

std::tuple<int, std::string, Width, int, int> viewKey(const Address& address)
{
    return {address.station, address.regName, address.width, address.first, address.length};
}

Words wordsUnder(const Address& address)
{
    return wordsOf(address.width, address.first, address.length);
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
    const std::vector<View> before = std::move(views_);
    const std::vector<Standing> standing = std::move(standing_);
    std::map<ValueKey, std::size_t> places;
    for (std::size_t i = 0; i < before.size(); ++i)
        places.emplace(viewKey(before.at(i).address), i);
    views_.clear();
    standing_.clear();
    byWord_.clear();
    for (const Address& range : addresses)
        add(range, places, before, standing);
    for (const Address& address : written)
        count(address, 1);

    std::map<ValueKey, std::size_t> stay;
    for (std::size_t i = 0; i < views_.size(); ++i)
        stay.emplace(viewKey(views_.at(i).address), i);
    for (ViewChange& change : takeChanges()) {
        const auto found = stay.find(viewKey(change.view.address));
        if (found == stay.end())
            continue;
        change.index = found->second;
        changes_.push_back(std::move(change));
    }
}

void Views::add(const Address& range, const std::map<ValueKey, std::size_t>& places,
                const std::vector<View>& before, const std::vector<Standing>& standing)
{
    const int step = unitsOf(range);
    for (int unit = 0; unit + step <= range.length; unit += step) {
        View view;
        view.address = range;
        view.address.first = range.first + unit;
        view.address.length = step;
        view.value.resize(static_cast<std::size_t>(byteCount(view.address)));
        Standing own;
        const auto known = places.find(viewKey(view.address));
        if (known != places.end()) {
            view = before.at(known->second);
            view.writes = 0;
            own.isCached = standing.at(known->second).isCached;
        }
        const Words words = wordsUnder(view.address);
        for (int word = words.first; word < words.first + words.count; ++word)
            byWord_[{range.station, areaOf(range.regName), word}].push_back(views_.size());
        views_.push_back(view);
        standing_.push_back(own);
    }
}

// Calls once for each value that lies in these words as a whole.
template <typename Call>
void Views::forEachIn(const Request& request, Call call)
{
    const std::string area = areaOf(request.regName);
    const int end = request.address + request.length;
    for (int word = request.address; word < end; ++word) {
        const auto found = byWord_.find({request.station, area, word});
        if (found == byWord_.end())
            continue;
        for (const std::size_t index : found->second) {
            const Words words = wordsUnder(views_.at(index).address);
            if (words.first == word && words.first + words.count <= end)
                call(index);
        }
    }
}

bool Views::read(std::size_t index)
{
    View& view = views_.at(index);
    ValueBytes value(static_cast<std::size_t>(byteCount(view.address)));
    library_.intf_getData(view.address.station, QString::fromStdString(view.address.regName),
                          view.address.first, view.address.length, value.data());
    if (view.hasValue && value == view.value)
        return false;
    if (view.hasValue) {
        view.previous = view.value;
        ++view.changes;
    }
    view.value = value;
    view.hasValue = true;
    view.lastChange = Clock::now();
    changed(index, true);
    return true;
}

void Views::changed(std::size_t index, bool isValue)
{
    changes_.push_back({index, views_.at(index), isValue});
}

// Each value is looked at, and not only those that the driver announces: it does not announce a
// double word of which one half was written.
void Views::confirm(const Request& request, Clock::time_point asOf)
{
    forEachIn(request, [this, asOf](std::size_t index) {
        // While a write is under way the cache shows what is to be, of all bits of its word.
        if (standing_.at(index).writesOfWords > 0)
            return;
        View& view = views_.at(index);
        view.lastGood = asOf;
        const bool wasOld = view.isOld;
        view.isOld = false;
        standing_.at(index).isCached = true;
        if (!read(index) && wasOld)
            changed(index, false);
    });
}

void Views::giveUp(const Request& request)
{
    forEachIn(request, [this](std::size_t index) { makeOld(index); });
}

void Views::wasWrittenOtherwise(const Address& address)
{
    for (const std::size_t index : inWordsOf(address)) {
        standing_.at(index).isCached = false; // the cache holds what was written
        makeOld(index);
    }
}

std::set<std::size_t> Views::inWordsOf(const Address& address)
{
    std::set<std::size_t> found; // a value of two words is met twice
    const Words words = wordsUnder(address);
    for (int word = words.first; word < words.first + words.count; ++word) {
        const auto inWord = byWord_.find({address.station, areaOf(address.regName), word});
        if (inWord != byWord_.end())
            found.insert(inWord->second.begin(), inWord->second.end());
    }
    return found;
}

void Views::count(const Address& address, int step)
{
    for (const std::size_t index : inWordsOf(address)) {
        standing_.at(index).writesOfWords += step;
        if (share(views_.at(index).address, address))
            views_.at(index).writes += step;
    }
}

// The writes of one word go to the driver one by one, so with an outcome the cache is the
// controller's again. Of a value of which a part was written the cache has the rest as it was read
// before, and the controller may never have held the two together: it waits, old, for the reply
// that has them all.
void Views::countWrite(const Address& address, int step)
{
    count(address, step);
    for (const std::size_t index : inWordsOf(address)) {
        const Standing& standing = standing_.at(index);
        const bool isKnown = standing.isCached && standing.writesOfWords == 0;
        const bool hasChanged =
            step < 0 &&
            (isTorn(views_.at(index).address, address) ? makeOld(index) : isKnown && read(index));
        if (!hasChanged && share(views_.at(index).address, address))
            changed(index, false);
    }
}

void Views::driverStartedAnew()
{
    for (Standing& standing : standing_)
        standing.isCached = false;
}

void Views::makeOld()
{
    for (std::size_t i = 0; i < views_.size(); ++i)
        makeOld(i);
}

bool Views::makeOld(std::size_t index)
{
    View& view = views_.at(index);
    if (!view.hasValue || view.isOld)
        return false;
    view.isOld = true;
    ++view.lapses;
    changed(index, false);
    return true;
}

void Views::forget()
{
    changes_.clear(); // nobody is to hear of the values of this controller once there is the next
    for (std::size_t i = 0; i < views_.size(); ++i)
        forget(i);
}

void Views::forget(std::size_t index)
{
    View& view = views_.at(index);
    View fresh;
    fresh.address = view.address;
    fresh.writes = view.writes;
    fresh.lapses = view.lapses + (view.hasValue && !view.isOld ? 1 : 0);
    fresh.value.resize(view.value.size());
    const bool had = view.hasValue;
    view = fresh;
    if (had)
        changed(index, false);
}

void Views::doubt()
{
    driverStartedAnew(); // treated as such: its cache is not to be shown
    for (std::size_t i = 0; i < views_.size(); ++i)
        forget(i);
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
