#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "line/failure.h"
#include "live/run_simulation.h"
#include "tool/json_output.h"

namespace dov417 {

namespace {

struct SimulateOptions {
    simulator::SimulationOptions simulation;
    std::string line;
    bool independentOutputs = false;
    bool json = false;
};

simulator::SimulationOptions toSimulation(const SimulateOptions& options)
{
    simulator::SimulationOptions simulation = options.simulation;
    if (!options.line.empty())
        simulation.line = parseSerialFormat(options.line);
    // Who names no line wants no master kept out by its speed.
    simulation.ownSpeedOnly = !options.line.empty();
    simulation.followInputs = !options.independentOutputs;
    return simulation;
}

int runSimulate(const SimulateOptions& options)
{
    const simulator::SimulationOptions simulation = toSimulation(options);
    if (!options.json) {
        runSimulation(simulation);
        return exitDone;
    }
    if (simulation.logFile == "-")
        throw UsageFailure("--json and --log - both want the standard output");
    runSimulation(simulation, {[](const simulator::Simulation& served) {
                                   sayJson({{"port", served.portName()}});
                               },
                               [](const std::string& report) {
                                   sayJson({{"report", report}});
                               }});
    return exitDone;
}

} // namespace

void addSimulateCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<SimulateOptions>();
    simulator::SimulationOptions& simulation = options->simulation;
    CLI::App* command = app.add_subcommand(
        "simulate", "The simulated controller on a pseudo-terminal or a serial port");
    command->add_option("--port", simulation.device, "Serial port; else a pseudo-terminal")
        ->option_text("DEVICE");
    command->add_option("--link", simulation.link, "Symbolic link to the pseudo-terminal")
        ->option_text("PATH");
    command->add_option("--stations", simulation.stations, "Stations that answer (1)")
        ->option_text("N,N...")
        ->delimiter(',')
        ->check(CLI::Range(1, 247));
    command
        ->add_option("--line", options->line,
                     "Baud rate, data bits, parity, stop bits (38400,8,EVEN,1). On a "
                     "pseudo-terminal, what comes at another speed than the one named here is "
                     "garbled, as on a wire; else any speed is taken")
        ->option_text("LINE");
    command->add_flag("--baud-limit", simulation.baudLimit,
                      "Bytes take the time on a pseudo-terminal that they take on the wire");
    command
        ->add_option("--response-time", simulation.responseTimeMs,
                     "What the controller takes before it answers (0)")
        ->option_text("MS")
        ->check(CLI::Range(0, maxMs));
    command->add_flag("--strict", simulation.strict,
                      "Takes no more than 125 registers or 2000 coils in one request");
    command
        ->add_option("--fault", simulation.faults,
                     "A fault and how often: KIND[:AMOUNT]=N% or =every:N, with KIND one of "
                     "silence, late, flip, truncate, extra, noise, station, function, exception, "
                     "echo, slow, any. May be given several times")
        ->option_text("RULE");
    command->add_option("--seed", simulation.seed, "Of faults and values that go by chance (1)")
        ->option_text("N");
    command->add_flag("--still", simulation.frozen, "No value changes by itself");
    command->add_flag("--independent-outputs", options->independentOutputs, "Q does not follow I");
    command->add_option("--hold", simulation.hold, "Addresses that do not change by themselves")
        ->option_text("ADDRESS");
    command->add_option("--set", simulation.set, "Value at the start, as in R_W:100=7")
        ->option_text("ADDRESS=VALUE");
    command->add_option("--load", simulation.loadFile, "Values at the start, from a JSON file")
        ->option_text("FILE");
    command->add_option("--dump", simulation.dumpFile, "Values at the end, into a JSON file")
        ->option_text("FILE");
    command->add_option("--log", simulation.logFile, "Every frame into a file; - is the terminal")
        ->option_text("FILE");
    addJsonFlag(*command, chosen, options->json);
    command->footer(
        "Kinds of faults, their AMOUNT and what it is without one:\n"
        "  silence          no reply\n"
        "  late:MS          the reply comes later (500)\n"
        "  flip:BITS        so many bits of it are turned over, 1 to 3 (1)\n"
        "  truncate:BYTES   only so many bytes of it come (any number)\n"
        "  extra:BYTES      so many bytes come after it (1 to 4)\n"
        "  noise:BYTES      so many bytes come before it (1 to 4)\n"
        "  station:NUMBER   it comes from that station (any other)\n"
        "  function:NUMBER  it is for that function (any other)\n"
        "  exception:CODE   an exception comes in its stead (1, 2, 3, 4 or 6)\n"
        "  echo             the request comes before it\n"
        "  slow:MS          it comes in up to 8 pieces, with gaps of that length (5)\n"
        "  any              one of these by chance\n"
        "A file for --load, as --dump writes it, names stations, registers, first addresses and "
        "the "
        "values from there on:\n"
        "  { \"1\": { \"R_W\": { \"100\": [1, 2, 3], \"200\": 7 }, \"M_bit\": { \"1.5\": 1 } } }\n"
        "Values are numbers, true and false for bits, or hex as \"0x1F\"; in R_D one with a point "
        "is "
        "a float.\n"
        "Prints the port to use, answers there until Ctrl-C, and ends with what it counted.\n"
        "Examples:\n"
        "  dov417 simulate --link /tmp/plc --stations 1,2\n"
        "  dov417 simulate --link /tmp/plc --baud-limit --fault silence=5% --fault flip=every:20\n"
        "  dov417 simulate --set R_W:100..102=1,2,3 --set M_bit:1.5=1 --log -");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runSimulate(*options); }; });
}

} // namespace dov417
