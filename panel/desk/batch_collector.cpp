#include "panel/desk/batch_collector.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace dov417 {

void BatchCollector::beginLine(int line)
{
    batch_.line = line;
    batch_.values.clear();
    batch_.passed.clear();
    batch_.notTold = 0;
}

void BatchCollector::beginGeneration(int generation, std::size_t watched)
{
    batch_.generation = generation;
    batch_.values.clear();
    maxChanges_ = std::max(minChanges, watched * changesPerValue);
}

void BatchCollector::add(const View& view)
{
    batch_.values.push_back(view);
    if (batch_.values.size() > maxChanges_)
        mergeValues();
}

// The latest of each, in the order of the first.
void BatchCollector::mergeValues()
{
    std::unordered_map<Address, std::size_t, AddressHash> places;
    std::vector<View> latest;
    for (const View& view : batch_.values) {
        const auto [place, isNew] = places.try_emplace(view.address, latest.size());
        if (isNew)
            latest.push_back(view);
        else
            latest.at(place->second) = view;
    }
    batch_.values = std::move(latest);
}

void BatchCollector::add(Passed passed)
{
    batch_.passed.push_back(std::move(passed));
    if (batch_.passed.size() <= maxPassed)
        return;
    // Half at once, as each removal moves all that is behind it.
    const auto end = batch_.passed.begin() + maxPassed / 2;
    batch_.notTold += end - batch_.passed.begin();
    batch_.passed.erase(batch_.passed.begin(), end);
}

void BatchCollector::add(const WriteOutcome& outcome)
{
    batch_.outcomes.push_back(outcome);
}

bool BatchCollector::isEmpty() const
{
    return batch_.values.empty() && batch_.passed.empty() && batch_.outcomes.empty();
}

LineBatch BatchCollector::take()
{
    LineBatch batch;
    batch.line = batch_.line;
    batch.generation = batch_.generation;
    std::swap(batch, batch_);
    return batch;
}

} // namespace dov417
