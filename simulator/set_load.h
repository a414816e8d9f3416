// Values by name: --set ADDRESS=VALUE, --load FILE, --dump FILE, and ranges such as --hold takes.
//
// An address is [STATION/]REGISTER:FIRST[..LAST], with FIRST and LAST in the register's own form:
//
//     R_W:100    R_W:100..107    M_bit:1.0..1.15    2/R_D:10..13    T:5
//
// Station 1 where none is given. Registers are I_bit Q_bit M_bit R_bit I_W Q_W M_W R_W R_D T C; an
// R_D range names its words, two a value, so R_D:10 is words 10 and 11 and R_D:10..13 two values.
//
// Values are decimal (also negative), hexadecimal with 0x, 0 or 1 for bits; an R_D with a point or
// an exponent is an IEEE 754 single (12.5, 1e3). One value for a whole range fills it; else there
// must be one for each item: R_W:100..102=7 and R_W:100..102=1,2,3.
//
// A file is JSON: station, register, first address, then a value or a list of values from there on.
//
//     { "1": { "R_W": { "100": [1, 2, 3], "200": 7 }, "M_bit": { "1.5": 1 } } }
//
// A dump has the word registers (I_W Q_W M_W R_W T C) of every station, runs without a zero.
// Loading touches nothing that the file does not name; a file with a mistake changes nothing.
#ifndef DOV417_SIMULATOR_SET_LOAD_H
#define DOV417_SIMULATOR_SET_LOAD_H

#include <QString>
#include <optional>

#include "memory.h"

namespace simulator {

// Width of one item of a register type.
enum class Width {
    bit,
    word,
    doubleWord
};

struct AddressRange {
    int station = 1;
    QString registerName; // "M_bit"
    Area area = Area::R;
    Width width = Width::word;
    int first = 0; // word * 16 + bit for bits, else a word
    int last = 0;  // inclusive; for double words the last word of the last value

    int firstWord() const;
    int lastWord() const;
    int itemCount() const;
};

// Nothing, and a sentence in `error`, when the text names no addresses.
std::optional<AddressRange> parseAddressRange(const QString& text, QString* error);

// All false with a sentence in `error` and the memory unchanged when something is wrong.
bool setValues(Memory& memory, const QString& assignment, QString* error);
bool loadValues(Memory& memory, const QString& fileName, QString* error);
bool dumpValues(const Memory& memory, const QString& fileName, QString* error);

} // namespace simulator

#endif
