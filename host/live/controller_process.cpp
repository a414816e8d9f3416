#include "live/controller_process.h"

#include <QStringList>
#include <csignal>
#include <filesystem>
#include <sys/prctl.h>
#include <unistd.h>

#include "line/failure.h"

namespace dov417 {

namespace {

constexpr int startMilliseconds = 10000;
constexpr int endMilliseconds = 3000;
const char* const announcement = "port ";

} // namespace

// Runs in the child, between fork and exec.
void ControllerProcess::Child::setupChildProcess()
{
    // Ctrl-C reaches the whole group; the host ends the controller when it has finished with it.
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
}

ControllerProcess::ControllerProcess(const std::vector<std::string>& options)
{
    QStringList arguments{QStringLiteral("simulate")};
    for (const std::string& option : options)
        arguments.append(QString::fromStdString(option));
    child_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    struct sigaction brokenPipe = {};
    sigaction(SIGPIPE, nullptr, &brokenPipe);
    child_.start(QString::fromStdString(std::filesystem::read_symlink("/proc/self/exe").string()),
                 arguments);
    // QProcess ignores it for good; an output that nobody reads any more is to end the tool.
    sigaction(SIGPIPE, &brokenPipe, nullptr);
    while (!child_.canReadLine())
        if (!child_.waitForReadyRead(startMilliseconds))
            throw Failure("the simulated controller does not start: " +
                          child_.errorString().toStdString());
    const std::string line = child_.readLine().trimmed().toStdString();
    const std::string prefix = announcement;
    if (line.compare(0, prefix.size(), prefix) != 0)
        throw Failure("the simulated controller says: " + line);
    port_ = line.substr(prefix.size());
}

ControllerProcess::~ControllerProcess()
{
    child_.terminate();
    if (!child_.waitForFinished(endMilliseconds))
        child_.kill();
    child_.waitForFinished(endMilliseconds);
}

const std::string& ControllerProcess::port() const
{
    return port_;
}

long long ControllerProcess::processId() const
{
    return child_.processId();
}

} // namespace dov417
