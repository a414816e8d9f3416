// Values as people write them <-> bytes as the library takes and gives them: one byte a bit, two
// bytes a word, low byte first, two words a 32-bit value.
#ifndef DOV417_TEXT_VALUES_H
#define DOV417_TEXT_VALUES_H

#include <string>
#include <vector>

#include "text/formats.h"

namespace dov417 {

// Bytes that `values` values take.
int byteCount(Width width, int values);

// One text a value, without its unit, from bytes as intf_getData() gives them. What the format
// cannot show is shown as its bits: a BCD value with a digit above 9 as "0x12AF?".
std::vector<std::string> valueTexts(Width width, const Format& format, const unsigned char* bytes,
                                    int values);

// One value with all its decimals; NaN where it is no number.
double exactNumber(Width width, Format format, const unsigned char* bytes);

// Throws a UsageFailure unless there are as many values as are wanted.
void requireCount(int wanted, const std::vector<std::string>& values);

// Bytes for intf_setData(). Throws a UsageFailure with the text and the range that it misses, and
// where a scaled value would not read back as it was written.
std::vector<unsigned char> valueBytes(Width width, const Format& format,
                                      const std::vector<std::string>& texts);

} // namespace dov417

#endif
