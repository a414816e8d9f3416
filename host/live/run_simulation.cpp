#include "live/run_simulation.h"

#include <QEventLoop>
#include <cstdio>

#include "line/failure.h"
#include "live/shutdown.h"

namespace dov417 {

void runSimulation(const simulator::SimulationOptions& options)
{
    simulator::Simulation simulation(options);
    QEventLoop loop;
    QString lost;
    const Shutdown shutdown([&loop]() { loop.quit(); });
    QString error;
    if (!simulation.start(&error))
        throw Failure(error.toStdString());
    QObject::connect(&simulation.line(), &simulator::LineServer::lost, &loop,
                     [&loop, &lost](const QString& reason) {
                         lost = reason;
                         loop.quit();
                     });
    // Whoever started this waits for the line that names the port.
    std::printf("port %s\n", qPrintable(simulation.portName()));
    std::fflush(stdout);
    loop.exec();
    const bool stopped = simulation.stop(&error);
    std::printf("%s\n", qPrintable(simulation.report()));
    if (!lost.isEmpty())
        throw Failure(lost.toStdString());
    if (!stopped)
        throw Failure(error.toStdString());
}

} // namespace dov417
