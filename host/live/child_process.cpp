#include "live/child_process.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QStringList>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "line/failure.h"

namespace dov417 {

namespace {

constexpr int patienceMilliseconds = 3000;

void closeEnd(int& descriptor)
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

struct Descriptor {
    explicit Descriptor(int descriptor) : number(descriptor) {}
    ~Descriptor()
    {
        closeEnd(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number;
};

// To be read from its beginning; of any length, and no pipe: nothing has to be written once the
// child is there. No QTemporaryFile: as that is closed it goes back to its beginning, and with it
// the child, which may be reading by then.
bool writeRecord(const std::string& text, const Descriptor& file)
{
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(file.number, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        written += static_cast<std::size_t>(count);
    }
    return lseek(file.number, 0, SEEK_SET) == 0;
}

// How it is started: which descriptors it keeps, in a group of its own, and without the signals
// that the parent ignores.
class Start {
public:
    Start()
    {
        posix_spawn_file_actions_init(&files_);
        posix_spawnattr_init(&attributes_);
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGTERM);
        sigaddset(&defaults, SIGPIPE);
        posix_spawnattr_setsigdefault(&attributes_, &defaults);
        // Ctrl-C reaches the whole group; the parent ends its child when it has finished with it.
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setflags(&attributes_,
                                 static_cast<short>(POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP));
    }
    ~Start()
    {
        posix_spawn_file_actions_destroy(&files_);
        posix_spawnattr_destroy(&attributes_);
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    // Stays open over exec, under that number.
    void keep(int descriptor, int as)
    {
        posix_spawn_file_actions_adddup2(&files_, descriptor, as);
    }
    // Throws a Failure where there is no such program, or no room for one more.
    pid_t run(std::vector<std::string> arguments) const
    {
        std::vector<char*> texts;
        texts.reserve(arguments.size() + 1);
        for (std::string& argument : arguments)
            texts.push_back(argument.data());
        texts.push_back(nullptr);
        pid_t id = 0;
        const int error =
            posix_spawn(&id, texts.front(), &files_, &attributes_, texts.data(), environ);
        if (error != 0)
            throw Failure("cannot start " + arguments.front() + ": " + std::strerror(error));
        return id;
    }

private:
    posix_spawn_file_actions_t files_;
    posix_spawnattr_t attributes_;
};

} // namespace

ChildProcess::~ChildProcess()
{
    ended_ = nullptr;
    if (id_ != 0)
        kill(id_, SIGKILL);
    waitForEnd();
    closeEnd(childEnd_);
    closeEnd(outputEnd_);
}

int ChildProcess::connectChild()
{
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw Failure(std::string("no pair of sockets: ") + std::strerror(errno));
    closeEnd(childEnd_);
    childEnd_ = ends[1];
    return ends[0];
}

void ChildProcess::begin(const std::string& task, const std::string& record)
{
    // It would start a child of its own, and that one the next, without end.
    if (QCoreApplication::arguments().value(1) == QLatin1String(childMark))
        throw Failure(
            "this program is its own child and does not call runAsChild() first in main()");
    const Descriptor input(memfd_create("record", MFD_CLOEXEC));
    if (input.number < 0 || !writeRecord(record, input))
        throw Failure(std::string("no file for a record: ") + std::strerror(errno));
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw Failure(std::string("no pipe: ") + std::strerror(errno));
    outputEnd_ = ends[0];
    const Descriptor output(ends[1]);
    fcntl(outputEnd_, F_SETFL, O_NONBLOCK);
    Start start;
    start.keep(input.number, STDIN_FILENO);
    start.keep(output.number, STDOUT_FILENO);
    std::vector<std::string> arguments = {
        QCoreApplication::applicationFilePath().toStdString(), // also where there is no /proc
        childMark, task, std::to_string(getpid())};
    if (childEnd_ >= 0) {
        start.keep(childEnd_, childEnd_);
        arguments.push_back(std::to_string(childEnd_));
    }
    id_ = start.run(arguments);
    closeEnd(childEnd_); // the child's own is another
    notifier_ = std::make_unique<QSocketNotifier>(outputEnd_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this]() { read(); });
}

void ChildProcess::onEnded(std::function<void()> ended)
{
    ended_ = std::move(ended);
}

pid_t ChildProcess::id() const
{
    return id_;
}

const std::string& ChildProcess::output() const
{
    return output_;
}

// ---- what it says ---------------------------------------------------------------------------

void ChildProcess::read()
{
    char bytes[4096];
    while (id_ != 0) {
        const ssize_t count = ::read(outputEnd_, bytes, sizeof bytes);
        if (count > 0)
            output_.append(bytes, static_cast<std::size_t>(count));
        else if (count < 0 && errno == EAGAIN)
            return;
        else if (count == 0 || errno != EINTR)
            reap(); // only the child had the other end
    }
}

bool ChildProcess::waitForOutput(int milliseconds)
{
    pollfd output = {outputEnd_, POLLIN, 0};
    if (id_ == 0 || poll(&output, 1, milliseconds) == 0)
        return false;
    read();
    return true;
}

std::optional<std::string> ChildProcess::waitForLine(int milliseconds)
{
    while (output_.find('\n') == std::string::npos)
        if (!waitForOutput(milliseconds))
            return std::nullopt;
    return output_.substr(0, output_.find('\n'));
}

// ---- its end --------------------------------------------------------------------------------

void ChildProcess::reap()
{
    notifier_->setEnabled(false);
    int status = 0;
    pid_t gone = -1;
    do
        gone = waitpid(id_, &status, 0);
    while (gone < 0 && errno == EINTR);
    exitCode_ = gone == id_ && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    id_ = 0;
    closeEnd(outputEnd_);
    if (ended_)
        QMetaObject::invokeMethod(
            notifier_.get(),
            [this]() {
                if (const std::function<void()> ended = std::exchange(ended_, nullptr))
                    ended();
            },
            Qt::QueuedConnection);
}

int ChildProcess::waitForEnd()
{
    while (waitForOutput(-1)) {
    }
    return exitCode_;
}

// One that stays ends with this object.
void ChildProcess::endPolitely()
{
    if (id_ != 0)
        kill(id_, SIGTERM);
    const QDeadlineTimer patience(patienceMilliseconds);
    while (!patience.hasExpired() && waitForOutput(static_cast<int>(patience.remainingTime()))) {
    }
}

} // namespace dov417
