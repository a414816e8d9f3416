// A simulated controller from its start to its end, as a program of its own.
#ifndef DOV417_LIVE_RUN_SIMULATION_H
#define DOV417_LIVE_RUN_SIMULATION_H

#include <functional>
#include <string>

#include "simulator/simulation.h"

namespace dov417 {

// "port PORT" and the report, each with its end of line, for whoever started the program.
void sayPort(const std::string& port);
void sayReport(const std::string& report);

// Tells once it answers at its port, serves until a signal ends it, and tells what it counted; or
// prints these. Throws a Failure if it cannot start, loses its port or cannot write its dump.
struct SimulationTeller {
    std::function<void(simulator::Simulation& simulation)> started;
    std::function<void(const std::string& report)> ended;
};
void runSimulation(const simulator::SimulationOptions& options);
void runSimulation(const simulator::SimulationOptions& options, const SimulationTeller& teller);

} // namespace dov417

#endif
