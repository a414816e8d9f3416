// What a simulated controller is told while it serves, and what it answers: each a line of JSON.
#ifndef DOV417_LIVE_CONTROLLER_ORDERS_H
#define DOV417_LIVE_CONTROLLER_ORDERS_H

#include <string>

#include "simulator/simulation.h"

namespace dov417 {

struct ControllerReport {
    simulator::Conditions conditions; // that it works under now
    simulator::FaultCounts counts;
    std::string refused; // why these are not the ones it was told last; empty where they are
};

std::string toRecord(const simulator::Conditions& conditions);

// Throws a Failure where the line is no report.
ControllerReport parseControllerReport(const std::string& line);

// The controller's side: puts it under the conditions that the line holds, and returns its report,
// as a line. What is no such line changes nothing, and is refused in the report.
std::string obey(simulator::Simulation& simulation, const std::string& line);

} // namespace dov417

#endif
