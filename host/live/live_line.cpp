#include "live/live_line.h"

#include <algorithm>

#include "line/failure.h"
#include "link/network_address.h"

namespace dov417 {

namespace {

simulator::SimulationOptions controllerFor(const SerialFormat& line, std::set<int> stations,
                                           simulator::SimulationOptions controller)
{
    stations.insert(1);
    stations.erase(0);
    controller.stations.assign(stations.begin(), stations.end());
    // At the line's speed, so that what is counted here is what a wire would give.
    controller.baudLimit = true;
    controller.line = line;
    return controller;
}

void setTimes(LineSettings& line, const LineSetup& setup)
{
    using std::chrono::milliseconds;
    const int min = setup.timeoutMinMs.value_or(0);
    if (setup.timeoutMaxMs < min)
        throw UsageFailure("--timeout-max is less than --timeout-min");
    line.isTimeoutFixed = setup.timeoutMs.has_value();
    line.minTimeout = milliseconds(min);
    line.maxTimeout = milliseconds(setup.timeoutMaxMs);
    line.timeout = milliseconds(
        setup.timeoutMs.value_or(std::clamp(defaultTimeoutMs, min, setup.timeoutMaxMs)));
    const int gap = parseNetworkAddress(setup.port) ? defaultNetworkReplyGapMs : defaultReplyGapMs;
    line.replyGap = milliseconds(setup.replyGapMs.value_or(gap));
    // What comes within the time-out is awaited all the same.
    line.horizon = std::max(line.timeout, std::chrono::duration_cast<Micros>(
                                              std::chrono::duration<double>(setup.horizonSeconds)));
    line.maxTimeout = std::min(line.maxTimeout, line.horizon);
}

// A frame goes out so much later than it is handed over.
void setDirection(LineSettings& line, const LineSetup& setup)
{
    if (!setup.direction.isWanted)
        return;
    if (setup.simulated || parseNetworkAddress(setup.port))
        throw UsageFailure((setup.simulated ? "--simulated" : setup.port) +
                           ": --rs485 is for serial ports of this machine");
    const std::chrono::milliseconds before(setup.direction.delayBeforeMs);
    line.direction = setup.direction;
    line.timeout += before;
    line.maxTimeout += before;
    line.turnaround += before;
}

} // namespace

LineSettings listeningSettings(const Library& library, const LineSetup& setup)
{
    if (setup.port.empty())
        throw UsageFailure("no line: name the port with --port PORT");
    if (isModbusTcp(setup.port))
        throw UsageFailure(setup.port + ": a Modbus TCP server hands on nothing that others say");
    LineSettings settings;
    settings.device = QString::fromStdString(setup.port);
    settings.wire = serialFormat(library, setup);
    settings.stationNames = setup.stationNames;
    setTimes(settings, setup);
    return settings;
}

LiveLine::LiveLine(const Library& library, const LineSetup& setup, const std::set<int>& stations,
                   const simulator::SimulationOptions& controller)
{
    if (setup.simulated && !setup.port.empty())
        throw UsageFailure("--port and --simulated exclude each other");
    if (!setup.simulated && setup.port.empty())
        throw UsageFailure("no line: name the port with --port PORT, or use --simulated for a "
                           "controller of the tool's own");
    std::string port = setup.port;
    settings_.wire = serialFormat(library, setup);
    if (setup.simulated) {
        controller_ = std::make_unique<ControllerProcess>(
            controllerFor(settings_.wire, stations, controller));
        port = controller_->port();
    }
    settings_.device = QString::fromStdString(port);
    setTimes(settings_, setup);
    settings_.turnaround = std::chrono::milliseconds(setup.turnaroundMs);
    setDirection(settings_, setup);
    settings_.maxProbePause = std::chrono::milliseconds(setup.maxProbeMs);
    settings_.mayMark = setup.mayMark;
    settings_.maxRegisters = setup.maxRegisters.value_or(learnedMaximum);
    settings_.stationMaxRegisters = setup.stationMaxRegisters;
    settings_.stationNames = setup.stationNames;
    if (settings_.maxRegisters > maxWordsOfARead && isModbusTcp(port))
        throw UsageFailure("--max-registers " + std::to_string(settings_.maxRegisters) +
                           ": a request of Modbus TCP has room for " +
                           std::to_string(maxWordsOfARead));
    if (!setup.log.empty())
        recording_ = std::make_unique<Recording>(
            setup.log,
            "port " + port + (parseNetworkAddress(port) ? "" : ", line " + toText(settings_.wire)),
            learnAreas(library));
}

const LineSettings& LiveLine::settings() const
{
    return settings_;
}

void LiveLine::record(const Session& session)
{
    if (recording_)
        recording_->follow(session);
}

LineObserver LiveLine::recorded(const LineObserver& observer) const
{
    if (!recording_)
        return observer;
    Recording* const log = recording_.get();
    LineObserver both = observer;
    both.sent = [log, then = observer.sent](const Transmission& frame) {
        log->began(frame);
        then(frame);
    };
    both.markerEnded = [log, then = observer.markerEnded](const Transmission& marker) {
        log->ended(marker);
        then(marker);
    };
    both.stray = [log, then = observer.stray](const Stray& stray) {
        log->strayCame(stray);
        then(stray);
    };
    both.notice = [log, then = observer.notice](const std::string& text) {
        log->note(text);
        then(text);
    };
    both.port = [log, then = observer.port](bool open, const QString& message) {
        log->note(message.toStdString());
        then(open, message);
    };
    return both;
}

void LiveLine::recordEnd(const Transmission& transmission) const
{
    if (recording_)
        recording_->ended(transmission);
}

bool LiveLine::hasLostLog() const
{
    return recording_ && recording_->hasFailed();
}

const ControllerProcess* LiveLine::controller() const
{
    return controller_.get();
}

ControllerProcess* LiveLine::controller()
{
    return controller_.get();
}

} // namespace dov417
