#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "session/write_words.h"
#include "tool/json_output.h"
#include "tool/line_source.h"

namespace dov417 {

namespace {

struct WriteOptions {
    LineOptions line;
    ItemOptions items; // without addresses of its own
    std::vector<std::string> assignments;
    bool json = false;
};

std::vector<std::string> splitAtCommas(const std::string& text)
{
    std::vector<std::string> parts;
    std::size_t from = 0;
    for (;;) {
        const std::size_t comma = text.find(',', from);
        parts.push_back(text.substr(from, comma - from));
        if (comma == std::string::npos)
            return parts;
        from = comma + 1;
    }
}

WriteTask parseAssignment(const Items& items, const std::string& text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw UsageFailure(text + ": a write is ADDRESS=VALUE[,VALUE...], as in R_W:100=1500");
    const Item item = items.findAll(text.substr(0, equals), Access::write).front();
    const std::string written = text.substr(equals + 1);
    if (item.address.width == Width::text)
        return writeTask(item, {written});
    const std::vector<std::string> values = splitAtCommas(written);
    if (values.size() == 2 && valueCount(item.address) == 1)
        throw UsageFailure(item.name + ": '" + written +
                           "' are two values, and it has one; a number has a point, not a comma");
    return writeTask(item, values);
}

const char* keyOf(WriteResult result)
{
    switch (result) {
    case WriteResult::waiting:
        return "interrupted";
    case WriteResult::confirmed:
        return "confirmed";
    case WriteResult::sent:
        return "sent";
    case WriteResult::refused:
        return "refused";
    case WriteResult::unread:
        return "unread";
    case WriteResult::different:
        return "different";
    }
    return "";
}

OutputJson taskJson(const Library& library, const WriteTask& task, const std::string& interruption)
{
    OutputJson object = itemJson(library, task.item);
    addValues(object, "values", task.item, task.data);
    object["result"] = keyOf(task.result);
    const std::string reason = task.result == WriteResult::waiting ? interruption : task.reason;
    if (!reason.empty())
        addReason(object, "reason", reason, task.why);
    if (!task.before.empty())
        addValues(object, "before", task.item, task.before);
    if (!task.after.empty())
        addValues(object, "after", task.item, task.after);
    return object;
}

int runWrite(LineSource& line, const WriteOptions& options)
{
    const Library& library = line.library();
    const Items known(library, options.items.source);
    std::vector<WriteTask> tasks;
    std::vector<Item> items;
    for (const std::string& assignment : options.assignments) {
        tasks.push_back(parseAssignment(known, assignment));
        items.push_back(tasks.back().item);
    }
    const int gap = line.options().mergeGap();
    requireUntornValues(library, items, gap);
    LiveCommand& live = line.take(items, gap);
    live.endWithoutPort();
    if (options.json)
        live.countInJson();
    live.open();
    WriteJob writes(live.session(), [&live]() { live.end(); });
    writes.start(tasks);
    live.run();
    if (!live.interruption().empty())
        live.session().close(live.interruption()); // tells what was taken of a write in parts

    bool complete = true;
    for (const WriteTask& task : writes.tasks()) {
        const bool done = task.result == WriteResult::confirmed || task.result == WriteResult::sent;
        complete = complete && done;
        if (options.json)
            sayJson(taskJson(library, task, live.interruption()));
        if (options.json && done)
            continue;
        std::fprintf(done ? stdout : stderr, "%s%s\n",
                     done ? "" : "dov417: ", writeReport(task, live.interruption()).c_str());
    }
    return live.finish(complete);
}

} // namespace

void addWriteCommand(CLI::App& app, Action& chosen, LineSource* shared)
{
    const auto options = std::make_shared<WriteOptions>();
    CLI::App* command =
        app.add_subcommand("write", "Write, wait for each outcome, read back, report");
    command
        ->add_option("writes", options->assignments,
                     "ADDRESS=VALUE[,VALUE...], as in R_W:100=1500, M_bit:1.0..1.2=1,0,1, "
                     "speed=1500 with a tag file")
        ->option_text("ADDRESS=VALUE...")
        ->required();
    addItemOptions(*command, options->items);
    addJsonFlag(*command, chosen, options->json);
    addLineUse(*command, options->line, options->items, chosen, shared);
    command->footer(
        "Bits go out one at a time: a run of coil bits in one request would miss its area. The "
        "other bits of an R register keep their state: it is read first. A 32-bit value goes out "
        "in one request. Station 0 is the broadcast to all stations, which nobody confirms; bits "
        "of R cannot be broadcast.\n"
        "Examples:\n"
        "  dov417 write --simulated R_W:100=1500 M_bit:1.3=1\n"
        "  dov417 write --simulated R_D:200..203=1.5,-2 --format float\n"
        "On a real line, --port /dev/ttyUSB0 stands for --simulated.\n"
        "Exits with 1 if a write was refused, given up or does not read back as written, and says "
        "which.");
    command->callback([options, shared, &chosen]() { chosen = onLine(shared, options, runWrite); });
}

} // namespace dov417
