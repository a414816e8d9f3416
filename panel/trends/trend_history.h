// What was known of each value over time, by its address, in an amount of memory that is fixed.
// Pure: it looks at no clock.
//
// A value's time is made of events: from one on it was this, or it was not known, until the next.
// No two of them have the same time.
// What the controller held is kept as it was, so that another format shows the same in its way.
#ifndef DOV417_PANEL_TREND_HISTORY_H
#define DOV417_PANEL_TREND_HISTORY_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "panel/desk/line_batch.h"

namespace dov417 {

// Microseconds of the clock that never jumps.
using TrendTime = std::int64_t;
constexpr TrendTime trendSecond = 1000000;
constexpr TrendTime toTrendTime(Clock::time_point at)
{
    return std::chrono::duration_cast<Micros>(at.time_since_epoch()).count();
}

// Why a value was not known.
enum class TrendGap {
    failed,     // its request was given up
    lineGone,   // no line was open
    lineHung,   // nothing was heard of the line
    otherLine,  // what comes then may be another controller's
    notWatched, // nobody asked for it
    doubtful    // what was read before may have been another request's
};

struct TrendEvent {
    TrendTime at = 0;
    bool isKnown = false;
    std::uint64_t raw = 0; // the value's bits; see text/raw_values.h

    TrendGap gap() const
    {
        return static_cast<TrendGap>(raw);
    }
    static TrendEvent unknown(TrendTime at, TrendGap gap)
    {
        return {at, false, static_cast<std::uint64_t>(gap)};
    }
};

class TrendHistory {
public:
    static constexpr std::size_t mebibyte = std::size_t(1) << 20;
    // A day of 20 values that change once a second takes a third of it; the rest is for the last
    // ten minutes of 5000 more.
    static constexpr std::size_t defaultMebibytes = 64;
    static constexpr std::size_t minMebibytes = 1;
    static constexpr std::size_t maxMebibytes = 4096;
    static constexpr std::size_t defaultBytes = defaultMebibytes * mebibyte;
    static constexpr double keptShare = 0.35;
    static constexpr TrendTime usualTime = 600 * trendSecond;

    explicit TrendHistory(std::size_t limit = defaultBytes);

    // What it may take; less than now: the oldest goes.
    void setLimit(std::size_t bytes);
    std::size_t limit() const
    {
        return limit_;
    }
    // What it takes.
    std::size_t bytes() const;

    // Nothing was ever recorded.
    void clear();

    // Addresses whose data are kept longest. Where room is needed, what is older than ten minutes
    // of all others goes first, and then what is oldest, as long as these have no more than their
    // share.
    void setKept(const std::vector<Address>& addresses);

    // Numbers and bits; a text has no place on a scale.
    static bool takes(const Address& address);
    // As the session told it then. A value that is not good is not known from when it was last
    // good, until it was read later than it was told so: a late reply says what was before.
    void record(const View& view, TrendTime told);
    // From when it was last good, where it is known.
    void interrupt(const Address& address, TrendGap gap, TrendTime told);
    // All of them. Another line is marked also where nothing was known before.
    void interrupt(TrendGap gap, TrendTime told);

    std::vector<Address> addresses() const;     // in no order
    bool isKnown(const Address& address) const; // at its end
    std::optional<TrendTime> begin(const Address& address) const;
    // Until when the last event is known to hold: for a gap when it began.
    std::optional<TrendTime> end(const Address& address) const;

    // Calls use(event) with what held at `from`, or the first event there is, and with all that
    // follow as long as it returns true.
    template <typename Use>
    void walk(const Address& address, TrendTime from, Use use) const;

private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    static constexpr std::uint32_t blockEvents = 64;
    static constexpr long long unheard = -2; // of how often it ceased to be good

    // 12 bytes an event, and an eighth of one for its rank among gaps.
    struct Block {
        TrendTime base = 0;
        std::uint64_t known = 0; // a bit for each event
        std::uint32_t count = 0;
        std::uint32_t newer = none;
        std::uint32_t older = none;
        std::array<std::uint32_t, blockEvents> since; // the base, in microseconds
        std::array<std::uint64_t, blockEvents> raw;

        TrendEvent event(std::uint32_t index) const
        {
            return {base + since[index], (known >> index & 1) != 0, raw[index]};
        }
        TrendTime last() const
        {
            return base + since[count - 1];
        }
    };

    // The last event is not in a block: a value that never changes takes none.
    struct Series {
        std::uint32_t oldest = none;
        std::uint32_t newest = none;
        std::uint32_t blocks = 0;
        bool isKept = false;
        TrendEvent last;
        TrendTime knownUntil = 0;
        TrendTime notUntil = 0;     // readings up to this time are known to be bad
        long long lapses = unheard; // as told last
    };
    using AllSeries = std::unordered_map<Address, Series, AddressHash>;

    // What a series and a block take besides, in the table and from the allocator.
    static constexpr std::size_t seriesBytes = sizeof(AllSeries::value_type) + 64;
    static constexpr std::size_t blockBytes = sizeof(Block) + 32;

    std::size_t maxBlocks() const;
    void recordGood(Series& series, const View& view);
    void append(Series& series, const TrendEvent& event);
    void interrupt(Series& series, TrendGap gap, TrendTime told);
    std::uint32_t takeBlock(TrendTime now);
    void reclaim(TrendTime now);
    void dropOldest(Series& series);
    const Block& block(std::uint32_t index) const
    {
        return *blocks_[index];
    }
    std::uint32_t blockAt(const Series& series, TrendTime from) const;
    static std::uint32_t placeAt(const Block& block, TrendTime from);

    std::size_t limit_;
    AllSeries series_;
    std::vector<std::unique_ptr<Block>> blocks_;
    std::vector<std::uint32_t> free_; // places in blocks_
    std::size_t made_ = 0;            // blocks that are there, used or free
    std::size_t keptBlocks_ = 0;      // of the series that are kept
};

template <typename Use>
void TrendHistory::walk(const Address& address, TrendTime from, Use use) const
{
    const auto found = series_.find(address);
    if (found == series_.end() || found->second.knownUntil == 0)
        return; // nothing was recorded of it
    const Series& series = found->second;
    if (series.last.at > from)
        for (std::uint32_t at = blockAt(series, from); at != none; at = block(at).newer) {
            const Block& each = block(at);
            for (std::uint32_t i = placeAt(each, from); i < each.count; ++i)
                if (!use(each.event(i)))
                    return;
        }
    use(series.last);
}

} // namespace dov417

#endif
