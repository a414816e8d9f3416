// Manual pages of the commands, from the texts of their help.
#ifndef DOV417_LIVE_MANUAL_PAGES_H
#define DOV417_LIVE_MANUAL_PAGES_H

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace dov417 {

// The page of one command, and of those beneath it: name is "dov417-recipe-upload".
std::string manualPage(const CLI::App& command, const std::string& name);

// What the build calls, and nobody else: `dov417 --write-manual-pages FOLDER` writes all of them.
// Nothing for any other command line; else the exit code.
std::optional<int> writeManualPages(const CLI::App& app, int argc, char** argv);

} // namespace dov417

#endif
