// The controller's addresses as people write them: [STATION/]REGISTER:FIRST[..LAST], with FIRST
// and LAST in the register's own form:
//
//     R_W:100    R_W:100..107    M_bit:1.0..1.15    2/R_D:10..13    T:5
//
// Station 1 where none is given. Registers are I_bit Q_bit M_bit R_bit I_W Q_W M_W R_W R_D T C; an
// R_D range names its words, two a value, so R_D:10 is words 10 and 11 and R_D:10..13 two values.
#ifndef DOV417_SIMULATOR_ADDRESS_RANGE_H
#define DOV417_SIMULATOR_ADDRESS_RANGE_H

#include <string>

#include "simulator/memory.h"

namespace dov417::simulator {

// Width of one item of a register type.
enum class Width {
    bit,
    word,
    doubleWord
};

struct AddressRange {
    int station = 1;
    std::string registerName; // "M_bit"
    Area area = Area::R;
    Width width = Width::word;
    int first = 0; // word * 16 + bit for bits, else a word
    int last = 0;  // inclusive; for double words the last word of the last value

    int firstWord() const;
    int lastWord() const;
    int itemCount() const;
};

// Throws a Failure when the text names no addresses of this controller.
AddressRange parseAddressRange(const std::string& text);

} // namespace dov417::simulator

#endif
