#include "cache/data_areas.h"
#include "cache/write_queue.h"
#include "driver_lock.h"
#include "intf.h"
#include "protocol/address_text.h"
#include "protocol/register_table.h"

int intf_setData(int station, QString regName, int address, int length, unsigned char* data,
                 int kind)
{
    const DriverCall call;
    const bool queued = driver.writeToCacheOnly == 0;
    const int index = indexOfName(regName);
    if (index < 0) {
        return queued ? -1 : 1;
    }
    const RegisterType& type = registerType(index);
    const Unfinished write(Unfinished::writing);
    if (queued) {
        if (length > maxWriteLength(type)) {
            return -1;
        }
        if (length < 0) {
            return 1;
        }
        queueWrite(type, station, address, length, data, kind);
    }
    storeWrite(type, station, type.name, address, length, data);
    return 1;
}
