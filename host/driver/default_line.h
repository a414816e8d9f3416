// The line settings that the library reports as its own.
#ifndef DOV417_DRIVER_DEFAULT_LINE_H
#define DOV417_DRIVER_DEFAULT_LINE_H

#include <string>

#include "driver/library.h"

namespace dov417 {

// "38400,8,EVEN,1"
std::string defaultLine(const Library& library);

} // namespace dov417

#endif
