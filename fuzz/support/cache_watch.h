// What must always hold in the cache: its index finds each first record, and a unit is pending
// only for a reason.
#ifndef DOV417_FUZZ_CACHE_WATCH_H
#define DOV417_FUZZ_CACHE_WATCH_H

#include <set>
#include <tuple>

#include "queue_model.h"

class CacheWatch {
public:
    // The units of a write that is stored and will not be settled: cache-only mode, a piece that
    // the cap dropped.
    void excuse(const QueuedWrite& write);
    void excuseAll();
    void reset();
    void requireReasons(const QueueModel& model);
    static void requireIndexAgrees();

private:
    using Unit = std::tuple<int, std::string, int>;
    std::set<Unit> excused_;
};

#endif
