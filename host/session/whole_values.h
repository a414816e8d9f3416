// Values of several words, which no two replies may hold halves of: between the two the controller
// may have changed it.
#ifndef DOV417_SESSION_WHOLE_VALUES_H
#define DOV417_SESSION_WHOLE_VALUES_H

#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "text/addresses.h"

namespace dov417 {

class WholeValues {
public:
    WholeValues() = default;
    explicit WholeValues(const std::vector<Address>& addresses);

    // Does a value begin before this word and go on in it?
    bool goOn(int station, const std::string& regName, int word) const;

private:
    std::set<std::tuple<int, std::string, int>> inside_; // station, area, word
};

} // namespace dov417

#endif
