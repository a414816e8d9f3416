// What a scan goes through, where nobody says otherwise and as people write it.
#ifndef DOV417_SCAN_SCAN_CHOICES_H
#define DOV417_SCAN_SCAN_CHOICES_H

#include <string>
#include <vector>

#include "line/serial_format.h"

namespace dov417 {

// This line, then the common speeds and parities, each once. One stop bit: nobody who listens looks
// at a second one.
std::vector<SerialFormat> commonLines(const SerialFormat& own);

// "1..247", "3", "1,2,10..20": from 1 to 247, each once, as they are written. Throws a
// UsageFailure.
std::vector<int> parseStations(const std::string& text);

} // namespace dov417

#endif
