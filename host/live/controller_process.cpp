#include "live/controller_process.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <utility>

#include "line/failure.h"
#include "live/run_simulation.h"
#include "live/simulation_record.h"

namespace dov417 {

namespace {

constexpr int startMilliseconds = 10000;
const std::string announcement = "port ";

} // namespace

ControllerProcess::ControllerProcess(const simulator::SimulationOptions& options)
    : channel_(child_.connectChild(), [this](const std::string& line) { answered(line); })
{
    child_.begin(controllerTask, toRecord(options));
    const std::optional<std::string> said = child_.waitForLine(startMilliseconds);
    if (!said)
        throw Failure(std::string("the simulated controller does not start: ") +
                      (child_.id() == 0 ? "it has ended" : "it says nothing"));
    const std::string& line = *said;
    if (line.compare(0, announcement.size(), announcement) != 0)
        throw Failure("the simulated controller says: " + line);
    port_ = line.substr(announcement.size());
}

ControllerProcess::~ControllerProcess()
{
    child_.endPolitely();
}

const std::string& ControllerProcess::port() const
{
    return port_;
}

long long ControllerProcess::processId() const
{
    return child_.id();
}

void ControllerProcess::setConditions(const simulator::Conditions& conditions)
{
    if (awaitsAnswer_)
        next_ = conditions;
    else
        tell(conditions);
}

void ControllerProcess::onReport(Reported reported)
{
    reported_ = std::move(reported);
}

void ControllerProcess::tell(const simulator::Conditions& conditions)
{
    awaitsAnswer_ = channel_.say(toRecord(conditions));
}

void ControllerProcess::answered(const std::string& line)
{
    awaitsAnswer_ = false;
    if (next_) {
        const simulator::Conditions next = *next_;
        next_.reset();
        tell(next);
    }
    try {
        if (reported_)
            reported_(parseControllerReport(line));
    } catch (const Failure&) {
        // The next one is another chance.
    }
}

int runControllerTask(const std::string& record, int socket)
{
    try {
        std::unique_ptr<OrderChannel> channel;
        const auto started = [&channel, socket](simulator::Simulation& simulation) {
            channel = std::make_unique<OrderChannel>(
                socket, [&channel, &simulation](const std::string& line) {
                    channel->say(obey(simulation, line));
                });
            sayPort(simulation.portName());
        };
        runSimulation(parseSimulationRecord(record), {started, sayReport});
    } catch (const std::exception& failure) {
        // Where the parent waits for the port.
        std::printf("%s\n", failure.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

} // namespace dov417
