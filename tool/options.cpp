#include "tool/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <set>

#include "driver/default_line.h"
#include "line/failure.h"
#include "line/shown_text.h"
#include "live/line_members.h"
#include "tool/rs485_options.h"

namespace dov417 {

namespace {

const char* const lineGroup = "Line";
const char* const valueGroup = "Values";
const double maxSeconds = 2e6;

CLI::Range rangeOf(const char* name)
{
    const LineMember& member = lineMember(name);
    return {static_cast<int>(member.min), static_cast<int>(member.max)};
}

// Parts of the line, as programs that poll have them for options.
void addLineParts(CLI::App& command, LineOptions& options)
{
    struct Part {
        const char* names;
        const char* description;
        const char* text;
        std::string LineSetup::*field;
    };
    const Part parts[] = {
        {"-b,--baud", "Its baud rate alone", "N", &LineSetup::baud},
        {"-d,--data-bits", "Its data bits: 8", "N", &LineSetup::dataBits},
        {"-P,--parity", "Its parity alone: none, even or odd", "PARITY", &LineSetup::parity},
        {"-s,--stop-bits", "Its stop bits alone: 1 or 2", "N", &LineSetup::stopBits}};
    for (const Part& part : parts)
        command.add_option(part.names, options.*part.field, part.description)
            ->option_text(part.text)
            ->group(lineGroup)
            ->excludes("--line");
}

} // namespace

void addLibraryOption(CLI::App& command, LineOptions& options)
{
    command
        .add_option("--library", options.library,
                    "The driver library; else it is looked for next to the tool, in its library "
                    "folder and where the linker looks")
        ->option_text("PATH")
        ->group(lineGroup)
        ->check([](const std::string& path) { return path.empty() ? "no path" : ""; });
}

void addPlanningOptions(CLI::App& command, LineOptions& options)
{
    command
        .add_option("--line", options.line,
                    "Baud rate, data bits, parity, stop bits, as in 38400,8,EVEN,1; else "
                    "DOV417_LINE, that of --project or the library's own")
        ->option_text("LINE")
        ->group(lineGroup)
        ->check([](const std::string& text) {
            try {
                parseRtuFormat(text);
            } catch (const UsageFailure& failure) {
                return std::string(failure.what());
            }
            return std::string();
        });
    addLineParts(command, options);
    command
        .add_option("--gap", options.gap,
                    "Maximum hole in words that one read bridges (" +
                        std::to_string(defaultMergeGap) +
                        "). It is also the maximum length of a piece of a write, so one that "
                        "would cut a 32-bit value in two is refused")
        ->option_text("N")
        ->group(lineGroup)
        ->check(rangeOf("gap"));
    command
        .add_option("--max-registers", options.maxRegisters,
                    "Registers (or 16 coils for each) that controllers take in one request: a "
                    "longer one goes out in parts. Else in parts where a controller refuses it "
                    "whole; 128: never")
        ->option_text("N")
        ->group(lineGroup)
        ->check(rangeOf("max-registers"));
    addLibraryOption(command, options);
}

void addLineOptions(CLI::App& command, LineOptions& options)
{
    command
        .add_option(
            "--port", options.port,
            "Serial port, as in /dev/ttyUSB0; over a network the serial line of a device "
            "server, as in tcp://HOST:4001, or Modbus TCP, as in mbtcp://HOST. Else DOV417_PORT "
            "or that of --project")
        ->option_text("PORT")
        ->group(lineGroup);
    addPlanningOptions(command, options);
    addRs485Options(command, options.direction, lineGroup);
    command
        .add_option("--timeout", options.timeoutMs,
                    "How long to wait for a reply, whatever a station takes; else " +
                        std::to_string(defaultTimeoutMs) + ", and longer where it takes longer")
        ->option_text("MS")
        ->group(lineGroup)
        ->check(rangeOf("timeout"));
    command
        .add_flag_callback(
            "--no-function-8", [&options]() { options.mayMark = false; },
            "Never send the diagnostics echo that tells late replies from the one awaited")
        ->group(lineGroup);
    command
        .add_option("--retries", options.retries,
                    "Bad or missing replies in a row until a request is given up (" +
                        std::to_string(defaultRetries) + ")")
        ->option_text("N")
        ->group(lineGroup)
        ->check(rangeOf("retries"));
    command
        .add_option("--probe", options.maxProbeMs,
                    "Maximum pause before a silent station is asked again (" +
                        std::to_string(defaultMaxProbeMs) +
                        "); the first is a second, each twice as long as the one before")
        ->option_text("MS")
        ->group(lineGroup)
        ->check(rangeOf("probe"));
    command
        .add_option("--turnaround", options.turnaroundMs,
                    "What controllers need to digest a broadcast (" +
                        std::to_string(defaultTurnaroundMs) + ")")
        ->option_text("MS")
        ->group(lineGroup)
        ->check(rangeOf("turnaround"));
    command
        .add_option("--timeout-min", options.timeoutMinMs,
                    "Without --timeout: what a station is given at least, however quick it is (" +
                        std::to_string(defaultTimeoutMs) + ")")
        ->option_text("MS")
        ->group(lineGroup)
        ->check(rangeOf("timeout-min"))
        ->excludes("--timeout");
    command
        .add_option("--timeout-max", options.timeoutMaxMs,
                    "Without --timeout: what a station is given at most, however slow it is (" +
                        std::to_string(defaultMaxTimeoutMs) + ")")
        ->option_text("MS")
        ->group(lineGroup)
        ->check(rangeOf("timeout-max"))
        ->excludes("--timeout");
    command
        .add_option("--reply-gap", options.replyGapMs,
                    "Silence after which a reply that has begun is taken to have ended; longer "
                    "once one went on after that (" +
                        std::to_string(defaultReplyGapMs) + "; over a network " +
                        std::to_string(defaultNetworkReplyGapMs) + ")")
        ->option_text("MS")
        ->group(lineGroup)
        ->check(rangeOf("reply-gap"));
    command
        .add_option("--horizon", options.horizonSeconds,
                    "A station begins to answer within so many seconds, or not at all (30)")
        ->option_text("SECONDS")
        ->group(lineGroup)
        ->check(CLI::Range(lineMember("horizon").min, lineMember("horizon").max));
    command
        .add_option("--log", options.log,
                    "Record every frame with time, direction, bytes and meaning; see trace")
        ->option_text("FILE")
        ->group(lineGroup);
    command
        .add_flag("--simulated", options.simulated,
                  "An own controller on a pseudo-terminal instead of a port")
        ->group(lineGroup);
    command.add_flag("--stats", options.stats, "Print the line's counters at the end")
        ->group(lineGroup);
}

void remarkOnce(const std::string& sentence)
{
    static std::set<std::string> told;
    if (told.insert(sentence).second)
        std::fprintf(stderr, "dov417: %s\n", shownText(sentence).c_str());
}

void addTagOption(CLI::App& command, std::string& tags)
{
    command
        .add_option(
            "--tags", tags,
            "Tag file: CSV with the header name,station,register,address,count,format,"
            "comment,scale,offset,unit,decimals,min,max, of which name, register and "
            "address have to be there; or a project file with tags. Tag names then stand for "
            "addresses. Else DOV417_TAGS or those of --project")
        ->option_text("FILE")
        ->group(valueGroup);
}

void addItemOptions(CLI::App& command, ItemOptions& options)
{
    addTagOption(command, options.source.tags);
    options.source.remark = remarkOnce;
    command
        .add_option("--format", options.source.format,
                    "How values are written: unsigned, signed, hex, bcd, binary, bool, float for "
                    "32 bits, int64, uint64 or double for two double words, with :low-first "
                    "or :high-first appended for the word order; text for the characters of a "
                    "range of words, with :low-first where a word's low byte comes first; wins "
                    "over a tag's own. What is "
                    "read and does not fit it keeps its own. R_D:600@float is one address's")
        ->option_text("FORMAT")
        ->group(valueGroup);
    command
        .add_option("--word-order", options.source.wordOrder,
                    "Which word of a longer value has the lowest address: low-first (the driver's "
                    "own) or high-first")
        ->option_text("ORDER")
        ->group(valueGroup)
        ->check(CLI::IsMember(wordOrderNames()));
    command
        .add_flag_callback(
            "-B", [&options]() { options.source.wordOrder = "high-first"; },
            "The same as --word-order high-first")
        ->group(valueGroup)
        ->excludes("--word-order");
}

void addAddressArguments(CLI::App& command, ItemOptions& options)
{
    command
        .add_option("address", options.arguments,
                    "[STATION/]REGISTER:FIRST[..LAST], as in R_W:100, R_W:100..107, "
                    "M_bit:1.0..1.15, 2/R_D:10..13, T:5; or tag names, block[2] for one of "
                    "several values; each with @FORMAT if it is to have its own. With --tags "
                    "alone: every tag")
        ->option_text("ADDRESS...");
    addItemOptions(command, options);
}

std::string positive(const std::string& text)
{
    return CLI::PositiveNumber(text).empty() ? "" : text + " is not more than 0";
}

std::chrono::milliseconds timerSpan(double seconds)
{
    const std::chrono::duration<double> span(std::min(seconds, maxSeconds));
    return std::chrono::duration_cast<std::chrono::milliseconds>(span);
}

} // namespace dov417
