#include "text/wildcards.h"

#include <cstddef>

namespace dov417 {

bool isWildcard(const std::string& text)
{
    return text.find_first_of("*?") != std::string::npos;
}

// The last * takes as many characters as it needs to.
bool isMatch(const std::string& wildcard, const std::string& name)
{
    std::size_t at = 0;
    std::size_t star = std::string::npos;
    std::size_t afterStar = 0;
    for (std::size_t i = 0; i < name.size();) {
        if (at < wildcard.size() && wildcard[at] == '*') {
            star = at++;
            afterStar = i;
        } else if (at < wildcard.size() && (wildcard[at] == '?' || wildcard[at] == name[i])) {
            ++at;
            ++i;
        } else if (star != std::string::npos) {
            at = star + 1;
            i = ++afterStar;
        } else {
            return false;
        }
    }
    return wildcard.find_first_not_of('*', at) == std::string::npos;
}

} // namespace dov417
