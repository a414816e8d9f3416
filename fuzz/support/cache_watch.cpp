#include "cache_watch.h"
#include "uncalled_functions.h"

#include <map>

namespace {

bool within(int address, int first, int length)
{
    return length > 0 &&
           static_cast<unsigned int>(wrapped(static_cast<long long>(address) - first)) <
               static_cast<unsigned int>(length);
}

bool covers(const QueuedWrite& write, const _DATA_& unit)
{
    const TypeFacts& facts = factsOf(typeOf(write.regName));
    if (write.station != unit.station || unit.area != QLatin1String(facts.area)) {
        return false;
    }
    if (!facts.bits) {
        return within(unit.address, write.address, write.length);
    }
    for (int k = 0; k < 16; ++k) {
        const int bit = wrapped(16LL * unit.address + k);
        if (bit / 16 == unit.address && bit % 16 == k && within(bit, write.address, write.length)) {
            return true;
        }
    }
    return false;
}

} // namespace

void CacheWatch::excuse(const QueuedWrite& write)
{
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_& unit = driver.dataAreas.at(i);
        if (covers(write, unit)) {
            excused_.emplace(unit.station, unit.area.toStdString(), unit.address);
        }
    }
}

void CacheWatch::excuseAll()
{
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_& unit = driver.dataAreas.at(i);
        excused_.emplace(unit.station, unit.area.toStdString(), unit.address);
    }
}

void CacheWatch::reset()
{
    excused_.clear();
}

void CacheWatch::requireReasons(const QueueModel& model)
{
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_ unit = driver.dataAreas.at(i);
        require(unit.writePending <= 1, "a unit is pending or not");
        if (getIndexOfDataArea(unit.station, unit.area, unit.address, driver.dataAreas) != i) {
            continue; // a second record of the unit, from outside: nobody looks at it
        }
        if (unit.writePending == 0 && unit.pendingBits == 0) {
            if (!excused_.empty()) {
                excused_.erase(Unit(unit.station, unit.area.toStdString(), unit.address));
            }
            continue;
        }
        bool reason = unit.writePending == 0;
        for (const QueuedWrite& write : model.queue()) {
            reason = reason || covers(write, unit);
        }
        require(reason ||
                    excused_.count(Unit(unit.station, unit.area.toStdString(), unit.address)) != 0,
                "a unit is pending for a write that is on its way");
    }
}

void CacheWatch::requireIndexAgrees()
{
    const int size = driver.dataAreas.size();
    std::map<std::tuple<int, std::string, int>, int> first;
    for (int i = 0; i < size; ++i) {
        const _DATA_ unit = driver.dataAreas.at(i);
        const int expected =
            first.emplace(std::make_tuple(unit.station, unit.area.toStdString(), unit.address), i)
                .first->second;
        require(getIndexOfDataArea(unit.station, unit.area, unit.address, driver.dataAreas) ==
                    expected,
                "the index finds the first record of a unit");
    }
    require(driver.dataAreas.size() == size, "looking up what is there adds nothing");
}
