// --rs485 and its delays, on every command that sends.
#ifndef DOV417_TOOL_RS485_OPTIONS_H
#define DOV417_TOOL_RS485_OPTIONS_H

#include <string>

#include "link/rs485.h"

namespace CLI {
class App;
}

namespace dov417 {

// group: of the help; empty for the common one.
void addRs485Options(CLI::App& command, Rs485& options, const std::string& group);

} // namespace dov417

#endif
