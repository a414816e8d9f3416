// Texts in a controller's words, two characters in each, <-> texts as people read and type them.
#ifndef DOV417_TEXT_CHARACTERS_H
#define DOV417_TEXT_CHARACTERS_H

#include <string>
#include <vector>

#include "text/formats.h"

namespace dov417 {

// In quotes, without the zeros behind its last character. What is no printable ASCII character is
// shown as its byte, \x07; a quote as \" and a backslash as \\.
std::string charactersText(const unsigned char* bytes, int words, WordOrder byteOrder);

// The same way back, with or without the quotes around it; zeros fill what is left of the words.
// Throws a UsageFailure where it is too long, or would not read back the same.
std::vector<unsigned char> characterBytes(const std::string& text, int words, WordOrder byteOrder);

// A value's text without the quotes that a text has around it.
std::string withoutQuotes(const std::string& valueText);

} // namespace dov417

#endif
