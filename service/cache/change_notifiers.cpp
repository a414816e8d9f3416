#include "cache/change_notifiers.h"

#include "driver_lock.h"
#include "protocol.h"
#include "protocol/wrap.h"

namespace {

enum View {
    plainView, // the area name alone
    bitView,
    byteView,
    wordView,
    dwordView,
    viewCount
};

const char* const viewSuffixes[viewCount] = {"", "_bit", "_B", "_W", "_D"};

QString builtName(const QString& area, View view)
{
    QString name = area;
    name.append(QLatin1String(viewSuffixes[view]));
    return name;
}

// The names of the controller's own areas, made once: a screen full of changes is announced by
// copies of them.
class ViewNames {
public:
    ViewNames()
    {
        for (int area = 0; area < areaCount; ++area) {
            for (int view = 0; view < viewCount; ++view) {
                names_[area][view] =
                    builtName(QString(QLatin1Char(areas_[area])), static_cast<View>(view));
            }
        }
    }

    QString nameOf(const QString& area, View view) const
    {
        for (int known = 0; area.size() == 1 && known < areaCount; ++known) {
            if (area.at(0) == QLatin1Char(areas_[known])) {
                return names_[known][view];
            }
        }
        return builtName(area, view);
    }

private:
    enum {
        areaCount = 6
    };
    static const char areas_[areaCount];
    QString names_[areaCount][viewCount];
};

const char ViewNames::areas_[areaCount] = {'R', 'M', 'I', 'Q', 'T', 'C'};

const ViewNames viewNames;

// Which views a unit of one width has.
struct UnitViews {
    int bits; // bits of the unit that can be watched
    View own; // view flag 0
    struct {
        int firstFlag; // view flag of the unit that starts the value
        int units;     // units that the value spans
        View view;
    } wider[2];
};

const UnitViews wordViews = {16, wordView, {{1, 2, dwordView}, {0, 0, plainView}}};
const UnitViews dwordViews = {32, dwordView, {{0, 0, plainView}, {0, 0, plainView}}};
const UnitViews byteViews = {8, byteView, {{1, 2, wordView}, {3, 4, dwordView}}};

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

    bool announce(View view, int viewAddress) const
    {
        return callHost(driver.callBackTag, station, viewNames.nameOf(area, view), viewAddress);
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
            !unit.announce(bitView, wrapAdd(wrapMul(unit.address, bits), k))) {
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
            unit.announce(plainView, unit.address);
        }
        return;
    }
    if (!announceBits(unit, views.bits, changed)) {
        return;
    }
    if (unit.ownView() && !unit.announce(views.own, unit.address)) {
        return;
    }
    for (int w = 0; w < 2; ++w) {
        for (int j = 0; j < views.wider[w].units && unit.address - j >= 0; ++j) {
            if ((unit.viewFlags >> (views.wider[w].firstFlag + j) & 1) != 0 &&
                !unit.announce(views.wider[w].view, unit.address - j)) {
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
        unit.announce(plainView, unit.address);
    }
}

bool callHost(int tag, int station, QString regName, int address)
{
    const unsigned int resets = driver.resets;
    const VALUE_CHANGE_CALLBACK callBack = driver.valueChangeCallBack;
    if (callBack != 0) {
        const OutsideDriver toldHost;
        callBack(tag, station, regName, address);
    }
    return driver.resets == resets;
}
