#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <sys/resource.h>
#include <unistd.h>

#include "line/failure.h"
#include "tool/demo_round.h"
#include "tool/json_output.h"
#include "tool/live_command.h"
#include "tool/screen.h"
#include "tool/troubles.h"
#include "tool/view_table.h"

namespace dov417 {

namespace {

constexpr int pauseMilliseconds = 2000;           // between two rounds of writes
constexpr std::chrono::seconds roundPatience(20); // for a round that is under way at the end
constexpr double defaultSeconds = 5;

struct DemoOptions {
    LineOptions line;
    double seconds = 0; // 0: until Ctrl-C on a terminal, else the default
    bool json = false;
};

// Every register type, live values and plain memory, in two stations.
const char* const watched[] = {"1/I_bit:0.0..0.3",
                               "1/Q_bit:0.0..0.3",
                               "1/M_bit:1.0..1.3",
                               "1/R_bit:100.0..100.3",
                               "1/I_W:1",
                               "1/Q_W:9",
                               "1/M_W:8..9",
                               "1/R_W:0..3",
                               "1/R_W:110..112",
                               "1/R_D:120..123",
                               "1/T:0",
                               "1/T:100",
                               "1/C:0",
                               "1/C:100",
                               "1/I_bit:9.0",
                               "1/Q_bit:10.4",
                               "1/I_W:10",
                               "2/I_bit:0.0..0.3",
                               "2/Q_bit:0.0..0.3",
                               "2/M_bit:1.0..1.3",
                               "2/R_bit:100.0..100.3",
                               "2/I_W:1",
                               "2/Q_W:1",
                               "2/M_W:8",
                               "2/R_W:32..33",
                               "2/R_D:120..121",
                               "2/T:1",
                               "2/C:1"};

// Timers and counters that do not run by themselves, so that what is written stays.
simulator::SimulationOptions controllerOptions()
{
    simulator::SimulationOptions options;
    options.hold = {"1/T:100", "1/C:100"};
    return options;
}

double secondsOf(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double ownProcessorSeconds()
{
    rusage usage = rusage();
    getrusage(RUSAGE_SELF, &usage);
    return secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
}

double processorSeconds(long long process)
{
    const std::string name = "/proc/" + std::to_string(process) + "/stat";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name.c_str(), "r"),
                                                               &std::fclose);
    unsigned long user = 0;
    unsigned long system = 0;
    if (!file || std::fscanf(file.get(), // NOLINT(cert-err34-c): the kernel's own numbers
                             "%*d (%*[^)]) %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %lu %lu",
                             &user, &system) != 2)
        return 0;
    return static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

class Demo {
public:
    Demo(const Library& library, const DemoOptions& options, const std::vector<Item>& items)
        : labels_(labelViews(library, items)), addresses_(addressesOf(items)), json_(options.json),
          live_(library, options.line, items, controllerOptions()),
          round_(library, live_.session(), [this]() { roundEnded(); })
    {
        const bool untilAsked = options.seconds <= 0 && Screen::isTerminal() && !json_;
        if (!untilAsked)
            seconds_ = options.seconds > 0 ? options.seconds : defaultSeconds;
        pause_.setSingleShot(true);
        QObject::connect(&pause_, &QTimer::timeout, &pause_, [this]() { round_.start(); });
        QObject::connect(&redraw_, &QTimer::timeout, &redraw_, [this]() { draw(); });
        QObject::connect(&live_.session(), &Session::abandoned, &redraw_,
                         [this](const std::string& request, const std::string& reason) {
                             lastTrouble_ = "given up: " + request + ": " + reason;
                         });
        QObject::connect(&live_.session(), &Session::noticed, &redraw_,
                         [this](const std::string& text) { lastTrouble_ = text; });
        QObject::connect(&live_.session(), &Session::portChanged, &redraw_,
                         [this](bool open, const std::string& message) {
                             if (!open)
                                 lastTrouble_ = message;
                         });
    }

    int run()
    {
        if (json_)
            live_.countInJson();
        if (Screen::isTerminal() && !json_) {
            screen_ = std::make_unique<Screen>();
            live_.beQuiet();
            redraw_.start(redrawMilliseconds);
        }
        live_.open();
        live_.session().watch(addresses_);
        round_.start();
        if (seconds_ > 0) {
            const std::chrono::milliseconds time = timerSpan(seconds_);
            QTimer::singleShot(time, &redraw_, [this]() { timeIsUp(); });
            QTimer::singleShot(time + roundPatience, &redraw_, [this]() { live_.end(); });
        }
        live_.run();
        screen_.reset();
        return summary();
    }

private:
    void roundEnded()
    {
        if (timeIsUp_)
            live_.end();
        else
            pause_.start(pauseMilliseconds);
    }

    void timeIsUp()
    {
        timeIsUp_ = true;
        if (!round_.isUnderWay())
            live_.end();
    }

    std::vector<std::string> foot()
    {
        std::vector<std::string> lines =
            briefStatistics(live_.session().statistics(), Clock::now());
        lines.push_back(round_.status());
        lines.push_back(processorText());
        if (!lastTrouble_.empty())
            lines.push_back(lastTrouble_);
        return lines;
    }

    std::string processorText() const
    {
        const double seconds = std::chrono::duration<double>(Clock::now() - started_).count();
        char text[96];
        std::snprintf(text, sizeof text, "processor: host %.1f %%, controller %.1f %%",
                      100 * ownProcessorSeconds() / seconds,
                      100 * processorSeconds(live_.controller()->processId()) / seconds);
        return text;
    }

    void draw()
    {
        std::vector<std::string> lines = foot();
        lines.emplace_back(live_.isWaiting() ? waitingForTheLastReply : "Ctrl-C ends");
        screen_->draw(viewTable(live_.session().views(), labels_, Clock::now()), {}, lines);
    }

    void printSummary()
    {
        for (const std::string& row : viewTable(live_.session().views(), labels_, Clock::now()))
            std::printf("%s\n", row.c_str());
        std::printf("\n");
        for (const std::string& row : foot())
            std::printf("%s\n", row.c_str());
        std::fflush(stdout);
    }

    int summary()
    {
        if (!json_)
            printSummary();
        std::vector<std::string> problems = round_.problems();
        std::vector<std::pair<std::string, std::string>> wrong;
        for (std::size_t i = 0; i < live_.session().views().size(); ++i)
            if (!live_.session().views().at(i).hasValue)
                wrong.emplace_back(labels_.at(i).name, "no value came");
        for (const std::string& line : grouped(wrong))
            problems.push_back(line);
        // A person who ends the demo early has not found a fault.
        if (live_.interruption().empty() && (round_.completed() == 0 || round_.isUnderWay()))
            problems.push_back("the round of writes did not end");
        if (json_)
            sayJson({{"rounds", round_.completed()}, {"problems", problems}});
        for (const std::string& problem : problems)
            std::fprintf(stderr, "dov417: %s\n", problem.c_str());
        if (problems.empty() && !json_)
            std::printf("Every address got its value, every write was read back.\n");
        return live_.finish(problems.empty());
    }

    std::vector<ViewLabel> labels_;
    std::vector<Address> addresses_;
    bool json_;
    double seconds_ = 0; // 0: no end
    bool timeIsUp_ = false;
    std::string lastTrouble_;
    Clock::time_point started_ = Clock::now();
    std::unique_ptr<Screen> screen_;
    QTimer redraw_;
    QTimer pause_;
    LiveCommand live_;
    DemoRound round_;
};

int runDemo(DemoOptions options)
{
    options.line.simulated = options.line.port.empty();
    if (!options.line.simulated)
        throw UsageFailure("the demo brings its own controller; on a port there is watch");
    const Library library(options.line.library);
    const std::vector<std::string> texts(std::begin(watched), std::end(watched));
    const std::vector<Item> items = Items(library, ItemSource()).chosen(texts, Access::read);
    return Demo(library, options, items).run();
}

} // namespace

void addDemoCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<DemoOptions>();
    CLI::App* command =
        app.add_subcommand("demo", "The driver against a simulated controller, without hardware");
    command
        ->add_option("--seconds", options->seconds,
                     "End after so many seconds; else Ctrl-C ends it, or 5 seconds where there is "
                     "no terminal")
        ->option_text("N")
        ->check(positive);
    addJsonFlag(*command, chosen, options->json);
    addLineOptions(*command, options->line);
    command->footer("Starts a controller on a pseudo-terminal, polls all register types of two "
                    "stations, writes values and reads them back, moves a recipe to the controller "
                    "and back.\n"
                    "Examples:\n"
                    "  dov417 demo\n"
                    "  dov417 demo --seconds 10 --log demo.log\n"
                    "Exits with 1 if an address never got a value or a written value was not read "
                    "back.");
    command->callback([options, &chosen]() { chosen = [options]() { return runDemo(*options); }; });
}

} // namespace dov417
