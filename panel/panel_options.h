// The command line of dov417-panel.
#ifndef DOV417_PANEL_PANEL_OPTIONS_H
#define DOV417_PANEL_PANEL_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "live/line_setup.h"
#include "session/items.h"

namespace CLI {
class App;
}

namespace dov417 {

constexpr int usageCode = 2; // what the program ends with where the options are wrong

struct PanelOptions {
    LineSetup line;
    std::string library; // empty: search
    ItemSource source;
    std::vector<std::string> addresses;
    std::string project;  // file, with its line and tags; addresses are watched besides
    std::string pictures; // folder: of each page, then the program ends
};

// Texts and checks of all of them.
void makePanelOptions(CLI::App& app, PanelOptions& options);

// See writeManualPages().
std::optional<int> writePanelManual(int argc, char** argv);

// Nothing where the options said all that was to be said, or were wrong: it has been printed then,
// and `code` is what the program ends with.
std::optional<PanelOptions> parsePanelOptions(int argc, const char* const* argv, int& code);

} // namespace dov417

#endif
