#include "live/run_simulation.h"

#include <QEventLoop>
#include <cstdio>
#include <string>

#include "line/failure.h"
#include "live/shutdown.h"

namespace dov417 {

namespace {

// Why its dump could not be written; empty where it was.
std::string stopped(simulator::Simulation& simulation)
{
    try {
        simulation.stop();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return std::string();
}

} // namespace

void sayPort(const std::string& port)
{
    std::printf("port %s\n", port.c_str());
    std::fflush(stdout); // whoever started this waits for it
}

void sayReport(const std::string& report)
{
    std::printf("%s\n", report.c_str());
}

void runSimulation(const simulator::SimulationOptions& options)
{
    runSimulation(options,
                  {[](const simulator::Simulation& simulation) { sayPort(simulation.portName()); },
                   sayReport});
}

void runSimulation(const simulator::SimulationOptions& options, const SimulationTeller& teller)
{
    simulator::Simulation simulation(options);
    QEventLoop loop;
    std::string lost;
    const Shutdown shutdown([&loop]() { loop.quit(); });
    simulation.start();
    QObject::connect(&simulation.line(), &simulator::LineServer::lost, &loop,
                     [&loop, &lost](const QString& reason) {
                         lost = reason.toStdString();
                         loop.quit();
                     });
    teller.started(simulation);
    loop.exec();
    const std::string unwritten = stopped(simulation);
    teller.ended(simulation.report());
    if (!lost.empty())
        throw Failure(lost);
    if (!unwritten.empty())
        throw Failure(unwritten);
}

} // namespace dov417
