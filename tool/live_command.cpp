#include "tool/live_command.h"

#include <cstdio>

#include "line/failure.h"
#include "tool/statistics_json.h"

namespace dov417 {

namespace {

constexpr std::chrono::milliseconds noticeable(300); // a wait at the end

std::set<int> stationsOf(const std::vector<Item>& items)
{
    std::set<int> stations;
    for (const Item& item : items)
        stations.insert(item.address.station);
    return stations;
}

} // namespace

const char* const waitingForTheLastReply = "waiting for the last reply; Ctrl-C again ends at once";

LiveCommand::LiveCommand(const Library& library, const LineOptions& options,
                         const std::vector<Item>& items,
                         const simulator::SimulationOptions& controller)
    : options_(options), shutdown_([this]() { interrupt(); }),
      line_(library, options, stationsOf(items), controller),
      session_(library, sessionSettings(options))
{
    portTimer_.setSingleShot(true);
    QObject::connect(&portTimer_, &QTimer::timeout, &portTimer_, [this]() {
        interruption_ = "the port did not come back";
        end();
    });
    waitTimer_.setSingleShot(true);
    waitTimer_.setInterval(noticeable);
    QObject::connect(&waitTimer_, &QTimer::timeout, &waitTimer_, [this]() {
        isWaiting_ = true;
        if (!isQuiet_)
            std::fprintf(stderr, "dov417: %s\n", waitingForTheLastReply);
    });
    line_.record(session_);
    QObject::connect(&session_, &Session::noticed, &portTimer_, [this](const std::string& text) {
        if (!isQuiet_)
            std::fprintf(stderr, "dov417: %s\n", text.c_str());
    });
    QObject::connect(&session_, &Session::portChanged, &portTimer_,
                     [this](bool open, const std::string& message) { portChanged(open, message); });
}

Session& LiveCommand::session()
{
    return session_;
}

void LiveCommand::open()
{
    const Result result = session_.open(line_.settings());
    if (!result.accepted)
        throw Failure(result.reason);
    if (session_.statistics().portIsOpen)
        return;
    // A connection is made beside the event loop, and Ctrl-C ends that too.
    isConnecting_ = true;
    loop_.exec();
    isConnecting_ = false;
    if (!refusal_.empty() || !interruption_.empty())
        throw Failure(refusal_.empty() ? interruption_ : refusal_);
}

void LiveCommand::beQuiet()
{
    isQuiet_ = true;
}

void LiveCommand::countInJson()
{
    countsInJson_ = true;
}

void LiveCommand::keepOutput()
{
    keepsOutput_ = true;
}

void LiveCommand::endWithoutPort(std::chrono::milliseconds patience)
{
    endsWithoutPort_ = true;
    portTimer_.setInterval(patience);
}

void LiveCommand::portChanged(bool open, const std::string& message)
{
    if (isConnecting_) {
        refusal_ = open ? std::string() : message;
        loop_.quit();
        return;
    }
    if (open) {
        portTimer_.stop();
        if (wasLost_ && !isQuiet_)
            std::fprintf(stderr, "dov417: %s again\n", message.c_str());
        return;
    }
    wasLost_ = true;
    if (!isQuiet_)
        std::fprintf(stderr, "dov417: %s; waiting for it\n", message.c_str());
    if (endsWithoutPort_ && !portTimer_.isActive())
        portTimer_.start();
}

void LiveCommand::run()
{
    if (!ended_)
        loop_.exec();
    session_.tellAll();
}

void LiveCommand::end()
{
    if (isEnding_)
        return;
    isEnding_ = true;
    waitTimer_.start();
    session_.finish([this]() { endNow(); });
}

void LiveCommand::endAfterCycles(long long cycles)
{
    session_.finishAfterCycles(cycles, [this]() { end(); });
}

void LiveCommand::interrupt()
{
    if (isEnding_) {
        endNow();
        return;
    }
    interruption_ = "interrupted";
    end();
}

void LiveCommand::endNow()
{
    waitTimer_.stop();
    ended_ = true;
    loop_.quit();
}

bool LiveCommand::isWaiting() const
{
    return isWaiting_;
}

const std::string& LiveCommand::interruption() const
{
    return interruption_;
}

int LiveCommand::finish(bool complete)
{
    const Clock::time_point now = Clock::now();
    if (options_.stats)
        std::fprintf(keepsOutput_ ? stderr : stdout, "%s",
                     countsInJson_ ? (statisticsJson(session_.statistics(), now) + "\n").c_str()
                                   : fullStatistics(session_.statistics(), now).c_str());
    if (line_.hasLostLog())
        std::fprintf(stderr, "dov417: the log %s could not be written\n", options_.log.c_str());
    return complete && !line_.hasLostLog() ? exitDone : exitFailed;
}

const ControllerProcess* LiveCommand::controller() const
{
    return line_.controller();
}

} // namespace dov417
