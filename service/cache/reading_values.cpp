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

// The visible bytes of `count` records that stand one after the other; returns behind the last one.
// Where nothing is on its way to the controller, four records are taken at a time.
template <size_t bytes>
unsigned char* copyUnits(int index, int count, unsigned char* out)
{
    QList<_DATA_>::const_iterator unit = driver.dataAreas.constBegin() + index;
    const QList<_DATA_>::const_iterator end = unit + count;
    const QList<_DATA_>::const_iterator endOfFours = unit + (count & ~3);
    for (; unit != endOfFours && (unit[0].writePending | unit[1].writePending |
                                  unit[2].writePending | unit[3].writePending) == 0;
         unit += 4, out += 4 * bytes) {
        memcpy(out, unit[0].deviceValue, bytes);
        memcpy(out + bytes, unit[1].deviceValue, bytes);
        memcpy(out + 2 * bytes, unit[2].deviceValue, bytes);
        memcpy(out + 3 * bytes, unit[3].deviceValue, bytes);
    }
    for (; unit != end; ++unit, out += bytes) {
        memcpy(out, bytesOf(*unit, unit->writePending == 1), bytes);
    }
    return out;
}

} // namespace

template <size_t bytesPerUnit>
void readValues(const HostRange& range, const ValueShape& shape, unsigned char* out)
{
    const int units = range.length / shape.lengthPerValue * shape.unitsPerValue;
    int index = 0;
    for (int i = 0; i < units;) {
        const UnitsFound found =
            unitsFrom(range.station, range.type.area, wrapAdd(range.address, i), index, units - i);
        out = copyUnits<bytesPerUnit>(found.index, found.count, out);
        i += found.count;
        index = found.index + found.count;
    }
}

template void readValues<1>(const HostRange&, const ValueShape&, unsigned char*);
template void readValues<2>(const HostRange&, const ValueShape&, unsigned char*);
template void readValues<4>(const HostRange&, const ValueShape&, unsigned char*);

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

// The bits of one unit stand one after the other: it is looked up once for all of them.
void readBits(const HostRange& range, const ValueShape&, unsigned char* out)
{
    const RegisterType& type = range.type;
    int index = -1;
    int unitAt = 0;
    for (int i = 0; i < range.length; ++i) {
        const BitPlace place(wrapAdd(range.address, i), type.unitBits);
        if (!place.exists()) {
            out[i] = 0;
            continue;
        }
        if (index < 0 || place.unit != unitAt) {
            unitAt = place.unit;
            index = unitIndexOf(range.station, type.area, unitAt, index + 1);
        }
        const _DATA_& unit = driver.dataAreas.at(index);
        const int byte = bytesOf(unit, unit.writePending == 1)[place.byte];
        out[i] = static_cast<unsigned char>(byte >> place.bitInByte & 1);
    }
}
