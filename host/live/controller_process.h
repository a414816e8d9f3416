// A simulated controller of our own, in a process of its own.
//
// So its share of the processor is not taken for the host's, and the host meets it only through the
// pseudo-terminal, as it would a controller.
#ifndef DOV417_LIVE_CONTROLLER_PROCESS_H
#define DOV417_LIVE_CONTROLLER_PROCESS_H

#include <string>

#include "live/child_process.h"
#include "simulator/simulation.h"

namespace dov417 {

class ControllerProcess {
public:
    // Waits until the controller says where it is. Throws a Failure with what it said otherwise.
    explicit ControllerProcess(const simulator::SimulationOptions& options);
    ~ControllerProcess();
    ControllerProcess(const ControllerProcess&) = delete;
    ControllerProcess& operator=(const ControllerProcess&) = delete;

    // The pseudo-terminal to open.
    const std::string& port() const;
    long long processId() const;

private:
    ChildProcess child_;
    std::string port_;
};

// The child's side.
constexpr const char* controllerTask = "controller";
int runControllerTask(const std::string& record);

} // namespace dov417

#endif
