#include "session/whole_values.h"

namespace dov417 {

WholeValues::WholeValues(const std::vector<Address>& addresses)
{
    for (const Address& address : addresses)
        for (int word = 1; word < address.length; ++word)
            if (word % unitsOf(address) != 0)
                inside_.insert({address.station, areaOf(address.regName), address.first + word});
}

bool WholeValues::goOn(int station, const std::string& regName, int word) const
{
    return inside_.count({station, areaOf(regName), word}) != 0;
}

} // namespace dov417
