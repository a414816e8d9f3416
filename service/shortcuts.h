// What the driver keeps for speed alone, beside the members of `driver` that hosts know.
#ifndef DOV417MODBUS_SHORTCUTS_H
#define DOV417MODBUS_SHORTCUTS_H

#include <QHash>
#include <QList>
#include <QString>
#include <QVector>

#include "records.h"

struct UnitKey {
    int station;
    QString area;
    int address;
};

inline bool operator==(const UnitKey& a, const UnitKey& b)
{
    return a.address == b.address && a.station == b.station && a.area == b.area;
}

unsigned int qHash(const UnitKey& key);

// Neighbours that were read or planned together stand one after the other: such a run is found
// once.
struct UnitRun {
    int start; // record that the run begins with
    int end;   // behind its last record; kept in the record that it begins with
};

struct UnitIndex {
    UnitIndex() : unique(true), generation(0) {}

    QList<_DATA_> seen;        // shares driver.dataAreas as the index knows it
    QHash<UnitKey, int> first; // first record of each key
    QVector<UnitRun> runs;     // one a record
    bool unique;               // no key occurs twice
    unsigned int generation;   // rises whenever records may have changed their places
};

struct Shortcuts {
    Shortcuts() : valuesAreZero(false) {}

    // Finds a record of driver.dataAreas without a search.
    UnitIndex units;

    // The frame answered last: the next one is built in its memory.
    QList<FRAME_PRO> spareFrames;

    // The write that left the queue last: the next one is queued in its memory.
    QList<VARIABLE> spareWrites;

    // A cyclic read was framed last: driver.currentVar, driver.currentVars and the spare frame
    // carry the kilobyte of zeros that every cyclic read has for values.
    bool valuesAreZero;
};

#endif
