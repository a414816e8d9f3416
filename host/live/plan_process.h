// A plan made beside a session that lives: in a child process, which has a driver of its own.
#ifndef DOV417_LIVE_PLAN_PROCESS_H
#define DOV417_LIVE_PLAN_PROCESS_H

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "line/serial_format.h"
#include "live/child_process.h"
#include "session/planning.h"
#include "text/addresses.h"

namespace dov417 {

struct PlanOrder {
    std::string library; // its file: Library::path()
    std::vector<Address> addresses;
    SerialFormat format;
    std::chrono::microseconds responseTime{0}; // what a controller takes before it answers
    int gap = 0;                               // words
    int maxRegisters = noMaximum;              // in one request, 16 coils for each
    std::map<int, int> stationMaxRegisters;    // the same of stations that have their own
};

// What a Planner says.
struct PlanReport {
    Plan plan;
    std::vector<Stretch> uncovered; // words that no request reads
    std::vector<Stretch> divided;   // 32-bit values that come with two requests
    std::vector<GapOutcome> outcomes;
};

// Returns at once; tells the report, or in a sentence why there is none, from the event loop. What
// it calls may destroy it. Destroyed earlier, it gives up and tells nothing.
class PlanProcess {
public:
    using Done = std::function<void(const PlanReport& report)>;
    using Failed = std::function<void(const std::string& reason)>;

    PlanProcess(const PlanOrder& order, Done done, Failed failed);
    PlanProcess(const PlanProcess&) = delete;
    PlanProcess& operator=(const PlanProcess&) = delete;

private:
    void ended();

    Done done_;
    Failed failed_;
    ChildProcess child_;
};

// The child's side.
constexpr const char* planTask = "plan";
int runPlanTask(const std::string& record, int socket);

} // namespace dov417

#endif
