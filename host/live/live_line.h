// A line with what belongs to it: the own controller at its other end, and the recording.
#ifndef DOV417_LIVE_LIVE_LINE_H
#define DOV417_LIVE_LIVE_LINE_H

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "live/controller_process.h"
#include "live/line_setup.h"
#include "live/recording.h"

namespace dov417 {

// Of a line that is listened to only. Throws a UsageFailure if no port is named.
LineSettings listeningSettings(const Library& library, const LineSetup& setup);

class LiveLine {
public:
    // Starts the simulated controller if one is asked for, with these stations and station 1.
    // Throws a UsageFailure if there is no line to use. Learns the areas from the driver: to be
    // made before the session.
    LiveLine(const Library& library, const LineSetup& setup, const std::set<int>& stations,
             const simulator::SimulationOptions& controller = {});

    const LineSettings& settings() const;

    // Records this session, if the setup asks for a log.
    void record(const Session& session);
    // The same of a line without a session: the observer, with the log before each of its events.
    LineObserver recorded(const LineObserver& observer) const;
    // Of what it has transmitted.
    void recordEnd(const Transmission& transmission) const;
    // A log was asked for and could not be written.
    bool hasLostLog() const;

    // Null without an own controller.
    const ControllerProcess* controller() const;
    ControllerProcess* controller();

private:
    std::unique_ptr<ControllerProcess> controller_;
    LineSettings settings_;
    std::unique_ptr<Recording> recording_;
};

} // namespace dov417

#endif
