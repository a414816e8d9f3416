#include "cache/unit_index.h"

#include "protocol.h"
#include "protocol/wrap.h"
#include "shortcuts.h"

namespace {

inline bool sameArea(const QString& a, const QString& b)
{
    return a.isSharedWith(b) || a == b;
}

inline bool matches(const _DATA_& unit, int station, const QString& area, int address)
{
    return unit.address == address && unit.station == station && sameArea(unit.area, area);
}

inline UnitKey keyOf(int station, const QString& area, int address)
{
    UnitKey key;
    key.station = station;
    key.area = area;
    key.address = address;
    return key;
}

// Notes the record at `at`, the last one so far, as the next of the run before it or as a new one.
void noteRun(UnitIndex& index, int at)
{
    UnitRun run = {at, at + 1};
    if (at > 0) {
        const _DATA_& before = driver.dataAreas.at(at - 1);
        const _DATA_& unit = driver.dataAreas.at(at);
        if (matches(unit, before.station, before.area, wrapAdd(before.address, 1))) {
            run.start = index.runs.at(at - 1).start;
            index.runs[run.start].end = at + 1;
        }
    }
    index.runs.append(run);
}

void rebuild(UnitIndex& index)
{
    index.first.clear();
    index.runs.clear();
    index.unique = true;
    ++index.generation;
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_& unit = driver.dataAreas.at(i);
        const UnitKey key = keyOf(unit.station, unit.area, unit.address);
        if (index.first.contains(key)) {
            index.unique = false;
        } else {
            index.first.insert(key, i);
        }
        noteRun(index, i);
    }
    index.seen = driver.dataAreas;
}

int appendUnit(UnitIndex& index, const UnitKey& key)
{
    index.seen = QList<_DATA_>();
    driver.dataAreas.append(newUnit(key.station, key.area, key.address));
    index.seen = driver.dataAreas;
    const int last = static_cast<int>(driver.dataAreas.size()) - 1;
    index.first.insert(key, last);
    noteRun(index, last);
    return last;
}

} // namespace

// Addresses run on, so they go in as they are and spread by themselves, by their remainder. Qt 6
// takes the lowest bits instead, in which the same addresses of all areas and stations would meet.
unsigned int qHash(const UnitKey& key)
{
    const unsigned int area = key.area.isEmpty() ? 0u : key.area.at(0).unicode();
    const unsigned int place = (static_cast<unsigned int>(key.station) << 20) ^ (area << 16) ^
                               static_cast<unsigned int>(key.address);
#if QT_VERSION >= 0x060000
    return static_cast<unsigned int>(place * Q_UINT64_C(0x9E3779B97F4A7C15) >> 32);
#else
    return place;
#endif
}

_DATA_ newUnit(int station, const QString& area, int address)
{
    _DATA_ unit = _DATA_();
    unit.station = station;
    unit.area = area;
    unit.address = address;
    return unit;
}

int unitIndexOf(int station, const QString& area, int address, int hint)
{
    UnitIndex& index = driver.shortcuts->units;
    if (!index.seen.isSharedWith(driver.dataAreas)) {
        rebuild(index);
    }
    if (index.unique && hint >= 0 && hint < driver.dataAreas.size() &&
        matches(driver.dataAreas.at(hint), station, area, address)) {
        return hint;
    }
    const UnitKey key = keyOf(station, area, address);
    const int found = index.first.value(key, -1);
    return found >= 0 ? found : appendUnit(index, key);
}

UnitsFound unitsFrom(int station, const QString& area, int address, int hint, int wanted)
{
    UnitsFound found = {unitIndexOf(station, area, address, hint), 1};
    const UnitIndex& index = driver.shortcuts->units;
    if (wanted > 1 && index.unique) {
        const int standing = index.runs.at(index.runs.at(found.index).start).end - found.index;
        found.count = standing < wanted ? standing : wanted;
    }
    return found;
}

bool isUnitAt(int index, int station, const QString& area, int address)
{
    return index >= 0 && index < driver.dataAreas.size() &&
           matches(driver.dataAreas.at(index), station, area, address);
}

// Two empty lists share too: what it knew must go.
void forgetUnits()
{
    UnitIndex& units = driver.shortcuts->units;
    const unsigned int generation = units.generation;
    units = UnitIndex();
    units.generation = generation + 1;
}

UnitEdit::UnitEdit(int index)
    : known_(driver.shortcuts->units.seen.isSharedWith(driver.dataAreas)), unit_(0)
{
    driver.shortcuts->units.seen = QList<_DATA_>();
    unit_ = &driver.dataAreas[index];
}

UnitEdit::~UnitEdit()
{
    if (known_) {
        driver.shortcuts->units.seen = driver.dataAreas;
    } else {
        forgetUnits();
    }
}

RunEdit::RunEdit(int firstIndex)
    : firstIndex_(firstIndex), generation_(driver.shortcuts->units.generation), open_(true)
{
    letGo();
}

RunEdit::~RunEdit()
{
    if (open_) {
        pause();
    }
}

void RunEdit::letGo()
{
    driver.shortcuts->units.seen = QList<_DATA_>();
    first_ = driver.dataAreas.begin() + firstIndex_;
}

void RunEdit::pause()
{
    QList<_DATA_> taken(driver.dataAreas);
    driver.shortcuts->units.seen.swap(taken);
}

bool RunEdit::resume()
{
    const UnitIndex& units = driver.shortcuts->units;
    open_ = units.generation == generation_ && units.seen.isSharedWith(driver.dataAreas);
    if (open_) {
        letGo();
    }
    return open_;
}
