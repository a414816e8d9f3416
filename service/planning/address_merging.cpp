#include "planning/address_merging.h"

#include <algorithm>
#include <limits>

#include "cache/data_areas.h"
#include "debug_line.h"
#include "driver_lock.h"
#include "intf.h"
#include "planning/weight_order.h"
#include "protocol.h"
#include "protocol/address_text.h"
#include "protocol/wrap.h"

namespace {

// Numbers beyond 32 bits become the highest or the lowest one.
template <typename Real>
int truncated(Real value)
{
    const Real largest = static_cast<Real>(std::numeric_limits<int>::max());
    const Real smallest = static_cast<Real>(std::numeric_limits<int>::min());
    return value >= largest    ? std::numeric_limits<int>::max()
           : value <= smallest ? std::numeric_limits<int>::min()
                               : static_cast<int>(value);
}

// The words that hold a run of bits; names of one area all become its word name.
void normaliseCyclic(Run& run, const RegisterType& type)
{
    const int unit = type.unitBits;
    const bool bits = type.name.endsWith(QLatin1String("_bit"));
    run.regName = type.wordName;
    if (bits) {
        const int length = wrapAdd(run.length, run.address % unit);
        run.length = length / unit + (length % unit != 0 ? 1 : 0);
        run.address = run.address / unit;
    } else if (unit != 1) {
        run.length = truncated(static_cast<float>(run.length) * (16.0f / static_cast<float>(unit)));
    }
}

void normaliseRecipe(Run& run, const RegisterType& type)
{
    if (type.dataBits != 1) {
        run.length = truncated(run.length * (16.0 / type.unitBits));
    }
}

QVector<Run> normalisedRuns(const QList<KEY_ADDRESS>& keys, int mode)
{
    QVector<Run> runs;
    runs.reserve(keys.size());
    for (int i = 0; i < keys.size(); ++i) {
        Run run = runOf(keys.at(i), i);
        const int index = indexOfName(run.regName);
        if (index >= 0) {
            normalise(run, registerType(index), mode);
        }
        if (mode == mergeCyclic) {
            debugKey("step0", i, run.regName, run.address, run.length);
        }
        runs.append(run);
    }
    return runs;
}

} // namespace

Run runOf(const KEY_ADDRESS& key, int opener)
{
    Run run = {key.stationNo, key.regName, key.address, key.length, opener};
    return run;
}

bool keepApart(const Run& a, const Run& b, int limit)
{
    return a.stationNo != b.stationNo || a.regName != b.regName ||
           wrapSub(b.address, wrapAdd(a.address, a.length)) > limit;
}

void normalise(Run& run, const RegisterType& type, int mode)
{
    if (type.unitBits < 1) {
        return;
    }
    if (mode == mergeCyclic) {
        normaliseCyclic(run, type);
    } else {
        normaliseRecipe(run, type);
    }
}

QVector<Run> planRuns(const QList<KEY_ADDRESS>& keys, int mode)
{
    QVector<Run> runs = normalisedRuns(keys, mode);
    if (mode != mergeCyclic) {
        return joinRuns(runs, 0, &driver.groupStarts);
    }
    sortByWeight(runs);
    return joinRuns(joinRuns(runs, 0, 0), driver.mergeGap, 0);
}

void normaliseRecipeRun(Run& run)
{
    const int index = indexOfName(run.regName);
    if (index >= 0) {
        normalise(run, registerType(index), mergeRecipe);
    }
}

QVector<Run> joinRuns(const QVector<Run>& runs, int limit, QList<int>* starts)
{
    QVector<Run> joined;
    Run open = Run();
    for (int i = 0; i < runs.size(); ++i) {
        const Run& next = runs.at(i);
        const int span = wrapSub(wrapAdd(next.address, next.length), open.address);
        if (i > 0 && !keepApart(open, next, limit) && span <= maxRunUnits) {
            // A run inside a longer one that was cut already takes its start back to its own.
            open.length = std::max(open.length, span);
            open.address = std::min(open.address, next.address);
        } else {
            if (i > 0) {
                joined.append(open);
            }
            open = next;
            if (starts != 0) {
                starts->append(i);
            }
        }
        for (; open.length > maxRunUnits; open.length -= maxRunUnits) {
            joined.append(open);
            joined.last().length = maxRunUnits;
            open.address = wrapAdd(open.address, maxRunUnits);
        }
    }
    if (!runs.isEmpty()) {
        joined.append(open);
    }
    return joined;
}

int intf_addrMerge(QList<KEY_ADDRESS>& keys)
{
    const DriverCall call;
    clearMarks();
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): `keys` may be the driver's own
    const QList<KEY_ADDRESS> handed = keys;
    for (int i = 0; i < handed.size(); ++i) {
        const KEY_ADDRESS& key = handed.at(i);
        _setDataAreaMonitorFlag(key.stationNo, key.regName, key.address, key.length);
        debugKey("step", i, key.regName, key.address, key.length);
    }
    driver.readList.clear();
    if (handed.isEmpty()) {
        return 0;
    }
    const QVector<Run> runs = planRuns(handed, mergeCyclic);
    for (int i = 0; i < runs.size(); ++i) {
        const Run& run = runs.at(i);
        VARIABLE request = VARIABLE();
        request.kind = sendCyclicRead;
        request.stationNo = run.stationNo;
        request.regName = sharedRegName(run.regName);
        request.address = run.address;
        request.length = run.length;
        driver.readList.append(request);
    }
    for (int i = 0; i < driver.readList.size(); ++i) {
        debugRequest(i, driver.readList.at(i));
    }
    return static_cast<int>(driver.readList.size());
}
