#include "unit_index.h"

#include "protocol.h"

namespace {

inline bool sameArea(const QString& a, const QString& b)
{
    return a.constData() == b.constData() || a == b;
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

void rebuild(UnitIndex& index)
{
    index.first.clear();
    index.unique = true;
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_& unit = driver.dataAreas.at(i);
        const UnitKey key = keyOf(unit.station, unit.area, unit.address);
        if (index.first.contains(key)) {
            index.unique = false;
        } else {
            index.first.insert(key, i);
        }
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
    return last;
}

} // namespace

// Addresses run on, so they go in as they are and spread by themselves.
unsigned int qHash(const UnitKey& key)
{
    const unsigned int area = key.area.isEmpty() ? 0u : key.area.at(0).unicode();
    return (static_cast<unsigned int>(key.station) << 20) ^ (area << 16) ^
           static_cast<unsigned int>(key.address);
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
    UnitIndex& index = *driver.unitIndex;
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

bool isUnitAt(int index, int station, const QString& area, int address)
{
    return index >= 0 && index < driver.dataAreas.size() &&
           matches(driver.dataAreas.at(index), station, area, address);
}

UnitEdit::UnitEdit(int index)
    : known_(driver.unitIndex->seen.isSharedWith(driver.dataAreas)), unit_(0)
{
    driver.unitIndex->seen = QList<_DATA_>();
    unit_ = &driver.dataAreas[index];
}

UnitEdit::~UnitEdit()
{
    if (known_) {
        driver.unitIndex->seen = driver.dataAreas;
    }
}
