#include "cache/data_areas.h"

#include "cache/pending_values.h"
#include "cache/unit_index.h"
#include "cache/unit_widths.h"
#include "cache/watched_views.h"
#include "driver_lock.h"
#include "intf.h"
#include "protocol/address_text.h"

void markViews(const RegisterType& type, int station, int address, int length)
{
    const HostRange range = {type, station, type.name, address, length};
    const UnitValues& values = valuesOf(type);
    values.watch(range, values.shape);
}

void readUnits(const RegisterType& type, int station, int address, int length, unsigned char* out)
{
    if (length > 0) {
        const HostRange range = {type, station, type.name, address, length};
        const UnitValues& values = valuesOf(type);
        values.read(range, values.shape, out);
    }
}

void storeWrite(const RegisterType& type, int station, const QString& regName, int address,
                int length, const unsigned char* data)
{
    if (length > 0) {
        const HostRange write = {type, station, regName, address, length};
        valuesOf(type).store(write, data);
    }
}

void settleWrite(const RegisterType& type, int station, const QString& regName, int address,
                 int length, bool accepted)
{
    if (length > 0) {
        const HostRange write = {type, station, regName, address, length};
        const UnitValues& values = valuesOf(type);
        values.settle(write, values.settling, accepted);
    }
}

void clearMarks()
{
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        UnitEdit unit(i);
        forgetBitWrites(*unit);
        forgetViews(*unit);
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
