#include "tool/live_line.h"

#include <cstdio>
#include <set>

#include "line/failure.h"
#include "line/frame_text.h"

namespace dov417 {

namespace {

simulator::SimulationOptions controllerOf(const LineOptions& options,
                                          const std::vector<Item>& items,
                                          simulator::SimulationOptions controller)
{
    std::set<int> stations = {1};
    for (const Item& item : items)
        if (item.address.station > 0)
            stations.insert(item.address.station);
    controller.stations.assign(stations.begin(), stations.end());
    // At the line's speed, so that what is counted here is what a wire would give.
    controller.baudLimit = true;
    if (!options.line.empty())
        controller.line = parseRtuFormat(options.line);
    return controller;
}

const char* strayText(StrayKind kind)
{
    switch (kind) {
    case StrayKind::otherStation:
        return "from another station, not handed on";
    case StrayKind::otherFunction:
        return "for another function, not handed on";
    case StrayKind::otherRequest:
        return "answers another request, not handed on";
    case StrayKind::noise:
        return "noise";
    case StrayKind::echo:
        return "echo of the request, stripped";
    case StrayKind::late:
        return "late or surplus bytes, flushed";
    }
    return "";
}

} // namespace

LiveLine::LiveLine(const Library& library, const LineOptions& options,
                   const std::vector<Item>& items, const simulator::SimulationOptions& controller)
    : library_(library), options_(options), port_(options.port)
{
    if (options.simulated && !options.port.empty())
        throw UsageFailure("--port and --simulated exclude each other");
    if (!options.simulated && options.port.empty())
        throw UsageFailure("no line: name the port with --port DEVICE, or use --simulated for a "
                           "controller of the tool's own");
    shutdown_ = std::make_unique<Shutdown>([this]() {
        interruption_ = "interrupted";
        end();
    });
    if (options.simulated) {
        controller_ = std::make_unique<ControllerProcess>(controllerOf(options, items, controller));
        port_ = controller_->port();
    }
    if (!options.log.empty()) {
        areas_ = learnAreas(library);
        log_.open(options.log);
        log_.remark("port " + port_ + ", line " + toText(serialFormat(library, options)));
    }
    portTimer_.setSingleShot(true);
    QObject::connect(&portTimer_, &QTimer::timeout, &portTimer_, [this]() {
        interruption_ = "the port did not come back";
        end();
    });
}

LineSettings LiveLine::lineSettings() const
{
    LineSettings settings;
    settings.device = QString::fromStdString(port_);
    settings.wire = serialFormat(library_, options_);
    settings.timeout = std::chrono::milliseconds(options_.timeoutMs);
    settings.turnaround = options_.broadcastTurnaround();
    return settings;
}

SessionSettings LiveLine::sessionSettings() const
{
    return {options_.retries, options_.mergeGap()};
}

RunnerEvents LiveLine::runnerEvents()
{
    RunnerEvents events;
    events.port = [this](bool open, const std::string& message) { portChanged(open, message); };
    if (!log_.isOpen())
        return events;
    events.sent = [this](const QByteArray& bytes) { logSent(bytes); };
    events.received = [this](const Reception& reception) { logReceived(reception); };
    events.stray = [this](const Stray& stray) { logStray(stray); };
    return events;
}

void LiveLine::beQuiet()
{
    isQuiet_ = true;
}

void LiveLine::endWithoutPort(std::chrono::milliseconds patience)
{
    endsWithoutPort_ = true;
    portTimer_.setInterval(patience);
}

void LiveLine::portChanged(bool open, const std::string& message)
{
    log_.add(Direction::note, QByteArray(), message);
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

void LiveLine::logSent(const QByteArray& bytes)
{
    lastRequest_ = bytes;
    log_.add(Direction::sent, bytes, requestText(bytes, areas_));
}

void LiveLine::logReceived(const Reception& reception)
{
    switch (reception.result) {
    case LineResult::reply:
    case LineResult::exception:
        log_.add(Direction::received, reception.bytes,
                 replyText(reception.bytes, lastRequest_, areas_));
        break;
    case LineResult::timeout:
        log_.add(Direction::note, QByteArray(),
                 "no reply within " + std::to_string(options_.timeoutMs) + " ms");
        break;
    case LineResult::broadcast:
        break;
    }
}

void LiveLine::logStray(const Stray& stray)
{
    log_.add(Direction::stray, stray.bytes, strayText(stray.kind));
}

void LiveLine::run()
{
    if (!ended_)
        loop_.exec();
}

void LiveLine::end()
{
    ended_ = true;
    loop_.quit();
}

const std::string& LiveLine::interruption() const
{
    return interruption_;
}

int LiveLine::exitCode(bool complete) const
{
    if (log_.hasFailed())
        std::fprintf(stderr, "dov417: the log %s could not be written\n", options_.log.c_str());
    return complete && !log_.hasFailed() ? exitDone : exitFailed;
}

const ControllerProcess* LiveLine::controller() const
{
    return controller_.get();
}

} // namespace dov417
