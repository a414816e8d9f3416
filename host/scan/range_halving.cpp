#include "scan/range_halving.h"

#include <algorithm>
#include <utility>

#include "link/request_parts.h"

namespace dov417 {

RangeHalving::RangeHalving(int first, int count, std::function<void(const WordRange&)> found)
    : found_(std::move(found))
{
    for (int at = first; at < first + count; at += maxWordsOfARead)
        blocks_.push_back({at, std::min(maxWordsOfARead, first + count - at)});
    std::reverse(blocks_.begin(), blocks_.end());
}

std::optional<RangeHalving::Block> RangeHalving::block() const
{
    return blocks_.empty() ? std::nullopt : std::make_optional(blocks_.back());
}

void RangeHalving::isAnswered()
{
    add(WordRange::answered, std::string());
}

void RangeHalving::isRefused(const std::string& reason)
{
    const Block whole = blocks_.back();
    if (whole.count == 1) {
        add(WordRange::refused, reason);
        return;
    }
    const int half = whole.count / 2;
    blocks_.back() = {whole.first + half, whole.count - half};
    blocks_.push_back({whole.first, half});
}

void RangeHalving::isRefusedWhole(const std::string& reason)
{
    add(WordRange::refused, reason);
}

void RangeHalving::isUnknown(const std::string& reason)
{
    add(WordRange::unknown, reason);
}

void RangeHalving::add(WordRange::Kind kind, const std::string& reason)
{
    const Block block = blocks_.back();
    blocks_.pop_back();
    known_ += block.count;
    if (latest_ && latest_->kind == kind && latest_->reason == reason) {
        latest_->count += block.count;
    } else {
        end();
        latest_ = WordRange{block.first, block.count, kind, reason};
    }
    if (blocks_.empty())
        end();
}

int RangeHalving::known() const
{
    return known_;
}

void RangeHalving::end()
{
    if (const std::optional<WordRange> range = std::exchange(latest_, std::nullopt))
        found_(*range);
}

} // namespace dov417
