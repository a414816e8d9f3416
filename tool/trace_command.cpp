#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>

#include "driver/areas.h"
#include "line/conversation.h"
#include "line/failure.h"
#include "line/frame_text.h"
#include "line/line_log.h"
#include "line/shown_text.h"
#include "tool/controllers_log.h"
#include "tool/json_output.h"
#include "tool/trace_lines.h"

namespace dov417 {

namespace {

struct TraceOptions {
    LineOptions line;
    std::string file;
    bool json = false;
};

struct TraceCounts {
    std::array<long long, 4> of{}; // by Direction
    long long unreadable = 0;
    long long firstUnreadable = 0; // its line
};

const char* keyOf(Direction direction)
{
    switch (direction) {
    case Direction::sent:
        return "sent";
    case Direction::received:
        return "received";
    case Direction::stray:
        return "stray";
    case Direction::note:
        return "note";
    }
    return "";
}

class Tracer {
public:
    Tracer(const std::vector<Area>& areas, bool json)
        : json_(json), conversation_(areas), controllers_(areas)
    {
    }

    // Prints what the line tells, with the milliseconds since the one before.
    void explain(const std::string& line, long long number)
    {
        if (const auto entry = parseLogLine(line))
            print(*entry, {"time", logTimeText(entry->time)}, text(*entry));
        else if (const auto controllers = controllers_.entry(line))
            print(*controllers, {"seconds", secondsOf(*controllers)}, controllers->meaning);
        else
            unreadable(number);
    }
    // A recording began here, or somebody wrote this into it.
    void remark()
    {
        forget();
    }

    const TraceCounts& counts() const
    {
        return counts_;
    }

private:
    std::string text(const LogEntry& entry)
    {
        switch (entry.direction) {
        case Direction::sent:
            return conversation_.request(entry.bytes);
        case Direction::received:
            return conversation_.reply(entry.bytes);
        case Direction::stray:
            return "thrown away: " + conversation_.stray(entry.bytes) +
                   (entry.meaning.empty() ? "" : " [" + entry.meaning + "]");
        case Direction::note:
            conversation_.note(entry);
            return entry.meaning;
        }
        return std::string();
    }

    void unreadable(long long number)
    {
        if (++counts_.unreadable == 1)
            counts_.firstUnreadable = number;
        forget();
    }

    void forget()
    {
        conversation_.forget();
        controllers_.forget();
    }

    // A controller's log has no date: what it has is the time since it was started.
    static double secondsOf(const LogEntry& entry)
    {
        return std::chrono::duration<double>(entry.time.time_since_epoch()).count();
    }

    void print(const LogEntry& entry, const OutputJson& time, const std::string& text)
    {
        ++counts_.of.at(static_cast<std::size_t>(entry.direction));
        if (json_) {
            sayJson({{time.at(0), time.at(1)},
                     {"direction", keyOf(entry.direction)},
                     {"bytes", hexText(entry.bytes)},
                     {"text", text}});
            return;
        }
        const std::string line = TraceLines::arrow(entry.direction) + text;
        std::printf("%s", lines_.of(entry.time, line, entry.bytes).c_str());
    }

    bool json_;
    Conversation conversation_;
    ControllersLog controllers_;
    TraceLines lines_;
    TraceCounts counts_;
};

int runTrace(const TraceOptions& options)
{
    const Library library(options.line.library);
    std::ifstream file;
    if (options.file != "-") {
        file.open(options.file);
        if (!file)
            throw Failure("cannot read the log " + options.file + ": " + std::strerror(errno));
    }
    std::istream& in = options.file == "-" ? std::cin : file;
    Tracer tracer(learnAreas(library), options.json);
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty())
            continue;
        if (line[0] != '#') {
            tracer.explain(line, number);
            continue;
        }
        tracer.remark();
        if (options.json)
            sayJson({{"remark", line}});
        else
            std::printf("%s\n", shownText(line).c_str());
    }
    if (in.bad())
        throw Failure("cannot read the log " + options.file + ": " + std::strerror(errno));
    const TraceCounts& counts = tracer.counts();
    if (options.json)
        sayJson({{"end",
                  {{"sent", counts.of[0]},
                   {"received", counts.of[1]},
                   {"strays", counts.of[2]},
                   {"notes", counts.of[3]},
                   {"unreadable", counts.unreadable}}}});
    else
        std::printf("sent %lld, received %lld, thrown away %lld, notes %lld\n", counts.of[0],
                    counts.of[1], counts.of[2], counts.of[3]);
    if (counts.unreadable > 0)
        std::fprintf(stderr, "dov417: %s: %lld %s no line of a log, the first is line %lld\n",
                     options.file.c_str(), counts.unreadable,
                     counts.unreadable == 1 ? "line is" : "lines are", counts.firstUnreadable);
    return counts.unreadable > 0 ? exitFailed : exitDone;
}

} // namespace

void addTraceCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<TraceOptions>();
    CLI::App* command = app.add_subcommand("trace", "Explains a recorded line log frame by frame");
    command
        ->add_option("file", options->file,
                     "What --log recorded, that of simulate too; - reads the standard input")
        ->option_text("FILE")
        ->required();
    addJsonFlag(*command, chosen, options->json);
    addLibraryOption(*command, options->line);
    command->footer("Examples:\n"
                    "  dov417 read --simulated R_W:100..103 --log line.log\n"
                    "  dov417 trace line.log\n"
                    "Each frame is told with the milliseconds since the one before. Exits with 1 "
                    "if a line is no line of a log, and says how many are not.");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runTrace(*options); }; });
}

} // namespace dov417
