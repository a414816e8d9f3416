// Options that commands share: the line, and what is read or written there.
#ifndef DOV417_TOOL_OPTIONS_H
#define DOV417_TOOL_OPTIONS_H

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "live/line_setup.h"
#include "session/items.h"
#include "tool/exit_code.h"

namespace CLI {
class App; // its header is long: only what makes options includes it
}

namespace dov417 {

struct LineOptions : LineSetup {
    std::string library; // --library, empty: search
    bool stats = false;  // --stats
};

// --port to --stats, on every command that opens a line.
void addLineOptions(CLI::App& command, LineOptions& options);
// Of these the ones that say what would be sent: --line, --gap, --max-registers, --library.
void addPlanningOptions(CLI::App& command, LineOptions& options);
// --library alone, for what only asks the library.
void addLibraryOption(CLI::App& command, LineOptions& options);

// Addresses or tag names, and where these are looked up.
struct ItemOptions {
    std::vector<std::string> arguments;
    ItemSource source;
};

// Tells it on the error stream, once however often the file is read: for each line of a shell.
void remarkOnce(const std::string& sentence);

void addTagOption(CLI::App& command, std::string& tags);
// --tags, --format, --word-order.
void addItemOptions(CLI::App& command, ItemOptions& options);
// The same and ADDRESS...
void addAddressArguments(CLI::App& command, ItemOptions& options);

// A check of numbers: more than 0.
std::string positive(const std::string& text);

// --seconds for a timer, which takes at most 24 days.
std::chrono::milliseconds timerSpan(double seconds);

// A setting that is not the command line's own.
struct Origin {
    std::string option; // without its dashes
    std::string text;
    std::string from; // a variable of the environment, or a file
};

// What the command line chose to do; main() runs it once everything is parsed. Returns an
// ExitCode.
struct Action : std::function<int()> {
    using std::function<int()>::operator=;

    std::vector<Origin> origins;
    std::string json; // the command whose output is JSON; else empty
};

} // namespace dov417

#endif
