// What every command on a line does besides its own work: the line and the session on it, the event
// loop and how it ends, words about the port, the counters at the end.
#ifndef DOV417_TOOL_LIVE_COMMAND_H
#define DOV417_TOOL_LIVE_COMMAND_H

#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "live/live_line.h"
#include "live/shutdown.h"
#include "session/items.h"
#include "session/session.h"
#include "tool/options.h"

namespace dov417 {

// Long enough to plug an adapter in again.
constexpr std::chrono::seconds defaultPortPatience(10);

extern const char* const waitingForTheLastReply;

class LiveCommand {
public:
    // An own controller gets the stations that the items name.
    LiveCommand(const Library& library, const LineOptions& options, const std::vector<Item>& items,
                const simulator::SimulationOptions& controller = {});

    Session& session();
    // Opens the line, and waits until a connection is made. Throws a Failure if it cannot be had,
    // or was interrupted.
    void open();

    // The terminal shows something else: no words about the port on it.
    void beQuiet();
    // The counters are printed for a program.
    void countInJson();
    // The standard output is a file's: the counters go to the other one.
    void keepOutput();
    // A command that has an end of its own does not wait for a lost port for ever; where it is
    // interrupted on a line that stays open, what it waits for is ended first.
    void endWithoutPort(std::chrono::milliseconds patience = defaultPortPatience);

    // Of a line that several commands use one after the other: it stays open where one ends, and
    // what that one leaves under way is ended. Ctrl-C ends a command alone, or everything. idle: it
    // came, or the like, between commands.
    void stayOpen(bool interruptLeaves, std::function<void()> idle);
    // The next one begins, with this merge gap; what the last one has set is forgotten.
    void begin(int gap);
    // There is no next one: from here on as if there had been one command alone.
    void leave();
    // Somebody wants the program to end, and not the command alone.
    bool isToLeave() const;

    // Runs the event loop until somebody calls end(), or Ctrl-C; either way until the line is
    // quiet, unless Ctrl-C comes again.
    void run();
    void end();
    // At the end of so many cycles from now.
    void endAfterCycles(long long cycles);
    // As Ctrl-C does.
    void interrupt();
    // Of a line that stays open: what the command polls, and what it has started, ends here.
    void letGo(const std::string& reason);
    // The line is not quiet yet, and for so long that one would notice.
    bool isWaiting() const;
    // Why the loop ended early: "interrupted", "the port did not come back"; empty if it did not.
    const std::string& interruption() const;

    // Of a command that came out as it should, or not. Prints the counters if they are asked for,
    // and says so if its log could not be written: then nothing did.
    int finish(bool complete);

    // Null without an own controller.
    const ControllerProcess* controller() const;

private:
    void giveUp(const std::string& reason);
    void endNow();
    void portChanged(bool open, const std::string& message);

    LineOptions options_;
    QEventLoop loop_;
    QTimer portTimer_;
    QTimer waitTimer_;
    bool endsWithoutPort_ = false;
    bool isQuiet_ = false;
    bool countsInJson_ = false;
    bool keepsOutput_ = false;
    bool staysOpen_ = false;
    bool isRunning_ = false;
    bool interruptLeaves_ = false;
    bool isToLeave_ = false;
    std::function<void()> idle_;
    std::unique_ptr<QObject> cycles_; // of one command, to be counted
    bool isEnding_ = false;
    bool isWaiting_ = false;
    bool ended_ = false;
    bool isConnecting_ = false;
    bool wasLost_ = false;
    std::string refusal_; // of the connection
    std::string interruption_;
    Shutdown shutdown_; // before the controller is started: it is to be ended too
    LiveLine line_;
    Session session_;
};

} // namespace dov417

#endif
