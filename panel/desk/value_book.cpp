#include "panel/desk/value_book.h"

#include <utility>

namespace dov417 {

void ValueBook::watch(int generation, const std::vector<Address>& addresses)
{
    std::unordered_map<Address, Entry, AddressHash> entries;
    entries.reserve(addresses.size());
    for (const Address& address : addresses) {
        const auto [entry, isNew] = entries.try_emplace(address);
        const auto before = entries_.find(address);
        if (isNew && before != entries_.end())
            entry->second = before->second;
    }
    // Of writes that are under way, whoever asked for them.
    for (auto& [address, entry] : entries)
        entry.writes = 0;
    for (const auto& [number, values] : writes_)
        for (const Address& value : values)
            if (const auto entry = entries.find(value); entry != entries.end())
                ++entry->second.writes;
    entries_ = std::move(entries);
    generation_ = generation;
}

void ValueBook::forget()
{
    for (auto& [address, entry] : entries_)
        entry = Entry();
    writes_.clear();
    notBefore_ = Clock::time_point();
}

void ValueBook::setSilent(bool isSilent)
{
    isSilent_ = isSilent;
}

void ValueBook::heardAgain(Clock::time_point at)
{
    isSilent_ = false;
    notBefore_ = at;
}

std::vector<Address> ValueBook::apply(const LineBatch& batch)
{
    // What made a value old may never be told, where something else is watched meanwhile.
    const bool wasOpen = isOpen_;
    isOpen_ = batch.state.phase == LinePhase::open;
    std::vector<Address> changed;
    if (isOpen_ != wasOpen)
        changed = addresses();
    if (batch.generation != generation_)
        return changed;
    for (const View& view : batch.values) {
        const auto entry = entries_.find(view.address);
        if (entry == entries_.end())
            continue;
        View& known = entry->second.view;
        const bool isReadAgain = known.lastGood < notBefore_ && view.lastGood >= notBefore_;
        if (isOpen_ == wasOpen && (known.quality() != view.quality() || known.value != view.value ||
                                   known.changes != view.changes || isReadAgain))
            changed.push_back(view.address);
        known = view;
    }
    return changed;
}

void ValueBook::writeBegan(long long number, const std::vector<Address>& values)
{
    for (const Address& value : values)
        if (const auto entry = entries_.find(value); entry != entries_.end()) {
            ++entry->second.writes;
            entry->second.failure.clear();
        }
    writes_[number] = values;
}

std::vector<Address> ValueBook::writeEnded(const WriteOutcome& outcome)
{
    const auto write = writes_.find(outcome.number);
    if (write == writes_.end())
        return {};
    std::vector<Address> changed;
    for (const Address& value : write->second)
        if (const auto entry = entries_.find(value); entry != entries_.end()) {
            --entry->second.writes;
            entry->second.failure = outcome.result.accepted ? std::string() : outcome.result.reason;
            changed.push_back(value);
        }
    writes_.erase(write);
    return changed;
}

const View* ValueBook::find(const Address& address) const
{
    const auto entry = entries_.find(address);
    return entry == entries_.end() || !entry->second.view.hasValue ? nullptr : &entry->second.view;
}

bool ValueBook::isWatched(const Address& address) const
{
    return entries_.count(address) > 0;
}

std::vector<Address> ValueBook::addresses() const
{
    std::vector<Address> addresses;
    addresses.reserve(entries_.size());
    for (const auto& [address, entry] : entries_)
        addresses.push_back(address);
    return addresses;
}

bool ValueBook::isOld(const View& view) const
{
    return view.hasValue && (view.isOld || isSilent_ || !isOpen_ || view.lastGood < notBefore_);
}

bool ValueBook::isOld(const Address& address) const
{
    const auto found = entries_.find(address);
    return found != entries_.end() && isOld(found->second.view);
}

ValueStanding ValueBook::standing(const Address& address) const
{
    ValueStanding standing;
    const auto found = entries_.find(address);
    if (found == entries_.end())
        return standing;
    const Entry& entry = found->second;
    const View& view = entry.view;
    standing.isOld = isOld(view);
    standing.reason = entry.failure;
    standing.state = entry.writes > 0 || view.writes > 0 ? ValueState::beingWritten
                     : !entry.failure.empty()            ? ValueState::failed
                     : !view.hasValue                    ? ValueState::neverRead
                     : standing.isOld                    ? ValueState::old
                                                         : ValueState::good;
    return standing;
}

} // namespace dov417
