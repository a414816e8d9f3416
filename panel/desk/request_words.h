// What the driver calls its requests, as addresses are written everywhere else in the window.
#ifndef DOV417_PANEL_REQUEST_WORDS_H
#define DOV417_PANEL_REQUEST_WORDS_H

#include <QString>
#include <string>

namespace dov417 {

// "read  1#R_W32(2)" is "read 1/R_W:32..33", alone or within a sentence.
QString withAddresses(const std::string& text);

} // namespace dov417

#endif
