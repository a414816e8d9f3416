// "1 register", "2 registers".
#ifndef DOV417_LINE_COUNTED_H
#define DOV417_LINE_COUNTED_H

#include <string>

namespace dov417 {

template <typename Number>
std::string counted(Number count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

} // namespace dov417

#endif
