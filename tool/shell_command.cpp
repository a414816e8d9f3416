#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <unistd.h>

#include "line/shown_text.h"
#include "tool/command_lines.h"
#include "tool/json_output.h"
#include "tool/line_source.h"

namespace dov417 {

namespace {

struct ShellOptions {
    LineOptions line;
    ItemOptions items; // without addresses
    bool stopsOnError = false;
};

// The line that all commands share.
class SharedLine : public LineSource {
public:
    explicit SharedLine(const ShellOptions& options)
        : options_(options), library_(options.line.library), live_(library_, options.line, known())
    {
    }

    const Library& library() override
    {
        return library_;
    }
    const LineOptions& options() const override
    {
        return options_.line;
    }
    LiveCommand& take(const std::vector<Item>& items, int gap) override
    {
        (void)items; // an own controller has been started already
        live_.begin(gap);
        return live_;
    }
    const ItemSource* shared() const override
    {
        return &options_.items.source;
    }
    LiveCommand& live()
    {
        return live_;
    }

private:
    std::vector<Item> known() const
    {
        const Items items(library_, options_.items.source);
        return options_.items.source.tags.empty() ? std::vector<Item>()
                                                  : items.tagged(Access::read);
    }

    ShellOptions options_;
    Library library_;
    LiveCommand live_;
};

// To a controller or a file.
bool writes(const CLI::App& app)
{
    return app.got_subcommand("write") ||
           (app.got_subcommand("recipe") &&
            !app.get_subcommand("recipe")->got_subcommand("compare"));
}

class Shell {
public:
    explicit Shell(const ShellOptions& options)
        : line_(options), live_(line_.live()), stopsOnError_(options.stopsOnError),
          isSpokenTo_(isatty(STDIN_FILENO) != 0)
    {
        live_.open();
        live_.stayOpen(!isSpokenTo_, [this]() { interruptedWhileIdle(); });
    }

    int run()
    {
        while (!hasEnded_)
            if (const std::optional<std::string> line = nextLine())
                take(*line);
        live_.leave();
        const int code = live_.finish(true);
        return code_ == exitDone ? code : code_;
    }

private:
    std::optional<std::string> nextLine();
    void read();
    void take(const std::string& line);
    int execute(const std::vector<std::string>& words);
    void failed(int code, const std::string& why);
    void interruptedWhileIdle();

    SharedLine line_;
    LiveCommand& live_;
    bool stopsOnError_;
    bool isSpokenTo_; // by a person
    CommandLines lines_;
    QEventLoop input_;
    bool hasEnded_ = false;
    int code_ = exitDone; // of the first line that failed
};

std::optional<std::string> Shell::nextLine()
{
    std::optional<std::string> line = lines_.next();
    if (line || lines_.isAtEnd()) {
        hasEnded_ = !line;
        return line;
    }
    if (isSpokenTo_ && isatty(STDOUT_FILENO) != 0) {
        std::printf("dov417> ");
        std::fflush(stdout);
    }
    QSocketNotifier notifier(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [this]() { read(); });
    input_.exec();
    return lines_.next();
}

void Shell::read()
{
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (count > 0)
        lines_.add(std::string(bytes.data(), static_cast<std::size_t>(count)));
    else
        lines_.end();
    if (count <= 0 && isSpokenTo_)
        std::printf("\n");
    input_.quit();
}

// A person wants another line; a script is not wanted any more.
void Shell::interruptedWhileIdle()
{
    if (!live_.isToLeave()) {
        std::printf("\n");
    } else {
        hasEnded_ = true;
        failed(exitFailed, "interrupted");
    }
    input_.quit();
}

void Shell::take(const std::string& line)
{
    int code = exitFailed;
    try {
        const std::vector<std::string> words = commandWords(line);
        if (words.empty())
            return;
        if (words == std::vector<std::string>{"quit"}) {
            hasEnded_ = true;
            return;
        }
        code = execute(words);
        if (code != exitDone)
            failed(code, "");
        else if (live_.isToLeave())
            failed(exitFailed, "interrupted");
    } catch (const UsageFailure& failure) {
        failed(exitUsage, failure.what());
    } catch (const std::exception& failure) {
        failed(exitFailed, failure.what());
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Failure("the output could not be written");
    hasEnded_ = hasEnded_ || live_.isToLeave();
    live_.begin(live_.session().settings().gap);
}

int Shell::execute(const std::vector<std::string>& words)
{
    CLI::App app("", "");
    app.require_subcommand(0, 1);
    Action chosen;
    addReadCommand(app, chosen, &line_);
    addWriteCommand(app, chosen, &line_);
    addWatchCommand(app, chosen, &line_);
    addRecipeCommand(app, chosen, &line_);
    app.add_subcommand("help", "These commands; each has --help");
    app.add_subcommand("quit", "Leave the line and end; so does the end of the input");
    const auto isMeant = [&words](const CLI::App* each) {
        return each->get_name() == words.front();
    };
    if (app.get_subcommands(isMeant).empty())
        throw UsageFailure("there is no command '" + words.front() + "' here; help lists them");
    try {
        app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        throw UsageFailure(error.what());
    }
    if (!isSpokenTo_ && lines_.lacksItsEnd() && writes(app))
        throw UsageFailure(
            "this line has no end: it may have been cut off, and nothing is written");
    if (chosen)
        return runChosen(chosen);
    for (const CLI::App* each : app.get_subcommands([](const CLI::App*) { return true; }))
        std::printf("%-8s%s\n", each->get_name().c_str(), each->get_description().c_str());
    return exitDone;
}

// why: empty where that has been said.
void Shell::failed(int code, const std::string& why)
{
    if (code_ == exitDone && !isSpokenTo_)
        code_ = code;
    hasEnded_ = hasEnded_ || (stopsOnError_ && !isSpokenTo_);
    std::fflush(stdout);
    const std::string shown = shownText(why);
    if (isSpokenTo_ && !why.empty())
        std::fprintf(stderr, "dov417: %s\n", shown.c_str());
    else if (!isSpokenTo_)
        std::fprintf(stderr, "dov417: line %d: %s\n", lines_.number(),
                     !why.empty()            ? shown.c_str()
                     : code == exitDifferent ? "they differ"
                                             : "failed");
}

int runShell(const ShellOptions& options)
{
    return Shell(options).run();
}

} // namespace

void addShellCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<ShellOptions>();
    CLI::App* command =
        app.add_subcommand("shell", "Read, write, watch and recipes on a line that stays open");
    command->add_flag("--stop-on-error", options->stopsOnError,
                      "A script ends at the first line that fails; else it goes on");
    addItemOptions(*command, options->items);
    addLineUse(*command, options->line, options->items, chosen, nullptr);
    command->footer(
        "Takes read, write, watch and recipe with their words and options as lines of the standard "
        "input, typed or from a script; help lists them, quit ends, and # begins a comment. "
        "Between them the line stays open, and what was learned of its stations is kept. The "
        "options of the line, of tags and formats are the shell's; a line may name other tags and "
        "formats of its own. A controller of --simulated has station 1 and those of the tags. A "
        "script's last line writes nothing, neither to a controller nor to a recipe's file, where "
        "it lacks its line end: it may have been cut off.\n"
        "Examples:\n"
        "  printf 'write R_W:100=1500\\nread R_W:100\\n' | dov417 shell --simulated\n"
        "  dov417 shell --simulated --stop-on-error --stats\n"
        "On a real line, --port /dev/ttyUSB0 stands for --simulated.\n"
        "Exits with 0 if every line came out well, else with the exit code of the first one of a "
        "script that did not; an error names its line.");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runShell(*options); }; });
}

} // namespace dov417
