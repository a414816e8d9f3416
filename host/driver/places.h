// Where each register type lies for any other Modbus master, learned from the driver's frames.
#ifndef DOV417_DRIVER_PLACES_H
#define DOV417_DRIVER_PLACES_H

#include <set>
#include <string>
#include <vector>

#include "driver/library.h"

namespace dov417 {

struct RegisterPlace {
    std::string regName;
    bool coils = false;   // else registers
    int first = 0;        // coil or register of address 0
    int count = 0;        // of all addresses
    int readFunction = 0; // 0: the driver frames none
    std::set<int> writeFunctions;
};

// One read of each type is framed, a write of one unit and, but for bits, of two words. Resets the
// driver; throws a std::logic_error while a session has it.
std::vector<RegisterPlace> learnPlaces(const Library& library);

// The 1-based number with its kind in front, as many masters and manuals have it: "00001" for coil
// 0, "41281" for register 1280; with six digits where the last one asks for that: "400001".
std::string prefixedNumber(bool coils, int number, int last);

} // namespace dov417

#endif
