// The line of a live command: port or own controller, settings, log, Ctrl-C.
#ifndef DOV417_TOOL_LIVE_LINE_H
#define DOV417_TOOL_LIVE_LINE_H

#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "driver/areas.h"
#include "line/line_log.h"
#include "link/link_runner.h"
#include "live/controller_process.h"
#include "live/shutdown.h"
#include "session/items.h"
#include "session/session.h"
#include "tool/options.h"

namespace dov417 {

// Long enough to plug an adapter in again.
constexpr std::chrono::seconds usualPortPatience(10);

class LiveLine {
public:
    // Starts the simulated controller if one is asked for; it gets the line, the stations that the
    // items name and these further options. Throws a UsageFailure if there is no line to use.
    // Resets the driver: to be made before the session.
    LiveLine(const Library& library, const LineOptions& options, const std::vector<Item>& items,
             const simulator::SimulationOptions& controller = {});

    LineSettings lineSettings() const;
    SessionSettings sessionSettings() const;
    // Writes the line log, and tells people about the port.
    RunnerEvents runnerEvents();

    // The terminal shows something else: no words about the port on it.
    void beQuiet();
    // A command that has an end of its own does not wait for a lost port for ever.
    void endWithoutPort(std::chrono::milliseconds patience = usualPortPatience);

    // Runs the event loop until somebody calls end(), or Ctrl-C.
    void run();
    void end();
    // Why the loop ended early: "interrupted", "the port did not come back"; empty if it did not.
    const std::string& interruption() const;

    // Of a command that came out as it should, or not. Says so if its log could not be written:
    // then nothing did.
    int exitCode(bool complete) const;

    // Null without an own controller.
    const ControllerProcess* controller() const;

private:
    void logSent(const QByteArray& bytes);
    void logReceived(const Reception& reception);
    void logStray(const Stray& stray);
    void portChanged(bool open, const std::string& message);

    const Library& library_;
    LineOptions options_;
    std::unique_ptr<ControllerProcess> controller_;
    std::string port_;
    std::vector<Area> areas_;
    LineLog log_;
    QByteArray lastRequest_;
    QEventLoop loop_;
    QTimer portTimer_;
    bool endsWithoutPort_ = false;
    bool isQuiet_ = false;
    bool ended_ = false;
    bool wasLost_ = false;
    std::string interruption_;
    std::unique_ptr<Shutdown> shutdown_;
};

} // namespace dov417

#endif
