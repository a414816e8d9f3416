#include "panel/trends/trend_history.h"

#include <algorithm>
#include <queue>

#include "text/address_values.h"
#include "text/raw_values.h"

namespace dov417 {

namespace {

constexpr std::size_t minBlocks = 64;
// So many at once, as whose turn it is takes a look at each series.
constexpr std::size_t reclaimedPart = 64;

} // namespace

TrendHistory::TrendHistory(std::size_t limit) : limit_(limit) {}

std::size_t TrendHistory::bytes() const
{
    return made_ * blockBytes + series_.size() * seriesBytes;
}

std::size_t TrendHistory::maxBlocks() const
{
    const std::size_t others = series_.size() * seriesBytes;
    return others < limit_ ? std::max(minBlocks, (limit_ - others) / blockBytes) : minBlocks;
}

void TrendHistory::setLimit(std::size_t bytes)
{
    limit_ = bytes;
    while (blocks_.size() - free_.size() > maxBlocks()) // in use
        reclaim(std::numeric_limits<TrendTime>::max());
    for (auto place = free_.begin(); made_ > maxBlocks() && place != free_.end(); ++place)
        if (blocks_.at(*place)) {
            blocks_.at(*place).reset();
            --made_;
        }
}

void TrendHistory::clear()
{
    series_.clear();
    blocks_.clear();
    free_.clear();
    made_ = 0;
    keptBlocks_ = 0;
}

void TrendHistory::setKept(const std::vector<Address>& addresses)
{
    keptBlocks_ = 0;
    for (auto& [address, series] : series_)
        series.isKept = false;
    for (const Address& address : addresses)
        if (takes(address)) {
            Series& series = series_[address];
            if (!series.isKept)
                keptBlocks_ += series.blocks;
            series.isKept = true;
        }
}

// ---- what is told ---------------------------------------------------------------------------

bool TrendHistory::takes(const Address& address)
{
    return address.width != Width::text && valueCount(address) == 1;
}

void TrendHistory::record(const View& view, TrendTime told)
{
    if (!takes(view.address) || (!view.hasValue && series_.count(view.address) == 0))
        return;
    Series& series = series_[view.address];
    const bool isFresh = series.lapses == unheard && view.lapses == 0;
    if (view.hasValue && !view.isOld) {
        // Else it was not good meanwhile, and that was never told.
        if (!isFresh && series.lapses != view.lapses)
            interrupt(series, TrendGap::failed, told);
        recordGood(series, view);
    } else {
        const bool isSame = view.hasValue && series.last.isKnown &&
                            series.lapses + 1 == view.lapses &&
                            fromBytes(view.value.data(), view.address.width) == series.last.raw;
        if (isSame)
            series.knownUntil = std::max(series.knownUntil, toTrendTime(view.lastGood));
        interrupt(series, view.hasValue ? TrendGap::failed : TrendGap::doubtful, told);
    }
    series.lapses = view.lapses;
}

void TrendHistory::recordGood(Series& series, const View& view)
{
    const TrendTime good = toTrendTime(view.lastGood);
    const TrendTime change = toTrendTime(view.lastChange);
    const std::uint64_t raw = fromBytes(view.value.data(), view.address.width);
    if (!series.last.isKnown) {
        const bool isNew = series.knownUntil == 0;
        const TrendTime end = std::max(series.knownUntil, series.notUntil);
        const TrendTime at = !isNew && change > end ? change : std::max(good, change);
        if (at <= end)
            return;
        append(series, {at, true, raw});
        series.knownUntil = at;
    } else if (raw != series.last.raw) {
        append(series, {std::max(change, series.last.at + 1), true, raw});
        series.knownUntil = std::max(series.knownUntil, series.last.at);
    }
    series.knownUntil = std::max(series.knownUntil, good);
}

void TrendHistory::interrupt(const Address& address, TrendGap gap, TrendTime told)
{
    const auto series = series_.find(address);
    if (series == series_.end())
        return;
    interrupt(series->second, gap, told);
    series->second.lapses = unheard;
}

void TrendHistory::interrupt(TrendGap gap, TrendTime told)
{
    for (auto& [address, series] : series_) {
        interrupt(series, gap, told);
        series.lapses = unheard;
        if (gap == TrendGap::otherLine)
            series.last = TrendEvent::unknown(series.last.at, gap);
    }
}

void TrendHistory::interrupt(Series& series, TrendGap gap, TrendTime told)
{
    series.notUntil = std::max(series.notUntil, told);
    if (series.last.isKnown)
        append(series, TrendEvent::unknown(std::max(series.knownUntil, series.last.at + 1), gap));
}

// ---- memory -----------------------------------------------------------------------------------

void TrendHistory::append(Series& series, const TrendEvent& event)
{
    const TrendEvent before = series.last;
    const bool isFirst = series.knownUntil == 0;
    series.last = event;
    if (isFirst)
        return;
    constexpr TrendTime maxSince = std::numeric_limits<std::uint32_t>::max();
    if (series.newest == none || block(series.newest).count == blockEvents ||
        before.at - block(series.newest).base > maxSince) {
        const std::uint32_t taken = takeBlock(event.at); // which may drop blocks of this series
        Block& fresh = *blocks_.at(taken);
        fresh.base = before.at;
        fresh.older = series.newest;
        if (series.newest != none)
            blocks_.at(series.newest)->newer = taken;
        else
            series.oldest = taken;
        series.newest = taken;
        ++series.blocks;
        keptBlocks_ += series.isKept ? 1 : 0;
    }
    Block& block = *blocks_.at(series.newest);
    block.since.at(block.count) = static_cast<std::uint32_t>(before.at - block.base);
    block.raw.at(block.count) = before.raw;
    block.known |= std::uint64_t(before.isKnown ? 1 : 0) << block.count;
    ++block.count;
}

std::uint32_t TrendHistory::takeBlock(TrendTime now)
{
    const bool isToBeMade = free_.empty() || !blocks_.at(free_.back());
    if (isToBeMade && made_ >= maxBlocks())
        reclaim(now);
    if (free_.empty()) {
        free_.push_back(static_cast<std::uint32_t>(blocks_.size()));
        blocks_.emplace_back();
    }
    const std::uint32_t place = free_.back();
    free_.pop_back();
    if (!blocks_.at(place)) {
        blocks_.at(place) = std::make_unique<Block>();
        ++made_;
    }
    Block& block = *blocks_.at(place);
    block.known = 0;
    block.count = 0;
    block.newer = block.older = none;
    return place;
}

// The oldest data first, but for the share of what is kept.
void TrendHistory::reclaim(TrendTime now)
{
    using Oldest = std::pair<TrendTime, Series*>;
    using Queue = std::priority_queue<Oldest, std::vector<Oldest>, std::greater<>>;
    Queue kept;
    Queue others;
    for (auto& [address, series] : series_)
        if (series.oldest != none)
            (series.isKept ? kept : others).emplace(block(series.oldest).last(), &series);
    const auto drop = [this](Queue& queue) {
        Series& series = *queue.top().second;
        queue.pop();
        dropOldest(series);
        if (series.oldest != none)
            queue.emplace(block(series.oldest).last(), &series);
    };
    const std::size_t wanted = std::max<std::size_t>(1, maxBlocks() / reclaimedPart);
    const auto share = static_cast<std::size_t>(static_cast<double>(maxBlocks()) * keptShare);
    for (std::size_t dropped = 0; dropped < wanted; ++dropped) {
        const bool isOverdue = !others.empty() && others.top().first < now - usualTime;
        if (others.empty() && kept.empty())
            return;
        drop(kept.empty() || isOverdue || (!others.empty() && keptBlocks_ <= share) ? others
                                                                                    : kept);
    }
}

void TrendHistory::dropOldest(Series& series)
{
    const std::uint32_t place = series.oldest;
    series.oldest = block(place).newer;
    if (series.oldest == none)
        series.newest = none;
    else
        blocks_.at(series.oldest)->older = none;
    --series.blocks;
    keptBlocks_ -= series.isKept ? 1 : 0;
    free_.push_back(place);
}

// ---- what is asked ----------------------------------------------------------------------------

std::vector<Address> TrendHistory::addresses() const
{
    std::vector<Address> addresses;
    for (const auto& [address, series] : series_)
        if (series.knownUntil > 0)
            addresses.push_back(address);
    return addresses;
}

bool TrendHistory::isKnown(const Address& address) const
{
    const auto found = series_.find(address);
    return found != series_.end() && found->second.last.isKnown;
}

std::optional<TrendTime> TrendHistory::begin(const Address& address) const
{
    const auto found = series_.find(address);
    if (found == series_.end() || found->second.knownUntil == 0)
        return std::nullopt;
    const Series& series = found->second;
    return series.oldest == none ? series.last.at : block(series.oldest).base;
}

std::optional<TrendTime> TrendHistory::end(const Address& address) const
{
    const auto found = series_.find(address);
    if (found == series_.end() || found->second.knownUntil == 0)
        return std::nullopt;
    return found->second.knownUntil;
}

// The block with what held then, from whichever end is nearer.
std::uint32_t TrendHistory::blockAt(const Series& series, TrendTime from) const
{
    if (series.oldest == none || from <= block(series.oldest).base)
        return series.oldest;
    std::uint32_t at = series.newest;
    if (block(at).base - from <= from - block(series.oldest).base) {
        while (block(at).base > from)
            at = block(at).older;
        return at;
    }
    at = series.oldest;
    while (block(block(at).newer).base <= from)
        at = block(at).newer;
    return at;
}

std::uint32_t TrendHistory::placeAt(const Block& block, TrendTime from)
{
    if (from <= block.base)
        return 0;
    const TrendTime since = from - block.base;
    const auto end = block.since.begin() + block.count;
    const auto after =
        std::upper_bound(block.since.begin(), end, since,
                         [](TrendTime time, std::uint32_t each) { return time < each; });
    return static_cast<std::uint32_t>(after - block.since.begin()) - 1;
}

} // namespace dov417
