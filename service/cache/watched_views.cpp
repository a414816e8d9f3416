#include "cache/watched_views.h"

#include "cache/unit_index.h"
#include "protocol/wrap.h"

// `unitsPerValue` neighbouring units a value; their flags go up by one bit from the shape's first.
void watchValues(const HostRange& range, const ValueShape& shape)
{
    const int values = range.length / shape.lengthPerValue;
    int address = range.address;
    int index = -1;
    for (int i = 0; i < values; ++i) {
        for (int j = 0; j < shape.unitsPerValue; ++j) {
            index = unitIndexOf(range.station, range.type.area, address, index + 1);
            UnitEdit unit(index);
            unit->viewFlags |= 1 << (shape.firstFlag + j);
            address = wrapAdd(address, 1);
        }
    }
}

void watchBits(const HostRange& range, const ValueShape&)
{
    int index = -1;
    for (int i = 0; i < range.length; ++i) {
        const BitPlace place(wrapAdd(range.address, i), range.type.unitBits);
        if (place.exists()) {
            index = unitIndexOf(range.station, range.type.area, place.unit,
                                index + (place.bit == 0 ? 1 : 0));
            UnitEdit unit(index);
            unit->bitMonitor |= 1u << place.bit;
        }
    }
}
