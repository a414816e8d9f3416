// Which of the host's views a changed unit touches, and the call for each.
#ifndef DOV417MODBUS_CHANGE_NOTIFIERS_H
#define DOV417MODBUS_CHANGE_NOTIFIERS_H

#include <QString>

#include "cache/unit_widths.h"
#include "records.h"

// The names under which the views of an area are announced, looked up once for a run of units.
class AreaNames {
public:
    explicit AreaNames(const QString& area);
    QString nameOf(View view) const;

private:
    const QString& area_;
    const QString* known_; // one a view, of the controller's own areas; else null
};

// What is announced of a unit. A copy: the callback may change the cache under our hands.
struct WatchedUnit {
    explicit WatchedUnit(const _DATA_& unit)
        : station(unit.station), address(unit.address), viewFlags(unit.viewFlags),
          bitMonitor(unit.bitMonitor)
    {
    }

    bool isWatched() const
    {
        return viewFlags != 0 || bitMonitor != 0;
    }

    int station;
    int address;
    int viewFlags;
    unsigned int bitMonitor;
};

// Announces a 16-bit unit of which these bits changed. `timerCounter` is field 6 of the register
// type. False when the host re-initialised the driver from within.
bool announceWord(const WatchedUnit& unit, const AreaNames& names, unsigned int changed,
                  int timerCounter);

// A null value means that every watched bit is announced. `index` is the record's index in
// driver.dataAreas, `timerCounter` field 6 of the register type.
void _wordDataChange(int* oldValue, int* newValue, int index, int timerCounter);
void _dwordDataChange(int* oldValue, int* newValue, int index, int timerCounter);
void _byteDataChange(unsigned char* oldValue, unsigned char* newValue, int index, int timerCounter);
void _bitDataChange(int index);

// Calls the host, if it installed a callback, with a copy of the name that it may keep. False when
// the host re-initialised the driver from within: whatever was under way is void then.
bool callHost(int tag, int station, QString regName, int address);

#endif
