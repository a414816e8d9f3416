// Manual pages of a program or of its commands, from the texts of their help.
#ifndef DOV417_LIVE_MANUAL_PAGES_H
#define DOV417_LIVE_MANUAL_PAGES_H

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace dov417 {

// The page of one command: name is "dov417-recipe-upload"; or of a program of this name.
std::string manualPage(const CLI::App& command, const std::string& name);

// What the build calls, and nobody else: `dov417 --write-manual-pages FOLDER` writes the pages of
// its commands, a program without commands its own. Nothing for any other command line; else the
// exit code.
std::optional<int> writeManualPages(const CLI::App& app, int argc, char** argv);

} // namespace dov417

#endif
