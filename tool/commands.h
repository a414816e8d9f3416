// The commands, one file each. Each adds itself to the command line; the action that was chosen is
// run after everything was parsed.
#ifndef DOV417_TOOL_COMMANDS_H
#define DOV417_TOOL_COMMANDS_H

#include "tool/options.h"

namespace dov417 {

class LineSource;

void addPortsCommand(CLI::App& app, Action& chosen);
void addScanCommand(CLI::App& app, Action& chosen);
void addInfoCommand(CLI::App& app, Action& chosen);
void addCheckCommand(CLI::App& app, Action& chosen);
void addSeriesCommand(CLI::App& app, Action& chosen);
void addPlanCommand(CLI::App& app, Action& chosen);
void addTraceCommand(CLI::App& app, Action& chosen);
void addListenCommand(CLI::App& app, Action& chosen);
void addRequestCommand(CLI::App& app, Action& chosen);
void addSimulateCommand(CLI::App& app, Action& chosen);
void addDemoCommand(CLI::App& app, Action& chosen);
void addShellCommand(CLI::App& app, Action& chosen);

// Those that a shell has too, on a line that it shares with them; else each opens its own.
void addWatchCommand(CLI::App& app, Action& chosen, LineSource* shared = nullptr);
void addReadCommand(CLI::App& app, Action& chosen, LineSource* shared = nullptr);
void addWriteCommand(CLI::App& app, Action& chosen, LineSource* shared = nullptr);
void addRecipeCommand(CLI::App& app, Action& chosen, LineSource* shared = nullptr);

} // namespace dov417

#endif
