#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

#include "driver/areas.h"
#include "line/failure.h"
#include "live/live_line.h"
#include "live/shutdown.h"
#include "tool/defaults.h"
#include "tool/heard_teller.h"
#include "tool/json_output.h"

namespace dov417 {

namespace {

struct ListenOptions {
    LineOptions line;
    HeardForm form = HeardForm::frames;
    std::optional<double> seconds;
};

int runListen(const ListenOptions& options)
{
    const Library library(options.line.library);
    const LineSettings settings = listeningSettings(library, options.line);
    HeardTeller teller(options.form, settings, options.line.log, learnAreas(library));
    QEventLoop loop;
    const Shutdown shutdown([&loop]() { loop.quit(); });
    ListeningLine line(settings, {[&teller](const Heard& heard) { teller.tell(heard); },
                                  [&teller](bool open, const std::string& message) {
                                      teller.tellPort(open, message);
                                  }});
    line.open();
    if (options.seconds)
        QTimer::singleShot(timerSpan(*options.seconds), &loop, [&loop]() { loop.quit(); });
    loop.exec();
    line.end();
    return teller.finish() ? exitDone : exitFailed;
}

// What is for those who talk is none of a listener's.
void removeTalkersOptions(CLI::App& command)
{
    const std::vector<std::string> kept = {"--port",      "--line",     "--reply-gap", "--log",
                                           "--horizon",   "--library",  "--baud",      "--parity",
                                           "--data-bits", "--stop-bits"};
    for (CLI::Option* option : command.get_options())
        if (option->get_group() == "Line" &&
            std::find(kept.begin(), kept.end(), option->get_name()) == kept.end())
            command.remove_option(option);
}

} // namespace

void addListenCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<ListenOptions>();
    CLI::App* command =
        app.add_subcommand("listen", "Hear what another master and its stations say");
    command
        ->add_option("--seconds", options->seconds, "End after so many seconds; else with Ctrl-C")
        ->option_text("N")
        ->check(positive);
    CLI::Option* const table = command->add_flag_callback(
        "--table", [options]() { options->form = HeardForm::table; },
        "No frames, only the table of what was asked for");
    addJsonFlag(*command, chosen, [options]() {
        options->form = HeardForm::json;
    })->excludes(table);
    addLineOptions(*command, options->line);
    removeTalkersOptions(*command);
    addDefaults(*command, {&options->line, nullptr}, chosen);
    command->footer(
        "Nothing is sent. Each frame is told with the milliseconds since the one before, and at "
        "the "
        "end what the master asks for, how often and how regularly. A reply carries no address: it "
        "is that of the request that it follows, and where that is not clear, it is told without.\n"
        "Examples, on the line of another master:\n"
        "  $ dov417 listen --port /dev/ttyUSB0 --line 9600,8,NONE,1 --log line.log\n"
        "  $ dov417 listen --port /dev/ttyUSB0 --table\n"
        "Exits with 1 if no frame was heard.");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runListen(*options); }; });
}

} // namespace dov417
