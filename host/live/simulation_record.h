// The options of a simulated controller as a record: one line of JSON.
#ifndef DOV417_LIVE_SIMULATION_RECORD_H
#define DOV417_LIVE_SIMULATION_RECORD_H

#include <string>

#include "simulator/simulation.h"

namespace dov417 {

std::string toRecord(const simulator::SimulationOptions& options);

// Throws a Failure where the text is no such record.
simulator::SimulationOptions parseSimulationRecord(const std::string& record);

} // namespace dov417

#endif
