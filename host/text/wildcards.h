// Texts that stand for many names: * for any characters, ? for one.
#ifndef DOV417_TEXT_WILDCARDS_H
#define DOV417_TEXT_WILDCARDS_H

#include <string>

namespace dov417 {

bool isWildcard(const std::string& text);
bool isMatch(const std::string& wildcard, const std::string& name);

} // namespace dov417

#endif
