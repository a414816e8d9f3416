#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <optional>

#include "driver/areas.h"
#include "driver/default_line.h"
#include "line/failure.h"
#include "link/network_address.h"
#include "live/controller_process.h"
#include "live/line_setup.h"
#include "scan/scan_choices.h"
#include "tool/defaults.h"
#include "tool/json_output.h"
#include "tool/rs485_options.h"
#include "tool/scan_run.h"

namespace dov417 {

namespace {

// What a serial line, one behind a network and a gateway take to answer, or to say that nobody
// does.
constexpr int serialScanTimeoutMs = 50;
constexpr int networkScanTimeoutMs = 200;
constexpr int gatewayScanTimeoutMs = 1000;
constexpr std::chrono::milliseconds lastWaitOverNetwork(1000);

struct ScanOptions {
    LineSetup line; // port, simulated and log alone
    std::vector<std::string> lines;
    std::string stations = "1..247";
    std::optional<int> timeoutMs;
    bool asksAnyway = false;
    std::vector<std::string> registers;
    bool json = false;
    std::string library;
};

void setLines(ScanSettings& settings, const ScanOptions& options, const Library& library)
{
    for (const std::string& line : options.lines)
        settings.lines.emplace_back(parseRtuFormat(line));
    if (!settings.lines.empty())
        return;
    for (const SerialFormat& line : commonLines(parseRtuFormat(defaultLine(library))))
        settings.lines.emplace_back(line);
}

// At the settings that the far end has.
void setNetwork(ScanSettings& settings, const ScanOptions& options, const NetworkAddress& address)
{
    if (!options.lines.empty())
        throw UsageFailure(options.line.port +
                           ": --lines is for serial ports: the speed and parity of a line behind "
                           "a network are set at its server");
    if (options.line.direction.isWanted)
        throw UsageFailure(options.line.port + ": --rs485 is for serial ports of this machine");
    settings.lines = {std::nullopt};
    settings.isModbusTcp = address.isModbusTcp;
    settings.replyGap = std::chrono::milliseconds(defaultNetworkReplyGapMs);
    settings.lastWait = lastWaitOverNetwork;
    if (address.isModbusTcp) // which hands on nothing that others say
        settings.listening = Micros(0);
}

ScanSettings settingsFor(const ScanOptions& options, const Library& library)
{
    ScanSettings settings;
    const std::optional<NetworkAddress> address = parseNetworkAddress(options.line.port);
    if (address)
        setNetwork(settings, options, *address);
    else
        setLines(settings, options, library);
    settings.stations = parseStations(options.stations);
    const int timeoutMs = options.timeoutMs.value_or(settings.isModbusTcp ? gatewayScanTimeoutMs
                                                     : address            ? networkScanTimeoutMs
                                                                          : serialScanTimeoutMs);
    settings.timeout = std::chrono::milliseconds(timeoutMs + options.line.direction.delayBeforeMs);
    settings.asksAnyway = options.asksAnyway;
    return settings;
}

// Of a scan without hardware: two stations at the library's own settings.
std::unique_ptr<ControllerProcess> ownController(const Library& library)
{
    simulator::SimulationOptions options;
    options.stations = {1, 17};
    options.line = parseRtuFormat(defaultLine(library));
    options.ownSpeedOnly = true;
    options.baudLimit = true;
    return std::make_unique<ControllerProcess>(options);
}

int runScan(const ScanOptions& options)
{
    if (options.line.simulated == !options.line.port.empty())
        throw UsageFailure(options.line.simulated
                               ? "--port and --simulated exclude each other"
                               : "no line: name the port with --port PORT, or use --simulated "
                                 "for a controller of the tool's own");
    if (options.line.simulated && options.line.direction.isWanted)
        throw UsageFailure("--simulated: --rs485 is for serial ports of this machine");
    const Library library(options.library);
    ScanSettings settings = settingsFor(options, library);
    const std::vector<Area> areas = learnAreas(library);
    const std::vector<WordRun> runs = wordRuns(library, areas, options.registers);
    const std::set<int> wanted = stationsOf(runs);
    if (!wanted.empty())
        settings.stations.assign(wanted.begin(), wanted.end());
    ScanTeller teller(settings, options.json, options.line.log, areas, options.line.stationNames);
    const std::unique_ptr<ControllerProcess> controller =
        options.line.simulated ? ownController(library) : nullptr;
    ScanRun scan(controller ? controller->port() : options.line.port, options.line.direction,
                 teller);
    scan.findStations(settings, questionsFrom(areas), wanted);
    for (const WordRun& run : runs) {
        if (teller.hasFailed())
            break;
        if (teller.isInterrupted())
            teller.tellRest(run, 0);
        else if (teller.whereFound().count(run.station) == 0)
            teller.tellNotFound(run);
        else
            scan.findRanges(run);
    }
    return teller.finish() ? exitDone : exitFailed;
}

void addScanLineOptions(CLI::App& command, ScanOptions& options)
{
    command
        .add_option(
            "--port", options.line.port,
            "Serial port, as in /dev/ttyUSB0, see dov417 ports; tcp://HOST:PORT for one behind a "
            "device server, mbtcp://HOST[:502] for Modbus TCP; else DOV417_PORT or that of "
            "--project")
        ->option_text("PORT");
    addRs485Options(command, options.line.direction, std::string());
    command
        .add_option("--lines,--line", options.lines,
                    "Line settings to try, as in 9600,8,NONE,1 19200,8,EVEN,1; else the library's "
                    "own, then the common speeds and parities; a line behind a network has its own")
        ->option_text("LINE...")
        ->check([](const std::string& text) {
            try {
                parseRtuFormat(text);
            } catch (const UsageFailure& failure) {
                return std::string(failure.what());
            }
            return std::string();
        });
    command
        .add_option("--stations", options.stations,
                    "Stations to ask, as in 1..20, 1-20 or 1,5,10..20")
        ->option_text("LIST")
        ->capture_default_str();
    command
        .add_option("--timeout", options.timeoutMs,
                    "What each station is given to answer; one that takes longer is found all the "
                    "same, and called slow (" +
                        std::to_string(serialScanTimeoutMs) + "; over a network " +
                        std::to_string(networkScanTimeoutMs) + ", Modbus TCP " +
                        std::to_string(gatewayScanTimeoutMs) + ")")
        ->option_text("MS")
        ->check(CLI::Range(1, maxMs));
    command
        .add_option("--registers", options.registers,
                    "Which of these words their stations answer, found by halving, once the "
                    "stations are found: as in 1/R_W:0..3999 T:0..127")
        ->option_text("ADDRESS...")
        ->excludes("--stations");
    command.add_flag("--ask-anyway", options.asksAnyway,
                     "Ask although others speak on the line, and disturb them");
}

} // namespace

void addScanCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<ScanOptions>();
    CLI::App* command =
        app.add_subcommand("scan", "Who answers on a line, and at which speed and parity");
    addScanLineOptions(*command, *options);
    addJsonFlag(*command, chosen, options->json);
    command
        ->add_option("--library", options->library,
                     "The driver library; else it is looked for next to the tool, in its library "
                     "folder and where the linker looks")
        ->option_text("PATH")
        ->check([](const std::string& path) { return path.empty() ? "no path" : ""; });
    command
        ->add_option("--log", options->line.log,
                     "Record every frame with time, direction, bytes and meaning; see trace")
        ->option_text("FILE");
    command->add_flag("--simulated", options->line.simulated,
                      "An own controller with stations 1 and 17 instead of a port");
    addDefaults(*command, {&options->line, nullptr, true}, chosen);
    command->footer(
        "Listens first, and asks nothing where others speak. Each station is asked for one word; "
        "an exception is an answer too. Ctrl-C ends with what was found.\n"
        "Examples:\n"
        "  dov417 scan --simulated --stations 1..20 --lines 38400,8,EVEN,1\n"
        "  dov417 scan --simulated --stations 1,17 --lines 9600,8,NONE,1 38400,8,EVEN,1 --json\n"
        "  dov417 scan --simulated --lines 38400,8,EVEN,1 --registers 17/R_W:3800..3999\n"
        "On a real line, --port /dev/ttyUSB0 stands for --simulated.\n"
        "Exits with 1 if nobody answers, a station of the project does not, others began to speak "
        "before all were asked, or of some registers it is not known.");
    command->callback([options, &chosen]() { chosen = [options]() { return runScan(*options); }; });
}

} // namespace dov417
