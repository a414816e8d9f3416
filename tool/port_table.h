// The serial ports as a table.
#ifndef DOV417_TOOL_PORT_TABLE_H
#define DOV417_TOOL_PORT_TABLE_H

#include <string>
#include <vector>

#include "link/port_list.h"

namespace dov417 {

// One line a port below a heading.
std::vector<std::string> portTable(const PortList& list);
// What the table leaves open: what to do where a port is refused, and who may be hidden.
std::vector<std::string> portRemarks(const PortList& list);

} // namespace dov417

#endif
