#include "cache/change_notifiers.h"

#include "driver_lock.h"
#include "protocol.h"
#include "protocol/wrap.h"

namespace {

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

    // One a view; null for an area of no shipped register type.
    const QString* of(const QString& area) const
    {
        for (int known = 0; area.size() == 1 && known < areaCount; ++known) {
            if (area.at(0) == QLatin1Char(areas_[known])) {
                return names_[known];
            }
        }
        return 0;
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

bool ownView(const WatchedUnit& unit)
{
    return unit.viewFlags % 2 == 1;
}

bool announce(const WatchedUnit& unit, const AreaNames& names, View view, int address)
{
    return callHost(driver.callBackTag, unit.station, names.nameOf(view), address);
}

bool announceBits(const WatchedUnit& unit, const AreaNames& names, int bits, unsigned int announced)
{
    for (int k = 0; k < bits; ++k) {
        if ((announced >> k & 1u) != 0 &&
            !announce(unit, names, bitView, wrapAdd(wrapMul(unit.address, bits), k))) {
            return false;
        }
    }
    return true;
}

bool announceWider(const WatchedUnit& unit, const AreaNames& names, const UnitViews& views)
{
    for (int w = 0; w < 2; ++w) {
        for (int j = 0; j < views.wider[w].units && unit.address - j >= 0; ++j) {
            if ((unit.viewFlags >> (views.wider[w].firstFlag + j) & 1) != 0 &&
                !announce(unit, names, views.wider[w].view, unit.address - j)) {
                return false;
            }
        }
    }
    return true;
}

__attribute__((noinline)) bool announceViews(const WatchedUnit& unit, const AreaNames& names,
                                             unsigned int changed, int timerCounter,
                                             const UnitViews& views)
{
    if (timerCounter != 0) {
        return !ownView(unit) || announce(unit, names, plainView, unit.address);
    }
    const unsigned int bits = unit.bitMonitor & changed;
    return (bits == 0 || announceBits(unit, names, views.bits, bits)) &&
           (!ownView(unit) || announce(unit, names, views.own, unit.address)) &&
           (unit.viewFlags >> 1 == 0 || announceWider(unit, names, views));
}

void announceUnit(int index, int timerCounter, unsigned int changed, int width)
{
    if (index < 0 || index >= driver.dataAreas.size()) {
        return;
    }
    const _DATA_& record = driver.dataAreas.at(index);
    const WatchedUnit unit(record);
    if (unit.isWatched()) {
        const QString area = record.area; // the record may go
        announceViews(unit, AreaNames(area), changed, timerCounter, unitWidths[width].views);
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

AreaNames::AreaNames(const QString& area) : area_(area), known_(viewNames.of(area)) {}

QString AreaNames::nameOf(View view) const
{
    return known_ != 0 ? known_[view] : builtName(area_, view);
}

bool announceWord(const WatchedUnit& unit, const AreaNames& names, unsigned int changed,
                  int timerCounter)
{
    // Nearly every unit of a screen: a word that is watched as a word alone.
    if (timerCounter == 0 && unit.viewFlags == 1 && (unit.bitMonitor & changed) == 0) {
        return announce(unit, names, wordView, unit.address);
    }
    return announceViews(unit, names, changed, timerCounter, unitWidths[wordUnits].views);
}

void _wordDataChange(int* oldValue, int* newValue, int index, int timerCounter)
{
    announceUnit(index, timerCounter, changedBits(oldValue, newValue), wordUnits);
}

void _dwordDataChange(int* oldValue, int* newValue, int index, int timerCounter)
{
    announceUnit(index, timerCounter, changedBits(oldValue, newValue), dwordUnits);
}

void _byteDataChange(unsigned char* oldValue, unsigned char* newValue, int index, int timerCounter)
{
    announceUnit(index, timerCounter, changedBits(oldValue, newValue), byteUnits);
}

void _bitDataChange(int index)
{
    announceUnit(index, 0, 0, bitUnits);
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
