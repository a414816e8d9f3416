// What others wrote, on a terminal.
#ifndef DOV417_LINE_SHOWN_TEXT_H
#define DOV417_LINE_SHOWN_TEXT_H

#include <string>

namespace dov417 {

// On one line, and without a byte that a terminal takes for an order: it could move over what
// stands there and paint a value that no controller holds. A ? stands for each control character,
// a replacement character for what is no UTF-8.
std::string shownText(const std::string& text);

// Whether it would be shown as it is.
bool isShownAsItIs(const std::string& text);

} // namespace dov417

#endif
