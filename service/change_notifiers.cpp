#include "change_notifiers.h"

#include "protocol.h"
#include "wrap.h"

namespace {

// Which views a unit of one width has: a row of the manual's table.
struct UnitViews {
    int bits;              // bits of the unit that can be watched
    const char* ownSuffix; // view flag 0
    struct {
        int firstFlag; // view flag of the unit that starts the value
        int units;     // units that the value spans
        const char* suffix;
    } wider[2];
};

const UnitViews wordViews = {16, "_W", {{1, 2, "_D"}, {0, 0, ""}}};
const UnitViews dwordViews = {32, "_D", {{0, 0, ""}, {0, 0, ""}}};
const UnitViews byteViews = {8, "_B", {{1, 2, "_W"}, {3, 4, "_D"}}};

// What is announced of a unit. A copy: the callback may change the cache under our hands.
struct WatchedUnit {
    explicit WatchedUnit(const _DATA_& unit)
        : station(unit.station), area(unit.area), address(unit.address), viewFlags(unit.viewFlags),
          bitMonitor(unit.bitMonitor)
    {
    }

    bool ownView() const
    {
        return viewFlags % 2 == 1;
    }

    bool announce(const char* suffix, int viewAddress) const
    {
        QString name = area;
        name.append(QLatin1String(suffix));
        return callHost(driver.callBackTag, station, name, viewAddress);
    }

    int station;
    QString area;
    int address;
    int viewFlags;
    unsigned int bitMonitor;
};

bool announceBits(const WatchedUnit& unit, int bits, unsigned int changed)
{
    const unsigned int announced = unit.bitMonitor & changed;
    for (int k = 0; announced != 0 && k < bits; ++k) {
        if ((announced >> k & 1u) != 0 &&
            !unit.announce("_bit", wrapAdd(wrapMul(unit.address, bits), k))) {
            return false;
        }
    }
    return true;
}

void announceUnit(int index, int timerCounter, unsigned int changed, const UnitViews& views)
{
    if (index < 0 || index >= driver.dataAreas.size()) {
        return;
    }
    const _DATA_& record = driver.dataAreas.at(index);
    if (record.viewFlags == 0 && record.bitMonitor == 0) {
        return;
    }
    const WatchedUnit unit(record);
    if (timerCounter != 0) {
        if (unit.ownView()) {
            unit.announce("", unit.address);
        }
        return;
    }
    if (!announceBits(unit, views.bits, changed)) {
        return;
    }
    if (unit.ownView() && !unit.announce(views.ownSuffix, unit.address)) {
        return;
    }
    for (int w = 0; w < 2; ++w) {
        for (int j = 0; j < views.wider[w].units && unit.address - j >= 0; ++j) {
            if ((unit.viewFlags >> (views.wider[w].firstFlag + j) & 1) != 0 &&
                !unit.announce(views.wider[w].suffix, unit.address - j)) {
                return;
            }
        }
    }
}

template <typename Value>
unsigned int changedBits(const Value* oldValue, const Value* newValue)
{
    return oldValue == 0 || newValue == 0
               ? ~0u
               : static_cast<unsigned int>(*oldValue) ^ static_cast<unsigned int>(*newValue);
}

} // namespace

void _wordDataChange(int* oldValue, int* newValue, int index, int timerCounter)
{
    announceUnit(index, timerCounter, changedBits(oldValue, newValue), wordViews);
}

void _dwordDataChange(int* oldValue, int* newValue, int index, int timerCounter)
{
    announceUnit(index, timerCounter, changedBits(oldValue, newValue), dwordViews);
}

void _byteDataChange(unsigned char* oldValue, unsigned char* newValue, int index, int timerCounter)
{
    announceUnit(index, timerCounter, changedBits(oldValue, newValue), byteViews);
}

void _bitDataChange(int index)
{
    if (index < 0 || index >= driver.dataAreas.size()) {
        return;
    }
    const WatchedUnit unit(driver.dataAreas.at(index));
    if (unit.ownView()) {
        unit.announce("", unit.address);
    }
}

bool callHost(int tag, int station, QString regName, int address)
{
    const unsigned int resets = driver.resets;
    if (driver.valueChangeCallBack != 0) {
        driver.valueChangeCallBack(tag, station, regName, address);
    }
    return driver.resets == resets;
}
