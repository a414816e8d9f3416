// Collects what the window is to be told until it has time for it. Pure: no thread, no clock.
//
// It is the drawing that gives way: while the window is busy, values are merged, and of what
// passed on the line the oldest is dropped and counted. Outcomes of writes are never dropped.
#ifndef DOV417_PANEL_BATCH_COLLECTOR_H
#define DOV417_PANEL_BATCH_COLLECTOR_H

#include <cstddef>
#include <vector>

#include "panel/desk/line_batch.h"

namespace dov417 {

class BatchCollector {
public:
    static constexpr std::size_t changesPerValue = 4; // kept, per watched value, before merging
    static constexpr std::size_t minChanges = 1000; // kept before merging, however few are watched
    static constexpr std::size_t maxPassed = 20000; // frames kept

    // Another line: nothing of the one before is told any more but the outcomes of its writes.
    void beginLine(int line);
    // Something else is watched: values that have not been told are of no use any more.
    void beginGeneration(int generation, std::size_t watched);

    void add(const View& view);
    void add(Passed passed);
    void add(const WriteOutcome& outcome);

    bool isEmpty() const;
    // All that was collected; the state and the time are the caller's to fill in.
    LineBatch take();

private:
    void mergeValues();

    LineBatch batch_;
    std::size_t maxChanges_ = minChanges;
};

} // namespace dov417

#endif
