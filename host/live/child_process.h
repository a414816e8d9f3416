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

// First argument of a child; the second one is the task.
constexpr const char* childMark = "@child";

class ChildProcess : public QProcess {
public:
    ChildProcess();
    ~ChildProcess() override; // ends it at once

    // Returns before the child is under way. It does not outlive the thread that calls this, and
    // hears no Ctrl-C: ending it is the caller's. Throws a Failure if the record cannot be kept.
    void begin(const std::string& task, const std::string& record);

    // Waits until it is gone: asked first, or at once.
    void endPolitely();
    void endAtOnce();

private:
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    void setupChildProcess() override;
#endif
    void becomeChild() const;

    pid_t parent_;
};

} // namespace dov417

#endif
