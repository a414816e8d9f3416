#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <optional>

#include "session/single_reads.h"
#include "tool/defaults.h"
#include "tool/live_command.h"
#include "tool/troubles.h"
#include "tool/view_table.h"

namespace dov417 {

namespace {

struct ReadOptions {
    LineOptions line;
    ItemOptions items;
};

int runRead(const ReadOptions& options)
{
    const Library library(options.line.library);
    const std::vector<Item> items =
        Items(library, options.items.source).chosen(options.items.arguments, Access::read);
    if (options.line.gap)
        requireUntornValues(library, items, *options.line.gap);
    LineOptions setup = options.line;
    setup.gap = setup.singleReadGap();
    LiveCommand live(library, setup, items);
    live.endWithoutPort();
    live.open();
    std::optional<ReadProblems> problems;
    readAll(live.session(), addressesOf(items), [&](const ReadProblems& found) {
        problems = found;
        live.end();
    });
    live.run();

    std::vector<std::pair<std::string, std::string>> wrong;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const std::string problem = problems ? problems->at(i) : live.interruption();
        if (!problem.empty()) {
            wrong.emplace_back(items.at(i).name, problem);
            continue;
        }
        std::string text;
        for (const std::string& value : cachedTexts(live.session(), items.at(i)))
            text += " " + value;
        std::printf("%s =%s\n", items.at(i).name.c_str(),
                    withUnit(text, items.at(i).format).c_str());
    }
    for (const std::string& line : grouped(wrong))
        std::fprintf(stderr, "dov417: %s\n", line.c_str());
    return live.finish(wrong.empty());
}

} // namespace

void addReadCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<ReadOptions>();
    CLI::App* command = app.add_subcommand("read", "Each value once, then exit");
    addAddressArguments(*command, options->items);
    addLineOptions(*command, options->line);
    addDefaults(*command, {&options->line, &options->items.source.tags}, chosen);
    command->footer(
        "Bits are read with the word that holds them: the driver frames no single "
        "read of bits. A request reads up to 125 words, and no more than --gap where it is given.\n"
        "Examples:\n"
        "  dov417 read --simulated R_W:100..107 M_bit:1.0..1.15 T:5\n"
        "  dov417 read --simulated R_D:10..13 --format float:high-first\n"
        "On a real line, --port /dev/ttyUSB0 stands for --simulated.\n"
        "Exits with 1 if a value could not be read, and says which and why.");
    command->callback([options, &chosen]() { chosen = [options]() { return runRead(*options); }; });
}

} // namespace dov417
