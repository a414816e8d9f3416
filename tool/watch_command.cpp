#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "tool/defaults.h"
#include "tool/live_command.h"
#include "tool/watch_teller.h"

namespace dov417 {

namespace {

struct WatchOptions {
    LineOptions line;
    ItemOptions items;
    std::string csv;
    bool json = false;
    long long cycles = 0; // 0: no end
    double seconds = 0;   // 0: no end
    int everyMs = 0;      // 0: one cycle follows the other
};

int runWatch(const WatchOptions& options)
{
    if (options.json && options.csv == "-")
        throw UsageFailure("--json and --csv - both want the standard output");
    const Library library(options.line.library);
    const std::vector<Item> items =
        Items(library, options.items.source).chosen(options.items.arguments, Access::read);
    const std::vector<ViewLabel> labels = labelViews(library, items);
    LiveCommand live(library, options.line, items);
    Session& session = live.session();
    WatchTeller teller(options.json, options.csv, labels, [&live]() { live.end(); });

    QTimer redraw;
    QObject::connect(&session, &Session::changed, &redraw, [&teller](const ViewChanges& changes) {
        for (const ViewChange& change : changes)
            if (change.isValue)
                teller.tell(change.view, change.index);
    });
    QObject::connect(&session, &Session::abandoned, &redraw,
                     [&teller](const std::string& request, const std::string& reason, Reason why) {
                         teller.tellAbandoned(request, reason, why);
                     });
    QObject::connect(&session, &Session::noticed, &redraw,
                     [&teller](const std::string& text) { teller.tellNotice(text); });
    QObject::connect(
        &session, &Session::portChanged, &redraw,
        [&teller](bool open, const std::string& message) { teller.tellPort(open, message); });
    QObject::connect(&redraw, &QTimer::timeout, &redraw,
                     [&teller, &session, &live]() { teller.draw(session, live.isWaiting()); });
    if (options.json)
        live.countInJson();
    if (options.csv == "-")
        live.keepOutput();
    if (teller.hasScreen()) {
        live.beQuiet();
        redraw.start(redrawMilliseconds);
    }
    if (options.seconds > 0)
        QTimer::singleShot(timerSpan(options.seconds), &redraw, [&live]() { live.end(); });
    live.open();
    session.setCycleInterval(std::chrono::milliseconds(options.everyMs));
    session.watch(addressesOf(items));
    if (options.cycles > 0)
        session.finishAfterCycles(options.cycles, [&live]() { live.end(); });
    live.run();
    teller.requireComplete();

    if (teller.hasScreen()) {
        teller.leaveScreen();
        for (const std::string& row : viewTable(session.views(), labels, Clock::now()))
            std::printf("%s\n", row.c_str());
    }
    teller.tellUnsaid();
    const std::vector<std::string> doubtful = doubtfulValues(session.views(), items, labels);
    for (const std::string& line : doubtful)
        std::fprintf(stderr, "dov417: %s\n", line.c_str());
    return live.finish(doubtful.empty());
}

} // namespace

void addWatchCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<WatchOptions>();
    CLI::App* command = app.add_subcommand("watch", "Poll, and show values live");
    addAddressArguments(*command, options->items);
    command
        ->add_option("--csv", options->csv,
                     "One row a change into this file; - is the standard output")
        ->option_text("FILE");
    command->add_flag("--json", options->json, "One JSON object a change, a line each");
    command
        ->add_option("-l,--every", options->everyMs,
                     "Poll in this interval, not as fast as the line goes; says so where the line "
                     "cannot keep it")
        ->option_text("MS")
        ->check(CLI::Range(1, maxMs));
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
    addLineOptions(*command, options->line);
    addDefaults(*command, {&options->line, &options->items.source.tags}, chosen);
    command->footer(
        "On a terminal a table redraws in place; else each change is a line. Ctrl-C ends it.\n"
        "Examples:\n"
        "  dov417 watch --simulated R_W:0..3 I_bit:0.0..0.7 T:5 C:0 --seconds 5\n"
        "  dov417 watch --simulated R_W:0 --json --cycles 100\n"
        "  dov417 watch --simulated R_W:0..3 --csv values.csv --stats --seconds 2\n"
        "  dov417 watch --simulated R_W:0..3 --every 500 --csv - --seconds 2\n"
        "On a real line, --port /dev/ttyUSB0 stands for --simulated.\n"
        "Exits with 1 if a value is not good at the end: it never came, or it is old since its "
        "request has been failing or the port has gone.");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runWatch(*options); }; });
}

} // namespace dov417
