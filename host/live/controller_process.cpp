#include "live/controller_process.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "line/failure.h"
#include "live/run_simulation.h"
#include "live/simulation_record.h"

namespace dov417 {

namespace {

constexpr int startMilliseconds = 10000;
const std::string announcement = "port ";

} // namespace

ControllerProcess::ControllerProcess(const simulator::SimulationOptions& options)
{
    child_.begin(controllerTask, toRecord(options));
    while (!child_.canReadLine())
        if (!child_.waitForReadyRead(startMilliseconds))
            throw Failure("the simulated controller does not start: " +
                          child_.errorString().toStdString());
    const std::string line = child_.readLine().trimmed().toStdString();
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
    return child_.processId();
}

int runControllerTask(const std::string& record)
{
    try {
        runSimulation(parseSimulationRecord(record));
    } catch (const std::exception& failure) {
        // Where the parent waits for the port.
        std::printf("%s\n", failure.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

} // namespace dov417
