// This program once more, as a child process with one task.
//
// A task is named on the command line and gets what it needs as a record, a text on its standard
// input; child_program.h runs it.
#ifndef DOV417_LIVE_CHILD_PROCESS_H
#define DOV417_LIVE_CHILD_PROCESS_H

#include <QProcess>
#include <string>
#include <sys/types.h>

namespace dov417 {

// First argument of a child; the second one is the task, the third one its end of the sockets, if
// it has them.
constexpr const char* childMark = "@child";

class ChildProcess : public QProcess {
public:
    ChildProcess();
    ~ChildProcess() override; // ends it at once

    // Returns before the child is under way. It does not outlive the thread that calls this, and
    // hears no Ctrl-C: ending it is the caller's. Throws a Failure if the record cannot be kept,
    // and in a child, whose main() should have called runAsChild().
    void begin(const std::string& task, const std::string& record);

    // To be called before begin(): the child gets one end of a pair of sockets, this is the other,
    // which the caller closes. Throws a Failure if there is none.
    int connectChild();

    // Asks it to end, and waits some time until it is gone.
    void endPolitely();

private:
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    void setupChildProcess() override;
#endif
    void becomeChild() const;
    void closeChildEnd();

    pid_t parent_;
    int childEnd_ = -1;
};

} // namespace dov417

#endif
