// The panel, but for main().
#ifndef DOV417_PANEL_PROGRAM_H
#define DOV417_PANEL_PROGRAM_H

namespace dov417 {

// Returns what the process ends with.
int runPanel(int argc, char** argv);

} // namespace dov417

#endif
