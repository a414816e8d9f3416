#include "link/station_names.h"

namespace dov417 {

std::string nameOf(int station, const StationNames& names)
{
    const auto known = names.find(station);
    return known == names.end() ? std::string() : known->second;
}

std::string stationText(int station, const StationNames& names)
{
    const std::string text = "station " + std::to_string(station);
    const std::string name = nameOf(station, names);
    return name.empty() ? text : text + " (" + name + ")";
}

} // namespace dov417
