// A simulated controller of our own, in a process of its own.
//
// So its share of the processor is not taken for the host's, and the host meets it only through the
// pseudo-terminal, as it would a controller.
#ifndef DOV417_LIVE_CONTROLLER_PROCESS_H
#define DOV417_LIVE_CONTROLLER_PROCESS_H

#include <functional>
#include <optional>
#include <string>

#include "live/child_process.h"
#include "live/controller_orders.h"
#include "live/order_channel.h"
#include "simulator/simulation.h"

namespace dov417 {

class ControllerProcess {
public:
    using Reported = std::function<void(const ControllerReport& report)>;

    // Waits until the controller says where it is. Throws a Failure with what it said otherwise.
    explicit ControllerProcess(const simulator::SimulationOptions& options);
    ~ControllerProcess();
    ControllerProcess(const ControllerProcess&) = delete;
    ControllerProcess& operator=(const ControllerProcess&) = delete;

    // The pseudo-terminal to open.
    const std::string& port() const;
    long long processId() const;

    // Puts it under other conditions, never waiting for it: once it has answered what it was told
    // before, and of several the latest. Each answer is reported, from the event loop of the thread
    // that made this; so the same conditions once more ask for a report.
    void setConditions(const simulator::Conditions& conditions);
    // It must not destroy this.
    void onReport(Reported reported);

private:
    void tell(const simulator::Conditions& conditions);
    void answered(const std::string& line);

    ChildProcess child_;
    std::string port_;
    OrderChannel channel_;
    Reported reported_;
    bool awaitsAnswer_ = false;
    std::optional<simulator::Conditions> next_;
};

// The child's side.
constexpr const char* controllerTask = "controller";
int runControllerTask(const std::string& record, int socket);

} // namespace dov417

#endif
