// What somebody meant who wrote a name that there is not.
#ifndef DOV417_TEXT_NEAREST_NAME_H
#define DOV417_TEXT_NEAREST_NAME_H

#include <array>
#include <cstddef>
#include <string>

namespace dov417 {

// The name of which the text is a misspelling: in any case and with blanks around it, one letter
// is missing, too many, another, or has changed places with the next; two of those in eight
// letters or more. Null where it is none.
const char* misspelt(const std::string& text, const char* const* names, std::size_t count);
template <std::size_t Count>
const char* misspelt(const std::string& text, const std::array<const char*, Count>& names)
{
    return misspelt(text, names.data(), Count);
}

} // namespace dov417

#endif
