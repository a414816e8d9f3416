// The values of an address <-> texts, with the bytes as the library takes and gives them.
#ifndef DOV417_TEXT_ADDRESS_VALUES_H
#define DOV417_TEXT_ADDRESS_VALUES_H

#include <string>
#include <vector>

#include "text/addresses.h"
#include "text/values.h"

namespace dov417 {

// Bytes of all its values.
int byteCount(const Address& address);

// As values.h has them.
std::vector<std::string> valueTexts(const Address& address, const Format& format,
                                    const unsigned char* bytes);
// Throws a UsageFailure, also where there are more or fewer texts than values.
std::vector<unsigned char> valueBytes(const Address& address, const Format& format,
                                      const std::vector<std::string>& texts);

// One of its values, counted from 0.
Address valueOf(const Address& address, int index);

// As a text if a format asks for one and it is words that one may lie in; else as it is.
Address asText(const Address& address, const FormatChoice& format);

} // namespace dov417

#endif
