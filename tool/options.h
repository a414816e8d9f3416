// Options that commands share: the line, and what is read or written there.
#ifndef DOV417_TOOL_OPTIONS_H
#define DOV417_TOOL_OPTIONS_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "driver/library.h"
#include "line/serial_format.h"
#include "text/values.h"
#include "tool/exit_code.h"

namespace CLI {
class App; // its header is long: only what makes options includes it
}

namespace dov417 {

// Worth bridging at 38400 baud for a controller that takes 5 ms to answer; and even, so that a
// piece of a long write never ends inside a 32-bit value.
const int usualMergeGap = 20;
const int usualTimeoutMs = 500;
const int usualRetries = 3;
const int longestMs = 600000; // of any option in milliseconds
// What controllers need to digest a broadcast.
const int usualBroadcastTurnaroundMs = 100;

struct LineOptions {
    std::string port; // --port
    std::string line; // --line, empty: the library's own
    int timeoutMs = usualTimeoutMs;
    int retries = usualRetries;
    std::optional<int> gap;          // --gap
    std::optional<int> turnaroundMs; // --turnaround
    std::string library;             // --library, empty: search
    std::string log;                 // --log, empty: none
    bool simulated = false;
    bool stats = false;

    int mergeGap() const
    {
        return gap.value_or(usualMergeGap);
    }
    std::chrono::milliseconds broadcastTurnaround() const
    {
        return std::chrono::milliseconds(turnaroundMs.value_or(usualBroadcastTurnaroundMs));
    }
};

// --port to --stats, on every command alike.
void addLineOptions(CLI::App& command, LineOptions& options);

// --line, or the library's own.
SerialFormat serialFormat(const Library& library, const LineOptions& options);

struct ItemOptions {
    std::vector<std::string> arguments; // addresses or tag names
    std::string tags;                   // --tags
    std::string format;                 // --format
    std::string wordOrder;              // --word-order
};

void addTagOption(CLI::App& command, std::string& tags);
// --tags, --format, --word-order.
void addItemOptions(CLI::App& command, ItemOptions& options);
// The same and ADDRESS...
void addAddressArguments(CLI::App& command, ItemOptions& options);

// A check of numbers: more than 0.
std::string positive(const std::string& text);

// --seconds for a timer, which takes 24 days at the most.
std::chrono::milliseconds timerSpan(double seconds);

// What the command line chose to do; main() runs it once everything is parsed. Returns an
// ExitCode.
using Action = std::function<int()>;

} // namespace dov417

#endif
