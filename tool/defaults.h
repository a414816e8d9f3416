// Settings that the command line leaves open, from elsewhere: it wins over the environment, and
// that over a project file.
#ifndef DOV417_TOOL_DEFAULTS_H
#define DOV417_TOOL_DEFAULTS_H

#include <string>
#include <vector>

#include "tool/options.h"

namespace dov417 {

// What the command has of these, or null.
struct DefaultTargets {
    LineSetup* line = nullptr;
    std::string* tags = nullptr;
    bool isPortAlone = false; // of the line
};

// Adds --project, once the command has its other options. The targets are filled in when the
// command line has been parsed, `chosen` learns what came from where. Both have to live until then.
void addDefaults(CLI::App& command, const DefaultTargets& targets, Action& chosen);

// The message, and where the settings that it names came from.
std::string withOrigins(const std::string& message, const std::vector<Origin>& origins);

} // namespace dov417

#endif
