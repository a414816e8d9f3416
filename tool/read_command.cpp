#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <optional>

#include "session/single_reads.h"
#include "tool/json_output.h"
#include "tool/line_source.h"
#include "tool/troubles.h"
#include "tool/view_table.h"

namespace dov417 {

namespace {

struct ReadOptions {
    LineOptions line;
    ItemOptions items;
    bool json = false;
};

int runRead(LineSource& line, const ReadOptions& options)
{
    const Library& library = line.library();
    const std::vector<Item> items =
        Items(library, options.items.source).chosen(options.items.arguments, Access::read);
    if (line.options().gap)
        requireUntornValues(library, items, *line.options().gap);
    LiveCommand& live = line.take(items, line.options().singleReadGap());
    live.endWithoutPort();
    if (options.json)
        live.countInJson();
    live.open();
    std::optional<ReadResults> results;
    readAll(live.session(), addressesOf(items), [&](const ReadResults& read) {
        results = read;
        live.end();
    });
    live.run();

    std::vector<std::pair<std::string, std::string>> wrong;
    for (std::size_t i = 0; i < items.size(); ++i) {
        const Result result = results ? results->at(i) : Result::refused(live.interruption());
        if (options.json) {
            OutputJson object = itemJson(library, items.at(i));
            if (result.accepted)
                addValues(object, "values", items.at(i),
                          live.session().cachedBytes(items.at(i).address));
            else
                addReason(object, "failure", result.reason, result.why);
            sayJson(object);
        }
        if (!result.accepted) {
            wrong.emplace_back(items.at(i).name, result.reason);
            continue;
        }
        if (options.json)
            continue;
        std::string text;
        for (const std::string& value : cachedTexts(live.session(), items.at(i)))
            text += " " + value;
        std::printf("%s =%s\n", items.at(i).name.c_str(),
                    withUnit(text, items.at(i).format).c_str());
    }
    for (const std::string& each : grouped(wrong))
        std::fprintf(stderr, "dov417: %s\n", each.c_str());
    return live.finish(wrong.empty());
}

} // namespace

void addReadCommand(CLI::App& app, Action& chosen, LineSource* shared)
{
    const auto options = std::make_shared<ReadOptions>();
    CLI::App* command = app.add_subcommand("read", "Each value once, then exit");
    addAddressArguments(*command, options->items);
    addJsonFlag(*command, chosen, options->json);
    addLineUse(*command, options->line, options->items, chosen, shared);
    command->footer(
        "Bits are read with the word that holds them: the driver frames no single "
        "read of bits. A request reads up to 125 words, and no more than --gap where it is given.\n"
        "Examples:\n"
        "  dov417 read --simulated R_W:100..107 M_bit:1.0..1.15 T:5\n"
        "  dov417 read --simulated R_D:10..13 --format float:high-first\n"
        "On a real line, --port /dev/ttyUSB0 stands for --simulated.\n"
        "Exits with 1 if a value could not be read, and says which and why.");
    command->callback([options, shared, &chosen]() { chosen = onLine(shared, options, runRead); });
}

} // namespace dov417
