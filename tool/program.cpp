#include "tool/program.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <clocale>
#include <cstdio>
#include <exception>
#include <optional>

#include "driver/debug_lines.h"
#include "line/failure.h"
#include "line/shown_text.h"
#include "live/child_program.h"
#include "live/manual_pages.h"
#include "tool/commands.h"
#include "tool/defaults.h"
#include "tool/json_output.h"

namespace dov417 {

namespace {

constexpr std::size_t outputBuffer = 65536; // longer than a line

int tellMisuse(const std::string& why)
{
    std::fprintf(stderr, "dov417: %s\nRun with --help for more information.\n",
                 shownText(why).c_str());
    return exitUsage;
}

int runCommandLine(int argc, char** argv)
{
    dropDebugLines();
    // Line by line, so that what goes to the error stream never comes amid a line of this one.
    std::setvbuf(stdout, nullptr, _IOLBF, outputBuffer);
    QCoreApplication application(argc, argv);
    // Qt takes the user's locale; numbers in files and on the screen keep their point.
    std::setlocale(LC_NUMERIC, "C");

    CLI::App app("Runs the panel driver on a serial line, and tells what it would do there.",
                 "dov417");
    app.set_version_flag("--version", DOV417_VERSION);
    app.require_subcommand(0, 1);
    app.footer("dov417 COMMAND --help tells more, with examples.");
    Action chosen;
    addPortsCommand(app, chosen);
    addScanCommand(app, chosen);
    addInfoCommand(app, chosen);
    addCheckCommand(app, chosen);
    addSeriesCommand(app, chosen);
    addPlanCommand(app, chosen);
    addTraceCommand(app, chosen);
    addListenCommand(app, chosen);
    addWatchCommand(app, chosen);
    addReadCommand(app, chosen);
    addWriteCommand(app, chosen);
    addRequestCommand(app, chosen);
    addRecipeCommand(app, chosen);
    addShellCommand(app, chosen);
    addSimulateCommand(app, chosen);
    addDemoCommand(app, chosen);
    if (const std::optional<int> code = writeManualPages(app, argc, argv))
        return *code;

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (argc > 1 && argv[1][0] != '-' && app.get_subcommands().empty())
            throw UsageFailure(std::string("there is no command '") + argv[1] +
                               "'; dov417 --help lists them");
        if (error.get_exit_code() != 0)
            return tellMisuse(error.what());
        app.exit(error); // --help and --version come this way too
        return exitDone;
    }
    if (!chosen) {
        std::fprintf(stderr, "%s", app.help().c_str());
        return exitUsage;
    }
    const int exitCode = runChosen(chosen);
    // A full disk, if the output goes to a file.
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Failure("the output could not be written");
    return exitCode;
}

} // namespace

int runProgram(int argc, char** argv)
{
    if (const std::optional<int> code = runAsChild(argc, argv))
        return *code;
    try {
        return runCommandLine(argc, argv);
    } catch (const UsageFailure& failure) {
        std::fprintf(stderr, "dov417: %s\n", shownText(failure.what()).c_str());
        return exitUsage;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "dov417: %s\n", shownText(failure.what()).c_str());
        return exitFailed;
    }
}

} // namespace dov417
