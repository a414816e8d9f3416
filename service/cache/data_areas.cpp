#include "cache/data_areas.h"

#include "cache/pending_values.h"
#include "cache/reading_values.h"
#include "cache/unit_index.h"
#include "cache/unit_layout.h"
#include "cache/watched_views.h"
#include "driver_lock.h"
#include "intf.h"
#include "protocol/address_text.h"

namespace {

void watchNothing(const HostRange&, const ValueShape&) {}
void readNothing(const HostRange&, const ValueShape&, unsigned char*) {}
void storeNothing(const HostRange&, const unsigned char*) {}
void settleNothing(const HostRange&, const Settling&, bool) {}

struct LayoutRow {
    ValueShape shape;
    void (*watch)(const HostRange& range, const ValueShape& shape);
    void (*read)(const HostRange& range, const ValueShape& shape, unsigned char* out);
    void (*store)(const HostRange& write, const unsigned char* data);
    Settling settling;
    void (*settle)(const HostRange& write, const Settling& settling, bool accepted);
};

// clang-format off
const LayoutRow layouts[] = {
    // shape: what a value counts in a length, its units, its first view flag, bytes of a unit
    // settling: units, for what of a length, bytes, announcement of a failure
    /* wordUnits       */ {{1, 1, 0, 2}, watchValues, readValues, storeWords,
                           {1, 1, 2, wordFailed}, settleUnits},
    /* wordsOverBytes  */ {{1, 2, 1, 1}, watchValues, readValues, storeWordsOverBytes,
                           {2, 1, 1, byteFailed}, settleUnits},
    /* dwordUnits      */ {{2, 1, 0, 4}, watchValues, readValues, storeDwordUnits,
                           {1, 1, 4, dwordFailed}, settleUnits},
    // A length counts words of "R_D": each of them is settled.
    /* dwordsOverWords */ {{2, 2, 1, 2}, watchValues, readDwordsOverWords, storeDwordsOverWords,
                           {1, 1, 2, wordFailed}, settleUnits},
    // Storing knows no values over four units; settled is what it touched.
    /* dwordsOverBytes */ {{2, 4, 3, 1}, watchValues, readValues, storeDwordUnits,
                           {1, 2, 1, byteFailed}, settleUnits},
    /* byteUnits       */ {{1, 1, 0, 1}, watchValues, readValues, storeSingleUnits,
                           {1, 1, 1, byteFailed}, settleUnits},
    /* namedUnits      */ {{1, 1, 0, 1}, watchValues, readValues, storeSingleUnits,
                           {1, 1, 1, viewFailed}, settleUnits},
    /* bitsOfUnits     */ {{0, 0, 0, 0}, watchBits, readBits, storeBits,
                           {0, 0, 0, 0}, settleBits},
    /* noUnits         */ {{0, 0, 0, 0}, watchNothing, readNothing, storeNothing,
                           {0, 0, 0, 0}, settleNothing},
};
// clang-format on

} // namespace

void markViews(const RegisterType& type, int station, int address, int length)
{
    const HostRange range = {type, station, type.name, address, length};
    const LayoutRow& row = layouts[type.layout];
    row.watch(range, row.shape);
}

void readUnits(const RegisterType& type, int station, int address, int length, unsigned char* out)
{
    if (length > 0) {
        const HostRange range = {type, station, type.name, address, length};
        const LayoutRow& row = layouts[type.layout];
        row.read(range, row.shape, out);
    }
}

void storeWrite(const RegisterType& type, int station, const QString& regName, int address,
                int length, const unsigned char* data)
{
    if (length > 0) {
        const HostRange write = {type, station, regName, address, length};
        layouts[type.layout].store(write, data);
    }
}

void settleWrite(const RegisterType& type, int station, const QString& regName, int address,
                 int length, bool accepted)
{
    if (length > 0) {
        const HostRange write = {type, station, regName, address, length};
        const LayoutRow& row = layouts[type.layout];
        row.settle(write, row.settling, accepted);
    }
}

void clearMarks()
{
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        UnitEdit unit(i);
        unit->pendingBits = 0;
        unit->viewFlags = 0;
        unit->bitMonitor = 0;
    }
}

int _setDataAreaMonitorFlag(int station, QString regName, int address, int length)
{
    const int index = indexOfName(regName);
    if (index < 0) {
        return -1;
    }
    markViews(registerType(index), station, address, length);
    return 0;
}

void _write_FailOrSuc(int station, QString regName, int address, int length, int result)
{
    const int index = indexOfName(regName);
    if (index >= 0) {
        settleWrite(registerType(index), station, regName, address, length, result == 1);
    }
}

int intf_getData(int station, QString regName, int address, int length, unsigned char* out)
{
    const DriverCall call;
    const int index = indexOfName(regName);
    if (index < 0) {
        return -1;
    }
    if (out != 0) {
        readUnits(registerType(index), station, address, length, out);
    }
    return 1;
}
