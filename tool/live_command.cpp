#include "tool/live_command.h"

#include <csignal>
#include <cstdio>
#include <utility>

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
    : options_(options), shutdown_([this]() {
          isToLeave_ = isToLeave_ || interruptLeaves_ || shutdown_.signalNumber() != SIGINT;
          interrupt();
      }),
      line_(library, options, stationsOf(items), controller),
      session_(library, sessionSettings(options))
{
    portTimer_.setSingleShot(true);
    QObject::connect(&portTimer_, &QTimer::timeout, &portTimer_,
                     [this]() { giveUp("the port did not come back"); });
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
    if (session_.isOpen())
        return;
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
    if (session_.isOpen() && !session_.statistics().portIsOpen)
        portTimer_.start();
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
    isRunning_ = true;
    if (!ended_)
        loop_.exec();
    session_.tellAll();
    isRunning_ = false;
}

void LiveCommand::stayOpen(bool interruptLeaves, std::function<void()> idle)
{
    interruptLeaves_ = interruptLeaves;
    staysOpen_ = true;
    idle_ = std::move(idle);
}

void LiveCommand::begin(int gap)
{
    isQuiet_ = countsInJson_ = keepsOutput_ = endsWithoutPort_ = ended_ = false;
    portTimer_.stop();
    cycles_.reset();
    interruption_.clear();
    const SessionSettings settings = session_.settings();
    if (gap != settings.gap)
        session_.setSettings({settings.retries, gap});
}

void LiveCommand::leave()
{
    begin(session_.settings().gap);
    staysOpen_ = false;
    end();
    run();
}

bool LiveCommand::isToLeave() const
{
    return isToLeave_;
}

void LiveCommand::end()
{
    if (staysOpen_) {
        endNow();
        return;
    }
    if (isEnding_)
        return;
    isEnding_ = true;
    waitTimer_.start();
    session_.finish([this]() { endNow(); });
}

void LiveCommand::endAfterCycles(long long cycles)
{
    if (!staysOpen_) {
        session_.finishAfterCycles(cycles, [this]() { end(); });
        return;
    }
    cycles_ = std::make_unique<QObject>();
    QObject::connect(&session_, &Session::cycleEnded, cycles_.get(),
                     [this, left = cycles]() mutable {
                         if (--left == 0)
                             end();
                     });
}

void LiveCommand::interrupt()
{
    if (isEnding_) {
        endNow();
        return;
    }
    if (staysOpen_ && !isRunning_)
        idle_();
    else
        giveUp("interrupted");
}

void LiveCommand::giveUp(const std::string& reason)
{
    interruption_ = reason;
    if (endsWithoutPort_)
        letGo(reason);
    end();
}

// Where the line is left, that ends it all, once it is quiet.
void LiveCommand::letGo(const std::string& reason)
{
    if (!staysOpen_)
        return;
    session_.watch({});
    session_.endRequests(reason);
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
    if (staysOpen_)
        return complete ? exitDone : exitFailed;
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
