#include "tool/commands.h"

#include <CLI/CLI.hpp>
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

namespace dov417 {

namespace {

struct TraceOptions {
    LineOptions line;
    std::string file;
};

struct TraceCounts {
    long long requests = 0;
    long long replies = 0;
    long long strays = 0;
    long long notes = 0;
    long long unreadable = 0;
};

class Tracer {
public:
    explicit Tracer(const std::vector<Area>& areas) : conversation_(areas) {}

    // Prints the entry with the milliseconds since the one before.
    void explain(const LogEntry& entry)
    {
        const double since =
            isFirst_ ? 0 : static_cast<double>((entry.time - last_).count()) / 1000.0;
        isFirst_ = false;
        last_ = entry.time;
        std::printf("%10.3f  %s\n", since, text(entry).c_str());
        if (!entry.bytes.isEmpty())
            std::printf("%10s     %s\n", "", hexText(entry.bytes).c_str());
    }

    const TraceCounts& counts() const
    {
        return counts_;
    }
    void addUnreadable()
    {
        ++counts_.unreadable;
    }

private:
    std::string text(const LogEntry& entry)
    {
        switch (entry.direction) {
        case Direction::sent:
            ++counts_.requests;
            return "-> " + conversation_.request(entry.bytes);
        case Direction::received:
            ++counts_.replies;
            return "<- " + conversation_.reply(entry.bytes);
        case Direction::stray:
            ++counts_.strays;
            return "<? thrown away: " + conversation_.reply(entry.bytes) +
                   (entry.meaning.empty() ? "" : " [" + entry.meaning + "]");
        case Direction::note:
            ++counts_.notes;
            return "-- " + entry.meaning;
        }
        return std::string();
    }

    Conversation conversation_;
    LogTime last_{};
    bool isFirst_ = true;
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
    Tracer tracer(learnAreas(library));
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (line.empty() || line == "\r")
            continue;
        if (line[0] == '#') {
            std::printf("%s\n", line.c_str());
        } else if (const auto entry = parseLogLine(line)) {
            tracer.explain(*entry);
        } else {
            tracer.addUnreadable();
            std::fprintf(stderr, "dov417: %s:%d: not a line of a log\n", options.file.c_str(),
                         number);
        }
    }
    if (in.bad())
        throw Failure("cannot read the log " + options.file + ": " + std::strerror(errno));
    const TraceCounts& counts = tracer.counts();
    std::printf("sent %lld, received %lld, thrown away %lld, notes %lld\n", counts.requests,
                counts.replies, counts.strays, counts.notes);
    return counts.unreadable > 0 ? exitFailed : exitDone;
}

} // namespace

void addTraceCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<TraceOptions>();
    CLI::App* command = app.add_subcommand("trace", "Explains a recorded line log frame by frame");
    command->add_option("file", options->file, "What --log recorded; - reads the standard input")
        ->option_text("FILE")
        ->required();
    addLibraryOption(*command, options->line);
    command->footer("Examples:\n"
                    "  dov417 read --simulated R_W:100..103 --log line.log\n"
                    "  dov417 trace line.log\n"
                    "Each frame is told with the milliseconds since the one before. Exits with 1 "
                    "if a line is no line of a log.");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runTrace(*options); }; });
}

} // namespace dov417
