// A simulated controller from its start to its end, as a program of its own.
#ifndef DOV417_LIVE_RUN_SIMULATION_H
#define DOV417_LIVE_RUN_SIMULATION_H

#include <functional>
#include <string>

#include "simulator/simulation.h"

namespace dov417 {

// Prints "port PORT" once it answers there, serves until a signal ends it, and prints what it
// counted; or has these told. Throws a Failure if it cannot start, loses its port or cannot write
// its dump.
struct SimulationTeller {
    std::function<void(const std::string& port)> started;
    std::function<void(const std::string& report)> ended;
};
void runSimulation(const simulator::SimulationOptions& options);
void runSimulation(const simulator::SimulationOptions& options, const SimulationTeller& teller);

} // namespace dov417

#endif
