#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <csv.h>
#include <ctime>
#include <functional>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>

#include "line/failure.h"
#include "text/json_value.h"
#include "tool/live_command.h"
#include "tool/screen.h"
#include "tool/troubles.h"
#include "tool/view_table.h"

namespace dov417 {

namespace {

constexpr int millisecondsPerSecond = 1000;
constexpr std::size_t maxTroubleLines = 10; // a minute

struct WatchOptions {
    LineOptions line;
    ItemOptions items;
    std::string csv;
    bool json = false;
    long long cycles = 0; // 0: no end
    double seconds = 0;   // 0: no end
};

std::string timeText()
{
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millis =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() %
        millisecondsPerSecond;
    std::tm local = std::tm();
    localtime_r(&seconds, &local);
    char text[64];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    std::snprintf(text + length, sizeof text - length, ".%03lld", static_cast<long long>(millis));
    return text;
}

// Also whether the file took it.
bool writeRow(std::FILE* file, const std::vector<std::string>& fields)
{
    for (std::size_t i = 0; i < fields.size(); ++i) {
        std::fputs(i == 0 ? "" : ",", file);
        csv_fwrite(file, fields.at(i).data(), fields.at(i).size());
    }
    std::fputs("\n", file);
    return std::fflush(file) == 0;
}

// Where changes are told: the table, lines of text or JSON, and a CSV file.
class Teller {
public:
    // outputLost: a file or the terminal takes nothing any more.
    Teller(const WatchOptions& options, const std::vector<ViewLabel>& labels,
           const std::function<void()>& outputLost)
        : json_(options.json), labels_(labels), csvName_(options.csv), outputLost_(outputLost),
          troubles_(options.json ? std::numeric_limits<std::size_t>::max() : maxTroubleLines)
    {
        if (!options.json && Screen::isTerminal())
            screen_ = std::make_unique<Screen>();
        if (options.csv.empty())
            return;
        csv_.reset(std::fopen(csvName_.c_str(), "w"));
        if (!csv_ || !writeRow(csv_.get(), {"time", "name", "address", "value", "previous"}))
            throw Failure("cannot write " + csvName_ + ": " + std::strerror(errno));
    }

    void tell(const View& view, std::size_t index)
    {
        const ViewLabel& label = labels_.at(index);
        const std::string value = valueText(view, label);
        const std::string previous = previousText(view, label);
        if (csv_ && !writeRow(csv_.get(), {timeText(), label.name, label.address, value, previous}))
            outputLost_();
        if (json_) {
            nlohmann::ordered_json object = {{"time", timeText()},
                                             {"name", label.name},
                                             {"address", label.address},
                                             {"value", jsonValue(value)}};
            if (!previous.empty())
                object["previous"] = jsonValue(previous);
            say(object.dump());
        } else if (!screen_) {
            say(timeText() + " " + label.name + " = " + value +
                (previous.empty() ? "" : " (was " + previous + ")"));
        }
    }

    void tellAbandoned(const std::string& request, const std::string& reason, Reason why)
    {
        lastTrouble_ = timeText() + " given up: " + request + ": " + reason;
        if (!troubles_.isNews(request, why, reason, Clock::now()))
            return;
        if (json_) {
            const nlohmann::ordered_json object = {{"time", timeText()},
                                                   {"abandoned", request},
                                                   {"why", keyOf(why)},
                                                   {"reason", reason}};
            say(object.dump());
        } else if (!screen_) {
            std::fprintf(stderr, "%s\n", lastTrouble_.c_str());
            if (troubles_.isFull())
                std::fprintf(stderr,
                             "dov417: what is given up besides is counted and told at the end\n");
        }
    }

    void tellPort(bool open, const std::string& message)
    {
        if (!open || !lastTrouble_.empty())
            tellNotice(message);
    }

    void tellNotice(const std::string& text)
    {
        lastTrouble_ = timeText() + " " + text;
        if (json_)
            say(nlohmann::ordered_json{{"time", timeText()}, {"notice", text}}.dump());
    }

    // What was said once and came again.
    void tellUnsaid()
    {
        std::vector<std::pair<std::string, std::string>> lines;
        for (const Trouble& each : troubles_.unsaid()) {
            if (json_)
                say(nlohmann::ordered_json{{"time", timeText()},
                                           {"abandoned", each.what},
                                           {"why", keyOf(each.why)},
                                           {"reason", each.reason},
                                           {"times", each.times}}
                        .dump());
            else
                lines.emplace_back(each.what + " " + std::to_string(each.times) +
                                       (each.times == 1 ? " time" : " times"),
                                   each.reason);
        }
        for (const std::string& line : grouped(lines))
            std::fprintf(stderr, "dov417: given up: %s\n", line.c_str());
    }

    void draw(Session& session, bool isWaiting)
    {
        if (!screen_)
            return;
        const Clock::time_point now = Clock::now();
        const LinkStatistics& statistics = session.statistics();
        std::vector<std::string> foot = briefStatistics(statistics, now);
        if (!lastTrouble_.empty())
            foot.push_back("last trouble: " + lastTrouble_);
        if (isWaiting)
            foot.emplace_back(waitingForTheLastReply);
        screen_->draw(viewTable(session.views(), labels_, now), requestStatistics(statistics),
                      foot);
    }

    bool hasScreen() const
    {
        return screen_ != nullptr;
    }
    void leaveScreen()
    {
        screen_.reset();
    }
    void requireComplete() const
    {
        if (csv_ && std::ferror(csv_.get()) != 0)
            throw Failure("cannot write " + csvName_);
    }

private:
    void say(const std::string& text)
    {
        std::printf("%s\n", text.c_str());
        if (std::fflush(stdout) != 0)
            outputLost_();
    }

    struct CloseFile {
        void operator()(std::FILE* file) const
        {
            std::fclose(file);
        }
    };

    bool json_;
    std::vector<ViewLabel> labels_;
    std::string csvName_;
    std::function<void()> outputLost_;
    std::unique_ptr<Screen> screen_;
    std::unique_ptr<std::FILE, CloseFile> csv_;
    std::string lastTrouble_;
    Troubles troubles_;
};

int runWatch(const WatchOptions& options)
{
    const Library library(options.line.library);
    const std::vector<Item> items =
        Items(library, options.items.source).chosen(options.items.arguments, Access::read);
    const std::vector<ViewLabel> labels = labelViews(library, items);
    LiveCommand live(library, options.line, items);
    Session& session = live.session();
    Teller teller(options, labels, [&live]() { live.end(); });

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
    if (teller.hasScreen()) {
        live.beQuiet();
        redraw.start(redrawMilliseconds);
    }
    if (options.seconds > 0)
        QTimer::singleShot(timerSpan(options.seconds), &redraw, [&live]() { live.end(); });
    live.open();
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
    command->add_option("--csv", options->csv, "One row a change into this file")
        ->option_text("FILE");
    command->add_flag("--json", options->json, "One JSON object a change, a line each");
    command->add_option("--cycles", options->cycles, "End after so many cycles")
        ->option_text("N")
        ->check(positive);
    command->add_option("--seconds", options->seconds, "End after so many seconds")
        ->option_text("N")
        ->check(positive);
    addLineOptions(*command, options->line);
    command->footer(
        "On a terminal a table redraws in place; else each change is a line. Ctrl-C ends it.\n"
        "Examples:\n"
        "  dov417 watch --simulated R_W:0..3 I_bit:0.0..0.7 T:5 C:0 --seconds 5\n"
        "  dov417 watch --simulated R_W:0 --json --cycles 100\n"
        "  dov417 watch --simulated R_W:0..3 --csv values.csv --stats --seconds 2\n"
        "On a real line, --port /dev/ttyUSB0 stands for --simulated.\n"
        "Exits with 1 if a value is not good at the end: it never came, or it is old since its "
        "request has been failing or the port has gone.");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runWatch(*options); }; });
}

} // namespace dov417
