// What was counted on the line of late: who has counted for days does not see what is wrong now.
// Pure.
#ifndef DOV417_PANEL_RECENT_STATISTICS_H
#define DOV417_PANEL_RECENT_STATISTICS_H

#include <deque>
#include <memory>

#include "link/link_statistics.h"

namespace dov417 {

// The counters of requests, strays, losses and markers that came on top; all else is the later's.
LinkStatistics countedSince(const LinkStatistics& earlier, const LinkStatistics& later);

class RecentStatistics {
public:
    static constexpr std::size_t kept = 60; // about a second from one to the next

    void clear();
    void add(std::shared_ptr<const LinkStatistics> statistics);
    // Of the last minute, or since the line was opened. Empty where nothing was added.
    LinkStatistics recent() const;

private:
    std::deque<std::shared_ptr<const LinkStatistics>> all_;
};

} // namespace dov417

#endif
