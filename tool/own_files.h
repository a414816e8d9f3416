// The files that a command is to write replace what they hold: none may be one that it reads, nor
// one that it writes otherwise.
#ifndef DOV417_TOOL_OWN_FILES_H
#define DOV417_TOOL_OWN_FILES_H

#include <CLI/CLI.hpp>
#include <string>

namespace dov417 {

// Of this command, by its options; the tags and the project may come from elsewhere. Throws a
// UsageFailure that says what would be lost.
void requireOwnFiles(const CLI::App& command, const std::string& tags, const std::string& project);

} // namespace dov417

#endif
