// The command line of dov417-panel.
#ifndef DOV417_PANEL_PANEL_OPTIONS_H
#define DOV417_PANEL_PANEL_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "live/line_setup.h"
#include "session/items.h"

namespace dov417 {

struct PanelOptions {
    LineSetup line;
    std::string library; // empty: search
    ItemSource source;
    std::vector<std::string> addresses;
    std::string project;  // file; instead of a line and tags
    std::string pictures; // folder: of each page, then the program ends
};

// Nothing where the options said all that was to be said, or were wrong: it has been printed then,
// and `code` is what the program ends with.
std::optional<PanelOptions> parsePanelOptions(int argc, const char* const* argv, int& code);

} // namespace dov417

#endif
