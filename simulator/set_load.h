// Values by name, from a text ADDRESS=VALUE or from a file, and into one. Addresses are written as
// address_range.h says.
//
// Values are decimal (also negative), hexadecimal with 0x, 0 or 1 for bits; an R_D with a point or
// an exponent is an IEEE 754 single (12.5, 1e3). One value for a whole range fills it; else there
// must be one for each item: R_W:100..102=7 and R_W:100..102=1,2,3. A list without LAST takes the
// items from FIRST on: R_W:100=1,2,3.
//
// A file is JSON: station, register, first address, then a value or a list of values from there on.
//
//     { "1": { "R_W": { "100": [1, 2, 3], "200": 7 }, "M_bit": { "1.5": 1 } } }
//
// Values are numbers, true and false for bits, or texts as above ("0x1F"). A dump has the word
// registers (I_W Q_W M_W R_W T C) of every station, in runs without a zero. Loading touches nothing
// that the file does not name; an assignment or a file with a mistake changes nothing.
#ifndef DOV417_SIMULATOR_SET_LOAD_H
#define DOV417_SIMULATOR_SET_LOAD_H

#include <string>

#include "simulator/address_range.h"
#include "simulator/memory.h"

namespace dov417::simulator {

// Setting and loading throw a UsageFailure, with the memory unchanged, when something is wrong;
// dumping a Failure. setValues() gives the addresses that were set.
AddressRange setValues(Memory& memory, const std::string& assignment);
void loadValues(Memory& memory, const std::string& fileName);
void dumpValues(const Memory& memory, const std::string& fileName);

} // namespace dov417::simulator

#endif
