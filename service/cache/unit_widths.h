// The widths that a unit of an area can have, and what goes by them: one row each. This controller
// has units of 16 bits alone.
#ifndef DOV417MODBUS_UNIT_WIDTHS_H
#define DOV417MODBUS_UNIT_WIDTHS_H

#include <QByteArray>
#include <cstddef>

#include "cache/unit_layout.h"
#include "protocol/register_table.h"

enum View {
    plainView, // the area name alone
    bitView,
    byteView,
    wordView,
    dwordView,
    viewCount
};

// Which views a unit has.
struct UnitViews {
    int bits; // bits of the unit that can be watched
    View own; // view flag 0
    struct {
        int firstFlag; // view flag of the unit that starts the value
        int units;     // units that the value spans
        View view;
    } wider[2];
};

// How the units that a host's write covers are settled.
struct Settling {
    int units;       // so many units ...
    int perLength;   // ... for so much of a write's length
    size_t bytes;    // of a unit that become the controller's
    bool byFullName; // units of a type without an area of its own are looked up by its full name
    // Announces a unit of a write that failed; `address` is the unit's.
    void (*failed)(const HostRange& write, int index, int address);
};

// What is done to the values of one kind: watch, read, store a write, settle it.
struct UnitValues {
    ValueShape shape;
    void (*watch)(const HostRange& range, const ValueShape& shape);
    void (*read)(const HostRange& range, const ValueShape& shape, unsigned char* out);
    void (*store)(const HostRange& write, const unsigned char* data);
    Settling settling;
    void (*settle)(const HostRange& write, const Settling& settling, bool accepted);
};

// Takes `count` values of a reply into the cache, from `position` of the reply on.
typedef void (*DecodeUnits)(const RegisterType& type, const QByteArray& reply, int count,
                            int position, int station, int address);

struct UnitWidth {
    int bits;
    bool isRegister; // of the controller: one bit is written by reading and patching the whole
    UnitViews views;
    DecodeUnits decode;
    const UnitValues* values[valueKindCount];
};

// The rows, in that order in which they are looked for.
enum {
    wordUnits,
    dwordUnits,
    byteUnits,
    bitUnits,
    otherUnits, // 0 bits: any other width
    unitWidthCount
};

extern const UnitWidth unitWidths[unitWidthCount];

inline const UnitWidth& widthOf(const RegisterType& type)
{
    const UnitWidth* width = unitWidths;
    while (width->bits != type.unitBits && width->bits != 0) {
        ++width;
    }
    return *width;
}

inline const UnitValues& valuesOf(const RegisterType& type)
{
    return *widthOf(type).values[type.values];
}

#endif
