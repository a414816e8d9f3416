// What people call the stations of their line.
#ifndef DOV417_LINK_STATION_NAMES_H
#define DOV417_LINK_STATION_NAMES_H

#include <map>
#include <string>

namespace dov417 {

// By number; a name may be empty.
using StationNames = std::map<int, std::string>;

// Empty where it has none.
std::string nameOf(int station, const StationNames& names);
// "station 17 (oven)", "station 3" where it has no name.
std::string stationText(int station, const StationNames& names);

} // namespace dov417

#endif
