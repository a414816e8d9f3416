#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "tool/json_output.h"
#include "tool/line_source.h"
#include "tool/screen.h"
#include "tool/watch_display.h"

namespace dov417 {

namespace {

struct WatchOptions {
    LineOptions line;
    ItemOptions items;
    CsvWish csv;
    bool json = false;
    long long cycles = 0; // 0: no end
    double seconds = 0;   // 0: no end
    int everyMs = 0;      // 0: one cycle follows the other
};

int runWatch(LineSource& line, const WatchOptions& options)
{
    if (options.json && options.csv.name == "-")
        throw UsageFailure("--json and --csv - both want the standard output");
    const Library& library = line.library();
    const std::vector<Item> items =
        Items(library, options.items.source).chosen(options.items.arguments, Access::read);
    std::vector<ViewLabel> labels = labelViews(library, items);
    tellApart(labels);
    LiveCommand& live = line.take(items, line.options().mergeGap());
    Session& session = live.session();
    const bool hasScreen = !options.json && options.csv.name != "-" && Screen::isTerminal();
    WatchTeller teller(options.json, options.csv, hasScreen, labels, [&live]() { live.end(); });
    std::unique_ptr<WatchDisplay> display;
    if (hasScreen) {
        live.beQuiet();
        display = std::make_unique<WatchDisplay>(library, live, items, labels, teller);
    }

    QObject context; // of the connections
    QObject::connect(&session, &Session::changed, &context,
                     [&teller, &display](const ViewChanges& changes) {
                         for (const ViewChange& change : changes) {
                             teller.tell(change);
                             if (display)
                                 display->changed(change);
                         }
                     });
    QObject::connect(&session, &Session::abandoned, &context,
                     [&teller](const std::string& request, const std::string& reason, Reason why) {
                         teller.tellAbandoned(request, reason, why);
                     });
    QObject::connect(&session, &Session::noticed, &context,
                     [&teller](const std::string& text) { teller.tellNotice(text); });
    QObject::connect(
        &session, &Session::portChanged, &context,
        [&teller](bool open, const std::string& message) { teller.tellPort(open, message); });
    // A cycle that ends late, or none while the port is away, holds no row up.
    const std::chrono::milliseconds interval(options.everyMs);
    QTimer overdue;
    overdue.setSingleShot(true);
    const auto tellRow = [&](std::chrono::milliseconds untilNext) {
        teller.tellRow(session.views());
        overdue.start(untilNext);
    };
    if (options.csv.isWide) {
        QObject::connect(&session, &Session::cycleEnded, &overdue,
                         [&](long long) { tellRow(2 * interval); });
        QObject::connect(&overdue, &QTimer::timeout, &overdue, [&]() { tellRow(interval); });
        overdue.start(2 * interval);
    }
    if (options.json)
        live.countInJson();
    if (options.csv.name == "-")
        live.keepOutput();
    if (options.seconds > 0)
        QTimer::singleShot(timerSpan(options.seconds), &context, [&live]() { live.end(); });
    live.open();
    session.setCycleInterval(interval);
    session.watch(addressesOf(items));
    if (options.cycles > 0)
        live.endAfterCycles(options.cycles);
    live.run();
    teller.requireComplete();

    const std::string unfinished = display ? display->end() : std::string();
    const std::vector<View> views = session.views();
    live.letGo(watchHasEnded);
    if (display) {
        display.reset();
        for (const std::string& row : viewTable(views, labels, Clock::now()))
            std::printf("%s\n", row.c_str());
    }
    teller.tellUnsaid();
    const std::vector<std::string> doubtful = doubtfulValues(views, items, labels);
    for (const std::string& each : doubtful)
        std::fprintf(stderr, "dov417: %s\n", each.c_str());
    if (!unfinished.empty())
        std::fprintf(stderr, "dov417: %s\n", unfinished.c_str());
    return live.finish(doubtful.empty() && unfinished.empty());
}

} // namespace

void addWatchCommand(CLI::App& app, Action& chosen, LineSource* shared)
{
    const auto options = std::make_shared<WatchOptions>();
    CLI::App* command = app.add_subcommand("watch", "Poll, and show values live");
    addAddressArguments(*command, options->items);
    CLI::Option* const csv =
        command
            ->add_option("--csv", options->csv.name,
                         "One row a change into this file; - is the standard output")
            ->option_text("FILE");
    addJsonFlag(*command, chosen, options->json);
    CLI::Option* const every =
        command
            ->add_option(
                "-l,--every", options->everyMs,
                "Poll in this interval, not as fast as the line goes; says so where the line "
                "cannot keep it")
            ->option_text("MS")
            ->check(CLI::Range(1, maxMs));
    command
        ->add_flag("--wide", options->csv.isWide,
                   "With --csv and --every: one row an interval, a column a value; a field is "
                   "empty where no good value has come since the row before")
        ->needs(csv)
        ->needs(every);
    CLI::Option* const cycles =
        command->add_option("--cycles", options->cycles, "End after so many cycles")
            ->option_text("N")
            ->check(positive);
    command
        ->add_flag_callback(
            "-1", [options]() { options->cycles = 1; }, "The same as --cycles 1")
        ->excludes(cycles);
    command->add_option("--seconds", options->seconds, "End after so many seconds")
        ->option_text("N")
        ->check(positive);
    addLineUse(*command, options->line, options->items, chosen, shared);
    command->footer(
        "On a terminal a table redraws in place, and keys scroll, filter and write: ? shows them. "
        "Else each change is a line. Ctrl-C ends it.\n"
        "Examples:\n"
        "  dov417 watch --simulated R_W:0..3 I_bit:0.0..0.7 T:5 C:0 --seconds 5\n"
        "  dov417 watch --simulated R_W:0 --json --cycles 100\n"
        "  dov417 watch --simulated R_W:0..3 --csv values.csv --stats --seconds 2\n"
        "  dov417 watch --simulated R_W:0..3 --every 500 --csv - --seconds 2\n"
        "  dov417 watch --simulated R_W:0..3 T:5 --every 200 --wide --csv - --cycles 5\n"
        "On a real line, --port /dev/ttyUSB0 stands for --simulated.\n"
        "Exits with 1 if a value is not good at the end: it never came, or it is old since its "
        "request has been failing or the port has gone.");
    command->callback([options, shared, &chosen]() { chosen = onLine(shared, options, runWatch); });
}

} // namespace dov417
