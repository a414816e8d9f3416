#include "panel/panel_options.h"

#include <CLI/CLI.hpp>
#include <filesystem>

#include "live/line_members.h"
#include "live/manual_pages.h"

namespace dov417 {

namespace {

const char* const programName = "dov417-panel";
const char* const lineGroup = "Line";
const char* const valueGroup = "Values";
const char* const programGroup = "Program";

struct LineOption {
    const char* name;
    const char* text; // what stands for its value; null: a switch
    const char* help;
};

// By the names of dov417's and of a project's members.
const LineOption lineOptions[] = {
    {"timeout", "MS",
     "How long to wait for a reply, whatever a station takes; else 500, and "
     "longer where it takes longer"},
    {"timeout-min", "MS", "Without --timeout: what a station is given at least (500)"},
    {"timeout-max", "MS", "Without --timeout: what a station is given at most (15000)"},
    {"reply-gap", "MS", "Silence that ends a reply which has begun (100; over a network 500)"},
    {"horizon", "SECONDS", "A station begins to answer within so many seconds, or not at all (30)"},
    {"no-function-8", nullptr,
     "Never send the diagnostics echo that tells late replies from the "
     "one awaited"},
    {"retries", "N", "Bad or missing replies in a row until a request is given up (3)"},
    {"probe", "MS", "Maximum pause before a silent station is asked again (30000)"},
    {"turnaround", "MS", "What controllers need to digest a broadcast (100)"},
    {"gap", "N", "Maximum hole in words that one read bridges (20)"},
    {"max-registers", "N", "Registers (or 16 coils for each) that controllers take in one request"},
};

std::string lineComplaint(const std::string& text)
{
    try {
        parseRtuFormat(text);
    } catch (const UsageFailure& failure) {
        return failure.what();
    }
    return std::string();
}

// What a member is set to, by the kind that it is of.
struct OptionMaker {
    CLI::App& app;
    const LineOption& option;
    LineSetup& setup;

    CLI::Option* operator()(bool LineSetup::*field) const
    {
        const auto set = [field, &line = setup]() { line.*field = !(LineSetup().*field); };
        return app.add_flag_callback(name(), set, option.help);
    }
    template <typename Field>
    CLI::Option* operator()(Field field) const
    {
        return app.add_option(name(), setup.*field, option.help)->option_text(option.text);
    }

private:
    std::string name() const
    {
        return std::string("--") + option.name;
    }
};

void addLineOptions(CLI::App& app, LineSetup& line)
{
    CLI::Option* const port =
        app.add_option("--port", line.port,
                       "Serial port, as in /dev/ttyUSB0; or tcp://HOST:4001, mbtcp://HOST")
            ->option_text("PORT")
            ->group(lineGroup);
    app.add_option("--line", line.line,
                   "Baud rate, data bits, parity, stop bits, as in 38400,8,EVEN,1; else the "
                   "library's own")
        ->option_text("LINE")
        ->check(lineComplaint)
        ->group(lineGroup);
    app.add_flag("--simulated", line.simulated,
                 "An own controller on a pseudo-terminal instead of a port")
        ->excludes(port)
        ->option_text(" ") // not what it excludes
        ->group(lineGroup);
    for (const LineOption& each : lineOptions) {
        const LineMember& member = lineMember(each.name);
        CLI::Option* const option = std::visit(OptionMaker{app, each, line}, member.field);
        option->group(lineGroup);
        if (each.text)
            option->check(CLI::Range(member.min, member.max));
    }
    for (const char* const bound : {"--timeout-min", "--timeout-max"})
        app.get_option(bound)->excludes("--timeout");
    app.add_option("--log", line.log,
                   "Record every frame with time, direction, bytes and meaning, as dov417 trace "
                   "reads them")
        ->option_text("FILE")
        ->group(lineGroup);
}

void addValueOptions(CLI::App& app, PanelOptions& options)
{
    app.add_option("address", options.addresses,
                   "A project file first, or none; then what to watch, as in R_W:100, "
                   "R_W:100..107, 2/M_bit:1.5; or tag names. With --tags alone: every tag")
        ->option_text("ADDRESS...");
    app.add_option("--tags", options.source.tags, "Tag file: tag names then stand for addresses")
        ->option_text("FILE")
        ->group(valueGroup);
    app.add_option("--format", options.source.format,
                   "How values are written: unsigned, signed, hex, bcd, binary, bool, float, "
                   "int64, uint64, double, text; R_D:600@float is one address's")
        ->option_text("FORMAT")
        ->group(valueGroup);
    app.add_option("--word-order", options.source.wordOrder,
                   "Which word of a longer value has the lowest address: low-first (the driver's "
                   "own) or high-first")
        ->option_text("ORDER")
        ->check(CLI::IsMember(wordOrderNames()))
        ->group(valueGroup);
}

// A project says these.
void requireProjectAlone(const CLI::App& app)
{
    for (const CLI::Option* const option : app.get_options())
        if (option->count() > 0 &&
            (option->get_group() == lineGroup || option->get_name() == "--tags"))
            throw CLI::ExcludesError(option->get_name(), "a project, which says that itself");
}

} // namespace

void makePanelOptions(CLI::App& app, PanelOptions& options)
{
    app.description("Shows a controller's values, lamps and frames in a window.");
    app.set_version_flag("--version", DOV417_VERSION);
    addValueOptions(app, options);
    addLineOptions(app, options.line);
    app.add_option("--project", options.project,
                   "Project file: its line and its tags; the file as the first argument does as "
                   "well")
        ->option_text("FILE")
        ->group(valueGroup);
    app.add_option("--library", options.library, "The driver library; else it is looked for")
        ->option_text("PATH")
        ->group(programGroup);
    app.add_option("--pictures", options.pictures,
                   "Take a picture of each page once values have come, into this folder, and end; "
                   "no screen is needed with QT_QPA_PLATFORM=offscreen")
        ->option_text("FOLDER")
        ->group(programGroup);
    app.footer(
        "Without options it opens with a page to choose from. A port is opened for reading: "
        "writing is unlocked in the window. Ended by a signal it asks nothing: what was not "
        "saved, a recipe's values too, is offered when it is started again. Its texts are in "
        "the user's language where there is a dov417-panel_LANGUAGE.qm in "
        "dov417-panel/translations of ~/.local/share or /usr/share.\n"
        "Examples:\n"
        "  dov417-panel machine.json\n"
        "  dov417-panel --simulated R_W:0..3 M_bit:1.0..1.15\n"
        "  dov417-panel --port /dev/ttyUSB0 --line 19200,8,EVEN,1 --tags tags.csv");
}

std::optional<int> writePanelManual(int argc, char** argv)
{
    PanelOptions options;
    CLI::App app("", programName);
    makePanelOptions(app, options);
    return writeManualPages(app, argc, argv);
}

std::optional<PanelOptions> parsePanelOptions(int argc, const char* const* argv, int& code)
{
    PanelOptions options;
    CLI::App app("", programName);
    makePanelOptions(app, options);
    try {
        app.parse(argc, argv);
        std::vector<std::string>& addresses = options.addresses;
        // As a desktop hands it over.
        if (options.project.empty() && !addresses.empty() &&
            std::filesystem::is_regular_file(addresses.front())) {
            options.project = addresses.front();
            addresses.erase(addresses.begin());
        }
        if (!options.project.empty())
            requireProjectAlone(app);
    } catch (const CLI::ParseError& error) {
        // --help and --version come this way too.
        code = app.exit(error) == 0 ? 0 : usageCode;
        return std::nullopt;
    }
    return options;
}

} // namespace dov417
