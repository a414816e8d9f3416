#include "panel/panel_options.h"

#include <CLI/CLI.hpp>
#include <filesystem>

namespace dov417 {

namespace {

constexpr int usageCode = 2;

std::string lineComplaint(const std::string& text)
{
    try {
        parseRtuFormat(text);
    } catch (const UsageFailure& failure) {
        return failure.what();
    }
    return std::string();
}

} // namespace

std::optional<PanelOptions> parsePanelOptions(int argc, const char* const* argv, int& code)
{
    PanelOptions options;
    CLI::App app("Shows a controller's values, lamps and frames in a window.", "dov417-panel");
    app.set_version_flag("--version", DOV417_VERSION);
    app.add_option("address", options.addresses,
                   "What to watch, as in R_W:100, R_W:100..107, 2/M_bit:1.5; or tag names. With "
                   "--tags alone: every tag")
        ->option_text("ADDRESS...");
    app.add_option("--tags", options.source.tags, "Tag file: tag names then stand for addresses")
        ->option_text("FILE");
    CLI::Option* const port =
        app.add_option("--port", options.line.port,
                       "Serial port, as in /dev/ttyUSB0; or tcp://HOST:4001, mbtcp://HOST")
            ->option_text("PORT");
    app.add_option("--line", options.line.line,
                   "Baud rate, data bits, parity, stop bits, as in 38400,8,EVEN,1; else the "
                   "library's own")
        ->option_text("LINE")
        ->check(lineComplaint);
    app.add_flag("--simulated", options.line.simulated,
                 "An own controller on a pseudo-terminal instead of a port")
        ->excludes(port);
    CLI::Option* const project =
        app.add_option("--project", options.project,
                       "Project file: its line and its tags; the file alone does as well")
            ->option_text("FILE");
    for (const char* const other : {"address", "--tags", "--port", "--line", "--simulated"})
        project->excludes(app.get_option(other));
    app.add_option("--library", options.library, "The driver library; else it is looked for")
        ->option_text("PATH");
    app.add_option("--pictures", options.pictures,
                   "Take a picture of each page once values have come, into this folder, and end; "
                   "no screen is needed with QT_QPA_PLATFORM=offscreen")
        ->option_text("FOLDER");
    app.footer("Without options it opens with a page to choose from. A port is opened for reading: "
               "writing is unlocked in the window.\n"
               "Examples:\n"
               "  dov417-panel machine.json\n"
               "  dov417-panel --simulated R_W:0..3 M_bit:1.0..1.15\n"
               "  dov417-panel --port /dev/ttyUSB0 --line 19200,8,EVEN,1 --tags tags.csv");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // --help and --version come this way too.
        code = app.exit(error) == 0 ? 0 : usageCode;
        return std::nullopt;
    }
    // A project alone, as a desktop hands it over.
    if (options.addresses.size() == 1 &&
        std::filesystem::is_regular_file(options.addresses.front()))
        options.project = options.addresses.front();
    return options;
}

} // namespace dov417
