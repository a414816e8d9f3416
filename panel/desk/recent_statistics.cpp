#include "panel/desk/recent_statistics.h"

#include <utility>

namespace dov417 {

namespace {

RequestCounters countersSince(const RequestCounters& earlier, RequestCounters later)
{
    later.sent -= earlier.sent;
    later.notSent -= earlier.notSent;
    later.good -= earlier.good;
    for (std::size_t reason = 0; reason < later.bad.size(); ++reason)
        later.bad.at(reason) -= earlier.bad.at(reason);
    later.retries -= earlier.retries;
    later.parts -= earlier.parts;
    later.abandoned -= earlier.abandoned;
    later.forgotten -= earlier.forgotten;
    later.notAsked -= earlier.notAsked;
    for (const auto& [code, times] : earlier.exceptions)
        later.exceptions[code] -= times;
    return later;
}

} // namespace

LinkStatistics countedSince(const LinkStatistics& earlier, const LinkStatistics& later)
{
    LinkStatistics since = later;
    if (earlier.started != later.started)
        return since;
    for (const auto& [request, counters] : earlier.requests)
        since.requests[request] = countersSince(counters, since.requests[request]);
    for (std::size_t kind = 0; kind < since.strays.size(); ++kind)
        since.strays.at(kind) -= earlier.strays.at(kind);
    since.portLosses -= earlier.portLosses;
    since.markers -= earlier.markers;
    return since;
}

void RecentStatistics::clear()
{
    all_.clear();
}

void RecentStatistics::add(std::shared_ptr<const LinkStatistics> statistics)
{
    all_.push_back(std::move(statistics));
    if (all_.size() > kept)
        all_.pop_front();
}

LinkStatistics RecentStatistics::recent() const
{
    if (all_.empty())
        return {};
    // Until as many are there, all that was counted is of late.
    return all_.size() < kept ? *all_.back() : countedSince(*all_.front(), *all_.back());
}

} // namespace dov417
