// Where the controller's areas lie on the line, learned from the driver.
#ifndef DOV417_DRIVER_AREAS_H
#define DOV417_DRIVER_AREAS_H

#include <vector>

#include "driver/library.h"
#include "line/areas.h"

namespace dov417 {

// One read of each word type is framed, and the frame tells which function reads the area and from
// which number on. Resets the driver; throws a std::logic_error while a session has it.
std::vector<Area> learnAreas(const Library& library);

} // namespace dov417

#endif
