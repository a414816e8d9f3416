// This program once more, as a child process with one task.
//
// A task is named on the command line and gets what it needs as a record, a text on its standard
// input; child_program.h runs it. No QProcess, which forks: to copy the memory map of a process
// that keeps many frames takes longer than a picture may, and each page is copied again as it is
// written to afterwards.
#ifndef DOV417_LIVE_CHILD_PROCESS_H
#define DOV417_LIVE_CHILD_PROCESS_H

#include <QSocketNotifier>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>

namespace dov417 {

// First argument of a child; the second one is the task, the third one its parent, the fourth one
// its end of the sockets, if it has them.
constexpr const char* childMark = "@child";

class ChildProcess {
public:
    ChildProcess() = default;
    ~ChildProcess(); // ends it at once
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Returns before the child is under way. It does not outlive the thread that calls this, and
    // hears no Ctrl-C: ending it is the caller's. Throws a Failure if it cannot be started, and in
    // a child, whose main() should have called runAsChild().
    void begin(const std::string& task, const std::string& record);

    // To be called before begin(): the child gets one end of a pair of sockets, this is the other,
    // which the caller closes. Throws a Failure if there is none.
    int connectChild();

    // Once it has ended and all of its output has been read, from the event loop; may destroy this.
    void onEnded(std::function<void()> ended);

    pid_t id() const; // 0: there is none
    // What it has written to its standard output so far.
    const std::string& output() const;
    // Its first line, or nothing where it ends without one or takes longer.
    std::optional<std::string> waitForLine(int milliseconds);
    int waitForEnd(); // its exit code; -1 where a signal has ended it

    // Asks it to end, and waits some time until it is gone.
    void endPolitely();

private:
    bool waitForOutput(int milliseconds); // or its end; false: neither came
    void read();
    void reap();

    pid_t id_ = 0;
    int exitCode_ = -1;
    int childEnd_ = -1; // of the sockets
    int outputEnd_ = -1;
    std::string output_;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::function<void()> ended_;
};

} // namespace dov417

#endif
