// What a station is called, on every page alike.
#ifndef DOV417_PANEL_STATION_WORDS_H
#define DOV417_PANEL_STATION_WORDS_H

#include <QString>

#include "link/station_names.h"

namespace dov417 {

// "3 filler"; without a name "station 3". A long name is cut short.
QString stationText(const StationNames& names, int station);

} // namespace dov417

#endif
