#include "live/child_process.h"

#include <QCoreApplication>
#include <QStringList>
#include <QTemporaryFile>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "line/failure.h"

namespace dov417 {

namespace {

constexpr int patienceMilliseconds = 3000;

} // namespace

ChildProcess::ChildProcess() : parent_(getpid())
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    setChildProcessModifier([this]() { becomeChild(); });
#endif
}

ChildProcess::~ChildProcess()
{
    if (state() != NotRunning) {
        kill();
        waitForFinished(patienceMilliseconds);
    }
    closeChildEnd();
}

void ChildProcess::closeChildEnd()
{
    if (childEnd_ >= 0)
        ::close(childEnd_);
    childEnd_ = -1;
}

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
void ChildProcess::setupChildProcess()
{
    becomeChild();
}
#endif

// Runs in the child, between fork and exec.
void ChildProcess::becomeChild() const
{
    // Ctrl-C reaches the whole group; the parent ends its child when it has finished with it.
    setpgid(0, 0);
    signal(SIGTERM, SIG_DFL); // whatever the parent ignores
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent_) // it has ended already: no signal would come
        _exit(EXIT_FAILURE);
    if (childEnd_ >= 0)
        fcntl(childEnd_, F_SETFD, 0); // stays open over exec
}

int ChildProcess::connectChild()
{
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw Failure(std::string("no pair of sockets: ") + std::strerror(errno));
    closeChildEnd();
    childEnd_ = ends[1];
    return ends[0];
}

void ChildProcess::begin(const std::string& task, const std::string& record)
{
    // It would start a child of its own, and that one the next, without end.
    if (QCoreApplication::arguments().value(1) == QLatin1String(childMark))
        throw Failure(
            "this program is its own child and does not call runAsChild() first in main()");
    // Of any length, and no pipe: nothing has to be written once the child is there. The child's
    // end is opened by start(), so the file may go then.
    QTemporaryFile input;
    if (!input.open() || input.write(record.data(), static_cast<qint64>(record.size())) < 0 ||
        !input.flush())
        throw Failure("no temporary file: " + input.errorString().toStdString());
    setStandardInputFile(input.fileName());
    setProcessChannelMode(ForwardedErrorChannel);
    struct sigaction brokenPipe = {};
    sigaction(SIGPIPE, nullptr, &brokenPipe);
    QStringList arguments = {QString::fromLatin1(childMark), QString::fromStdString(task)};
    if (childEnd_ >= 0)
        arguments.append(QString::number(childEnd_));
    start(QCoreApplication::applicationFilePath(), arguments); // also where there is no /proc
    // QProcess leaves SIGPIPE ignored; restored, so that an output which nobody reads any more ends
    // the program.
    sigaction(SIGPIPE, &brokenPipe, nullptr);
    closeChildEnd(); // the child's own is another one
}

// One that stays ends with this object.
void ChildProcess::endPolitely()
{
    terminate();
    waitForFinished(patienceMilliseconds);
}

} // namespace dov417
