// A value as the number that its bits are, low word first, and its text.
#ifndef DOV417_TEXT_RAW_VALUES_H
#define DOV417_TEXT_RAW_VALUES_H

#include <cstdint>
#include <string>

#include "text/formats.h"

namespace dov417 {

constexpr double maxWhole = 9007199254740992.0; // up to here a double holds every whole number

constexpr int bitsPerDigit = 4; // hexadecimal and BCD

int bitsOf(Width width);
int bytesOf(Width width);
std::uint64_t allOnes(Width width);

bool isSigned(Notation notation);
bool isFloating(Notation notation);

// The words of a value in the opposite order; harmless to do twice.
std::uint64_t inOrder(std::uint64_t value, Width width, WordOrder order);
std::uint64_t fromBytes(const unsigned char* bytes, Width width);

// Of a float or a double.
std::uint64_t rawOf(double number, Notation notation);

std::string rawText(std::uint64_t value, Width width, const Format& format);

} // namespace dov417

#endif
