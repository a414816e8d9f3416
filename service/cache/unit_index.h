// Finds a cached unit without walking the cache, however many there are.
//
// driver.dataAreas is open to everybody: a host or a test may clear, fill or edit it at any time,
// and the first matching record must win all the same. The index therefore keeps a copy of the
// list. The copy shares the list's storage, so it costs nothing, but whoever changes the list from
// outside makes Qt separate the two: that is how the index notices, whatever was changed.
#ifndef DOV417MODBUS_UNIT_INDEX_H
#define DOV417MODBUS_UNIT_INDEX_H

#include <QList>
#include <QString>

#include "records.h"

// A record as it is created: all bytes and flags 0.
_DATA_ newUnit(int station, const QString& area, int address);

// Index of the unit's record in driver.dataAreas, appended if it is missing. `hint` is where it is
// looked for first: behind the unit before it, as neighbours stand one after the other.
int unitIndexOf(int station, const QString& area, int address, int hint);

// The same, and how many of `wanted` consecutive units stand from that record on, one record after
// the other: at least the one.
struct UnitsFound {
    int index;
    int count;
};
UnitsFound unitsFrom(int station, const QString& area, int address, int hint, int wanted);

// Is the record at `index` still that of this unit? After a callback nothing is certain.
bool isUnitAt(int index, int station, const QString& area, int address);

// What is known of the list is wrong or will be: it is built again when it is asked for.
void forgetUnits();

// Writes to a record. The index gives up its copy of the list meanwhile, so that Qt does not copy
// the records, and takes it again at the end unless somebody changed the list since the unit was
// looked up.
class UnitEdit {
public:
    explicit UnitEdit(int index);
    ~UnitEdit();
    _DATA_* operator->()
    {
        return unit_;
    }
    _DATA_& operator*()
    {
        return *unit_;
    }

private:
    bool known_;
    _DATA_* unit_;
    Q_DISABLE_COPY(UnitEdit)
};

// Writes to the records of a run that was just found, the list let go once for all of them.
class RunEdit {
public:
    explicit RunEdit(int firstIndex);
    ~RunEdit();
    _DATA_& operator[](int i)
    {
        return first_[i];
    }

    // Before a callback the list is taken again, as the callback may read and change the cache.
    void pause();
    // And let go behind it. False when records may have changed their places meanwhile: the run is
    // over.
    bool resume();

private:
    void letGo();

    int firstIndex_;
    unsigned int generation_;
    bool open_;
    QList<_DATA_>::iterator first_;
    Q_DISABLE_COPY(RunEdit)
};

#endif
