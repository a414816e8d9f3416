#include "pty_slave.h"

#include <QEventLoop>
#include <QFile>
#include <QTimer>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <termios.h>
#include <unistd.h>

namespace dov417 {

PtySlave::PtySlave()
{
    plug();
}

PtySlave::~PtySlave()
{
    unplug();
}

QString PtySlave::port() const
{
    return folder_.filePath(QStringLiteral("port"));
}

void PtySlave::plug()
{
    descriptor_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor_ < 0 || grantpt(descriptor_) != 0 || unlockpt(descriptor_) != 0)
        throw std::runtime_error("no pseudo-terminal");
    const char* const name = ptsname(descriptor_);
    keeper_ = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios raw = termios();
    tcgetattr(keeper_, &raw);
    cfmakeraw(&raw);
    tcsetattr(keeper_, TCSANOW, &raw);
    QFile::link(QString::fromLocal8Bit(name), port());
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this]() {
        char bytes[1024];
        const ssize_t count = read(descriptor_, bytes, sizeof bytes);
        if (count > 0 && arrived)
            arrived(QByteArray(bytes, static_cast<int>(count)));
    });
}

void PtySlave::unplug()
{
    if (descriptor_ < 0)
        return;
    QFile::remove(port());
    // The handler of arrived bytes may be what pulls the plug.
    notifier_->setEnabled(false);
    notifier_.release()->deleteLater();
    close(keeper_);
    close(descriptor_);
    descriptor_ = -1;
}

void PtySlave::send(const QByteArray& bytes)
{
    if (write(descriptor_, bytes.constData(), static_cast<std::size_t>(bytes.size())) !=
        bytes.size())
        throw std::runtime_error("the pseudo-terminal takes no more");
}

void PtySlave::deliver(const QByteArray& bytes)
{
    constexpr int patienceMilliseconds = 300000;
    send(bytes);
    pollfd arrival = {keeper_, POLLIN, 0};
    if (poll(&arrival, 1, patienceMilliseconds) != 1)
        throw std::runtime_error("the pseudo-terminal carries nothing");
}

bool waitUntil(const std::function<bool()>& condition)
{
    constexpr int patienceMilliseconds = 300000;
    bool patient = true;
    QTimer watchdog;
    watchdog.setSingleShot(true);
    QObject::connect(&watchdog, &QTimer::timeout, &watchdog, [&patient]() { patient = false; });
    watchdog.start(patienceMilliseconds);
    QEventLoop loop;
    while (!condition()) { // asked once more, one that does something may say something else
        if (!patient)
            return false;
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace dov417
