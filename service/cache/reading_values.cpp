#include "cache/reading_values.h"

#include <cstring>

#include "cache/unit_index.h"
#include "protocol.h"
#include "protocol/wrap.h"

namespace {

const unsigned char* bytesOf(const _DATA_& unit, bool pending)
{
    return pending ? unit.pendingValue : unit.deviceValue;
}

} // namespace

void readValues(const HostRange& range, const ValueShape& shape, unsigned char* out)
{
    const size_t bytes = static_cast<size_t>(shape.bytesPerUnit);
    const int units = range.length / shape.lengthPerValue * shape.unitsPerValue;
    const QString& area = range.type.area;
    const int station = range.station;
    const int address = range.address;
    int index = -1;
    for (int i = 0; i < units; ++i, out += bytes) {
        index = unitIndexOf(station, area, wrapAdd(address, i), index + 1);
        const _DATA_& unit = driver.dataAreas.at(index);
        memcpy(out, bytesOf(unit, unit.writePending == 1), bytes);
    }
}

// A value over two words is shown as written as soon as one of them awaits its result: half an old
// and half a new value must never meet on the screen.
void readDwordsOverWords(const HostRange& range, const ValueShape&, unsigned char* out)
{
    const QString& area = range.type.area;
    const int station = range.station;
    const int address = range.address;
    const int length = range.length;
    int second = -1;
    for (int i = 0; i + 1 < length; i += 2, out += 4) {
        const int first = unitIndexOf(station, area, wrapAdd(address, i), second + 1);
        second = unitIndexOf(station, area, wrapAdd(address, i + 1), first + 1);
        const _DATA_& low = driver.dataAreas.at(first);
        const _DATA_& high = driver.dataAreas.at(second);
        const bool pending = low.writePending != 0 || high.writePending != 0;
        memcpy(out, bytesOf(low, pending), 2);
        memcpy(out + 2, bytesOf(high, pending), 2);
    }
}

void readBits(const HostRange& range, const ValueShape&, unsigned char* out)
{
    const RegisterType& type = range.type;
    const int station = range.station;
    const int address = range.address;
    const int length = range.length;
    int index = -1;
    for (int i = 0; i < length; ++i) {
        const BitPlace place(wrapAdd(address, i), type.unitBits);
        if (!place.exists()) {
            out[i] = 0;
            continue;
        }
        index = unitIndexOf(station, type.area, place.unit, index + (place.bit == 0 ? 1 : 0));
        const _DATA_& unit = driver.dataAreas.at(index);
        const int byte = bytesOf(unit, unit.writePending == 1)[place.byte];
        out[i] = static_cast<unsigned char>(byte >> place.bitInByte & 1);
    }
}
