// The register types as the loaded library reports them.
#ifndef DOV417_DRIVER_REGISTERS_H
#define DOV417_DRIVER_REGISTERS_H

#include <optional>
#include <string>
#include <vector>

#include "driver/library.h"

namespace dov417 {

enum class Width {
    bit,
    word,
    doubleWord,
    quadWord, // no register's own: two double words that a format takes for one value
    text      // nor this: all words of an address, two characters in each, are one value
};

constexpr int bitItems = -1; // of KEY_ADDRESS::bitFlag, for Width::bit

// Bits of a bit type, else words, that one value takes; of a text each word of it.
int unitsOf(Width width);

struct RegisterType {
    std::string name;    // "R_W"
    std::string format;  // "DDDD"
    std::string lowest;  // "0"
    std::string highest; // "3999"
    Width width;
    std::string access; // "read", "read and write", "write"
};

// All of them, in the library's order.
std::vector<RegisterType> registerTypes(const Library& library);
std::optional<RegisterType> registerType(const Library& library, const std::string& name);

// An address value in the type's own text form: 21 of "M_bit" is "1.5".
std::string addressText(const Library& library, const std::string& regName, int address);
// Those of so many addresses in this distance, in one question.
std::vector<std::string> addressTexts(const Library& library, const std::string& regName,
                                      int address, int count, int step);

// "M" of "M_bit", "T" of "T": the memory area that a type looks into.
std::string areaOf(const std::string& regName);

// The words that hold units `address` to `address + length - 1` of a type.
struct Words {
    int first;
    int count;
};
Words wordsOf(Width width, int address, int length);

} // namespace dov417

#endif
