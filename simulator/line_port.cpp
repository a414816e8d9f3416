#include "simulator/line_port.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace dov417::simulator {

namespace {

struct Speed {
    int baudRate;
    speed_t code;
};
constexpr Speed speeds[] = {
    {50, B50},           {75, B75},           {110, B110},         {134, B134},
    {150, B150},         {200, B200},         {300, B300},         {600, B600},
    {1200, B1200},       {1800, B1800},       {2400, B2400},       {4800, B4800},
    {9600, B9600},       {19200, B19200},     {38400, B38400},     {57600, B57600},
    {115200, B115200},   {230400, B230400},   {460800, B460800},   {500000, B500000},
    {576000, B576000},   {921600, B921600},   {1000000, B1000000}, {1152000, B1152000},
    {1500000, B1500000}, {2000000, B2000000}, {2500000, B2500000}, {3000000, B3000000},
    {3500000, B3500000}, {4000000, B4000000},
};

const Speed* speedOf(int baudRate)
{
    for (const Speed& speed : speeds) {
        if (speed.baudRate == baudRate)
            return &speed;
    }
    return nullptr;
}

bool makeRaw(int descriptor)
{
    termios settings{};
    if (tcgetattr(descriptor, &settings) != 0)
        return false;
    cfmakeraw(&settings);
    return tcsetattr(descriptor, TCSANOW, &settings) == 0;
}

bool configure(int descriptor, const SerialFormat& format, speed_t speed)
{
    termios settings{};
    if (tcgetattr(descriptor, &settings) != 0)
        return false;
    cfmakeraw(&settings);
    settings.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CSTOPB | CRTSCTS);
    settings.c_cflag |= CLOCAL | CREAD | (format.dataBits == 7 ? CS7 : CS8);
    if (format.parity != Parity::none)
        settings.c_cflag |= PARENB;
    if (format.parity == Parity::odd)
        settings.c_cflag |= PARODD;
    if (format.stopBits == 2)
        settings.c_cflag |= CSTOPB;
    cfsetispeed(&settings, speed);
    cfsetospeed(&settings, speed);
    return tcsetattr(descriptor, TCSANOW, &settings) == 0;
}

} // namespace

LinePort::~LinePort()
{
    close();
}

bool LinePort::openPseudoTerminal(const QString& link, QString* error)
{
    close();
    descriptor_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    char device[64] = "";
    if (descriptor_ < 0 || grantpt(descriptor_) != 0 || unlockpt(descriptor_) != 0 ||
        ptsname_r(descriptor_, device, sizeof device) != 0)
        return giveUp(QStringLiteral("no pseudo-terminal"), error);
    device_ = QFile::decodeName(device);
    otherEnd_ = ::open(device, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (otherEnd_ < 0 || !makeRaw(otherEnd_))
        return giveUp(device_, error);
    watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (watch_ >= 0 &&
        inotify_add_watch(watch_, device, IN_OPEN | IN_CLOSE_WRITE | IN_CLOSE_NOWRITE) < 0) {
        ::close(watch_);
        watch_ = -1;
    }
    if (!link.isEmpty() && !makeLink(link, error)) {
        close();
        return false;
    }
    return true;
}

bool LinePort::openDevice(const QString& device, const SerialFormat& format, QString* error)
{
    close();
    const Speed* speed = speedOf(format.baudRate);
    if (!speed) {
        if (error)
            *error = QStringLiteral("%1: %2 baud is no rate of a serial device")
                         .arg(device)
                         .arg(format.baudRate);
        return false;
    }
    device_ = device;
    descriptor_ =
        ::open(QFile::encodeName(device).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor_ < 0 || !configure(descriptor_, format, speed->code))
        return giveUp(device, error);
    tcflush(descriptor_, TCIOFLUSH);
    return true;
}

void LinePort::close()
{
    // The link may have become another controller's in the meantime.
    if (!link_.isEmpty() && QFile::symLinkTarget(link_) == device_)
        QFile::remove(link_);
    for (int* descriptor : {&descriptor_, &otherEnd_, &watch_}) {
        if (*descriptor >= 0)
            ::close(*descriptor);
        *descriptor = -1;
    }
    listeners_ = 0;
    device_.clear();
    link_.clear();
}

bool LinePort::isOpen() const
{
    return descriptor_ >= 0;
}

QString LinePort::name() const
{
    return link_.isEmpty() ? device_ : link_;
}

int LinePort::descriptor() const
{
    return descriptor_;
}

QByteArray LinePort::read(bool* lost)
{
    *lost = false;
    QByteArray all;
    char buffer[1024];
    for (;;) {
        const ssize_t count = ::read(descriptor_, buffer, sizeof buffer);
        if (count > 0) {
            all.append(buffer, static_cast<int>(count));
            // Enough for one turn; whoever floods the line must not keep us from everything else.
            if (count < static_cast<ssize_t>(sizeof buffer) || all.size() >= 16384)
                return all;
            continue;
        }
        if (count < 0 && errno == EINTR)
            continue;
        *lost = count == 0 || errno != EAGAIN;
        return all;
    }
}

int LinePort::write(const QByteArray& bytes)
{
    int done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::write(descriptor_, bytes.constData() + done,
                                      static_cast<std::size_t>(bytes.size() - done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        done += static_cast<int>(count);
    }
    return done;
}

int LinePort::watchDescriptor() const
{
    return watch_;
}

bool LinePort::updateListeners()
{
    if (watch_ < 0)
        return false;
    alignas(inotify_event) char buffer[4096];
    bool lastWent = false;
    ssize_t size = 0;
    while ((size = ::read(watch_, buffer, sizeof buffer)) > 0) {
        for (ssize_t at = 0; at < size;) {
            inotify_event event{};
            std::memcpy(&event, buffer + at, sizeof event);
            at += static_cast<ssize_t>(sizeof event + event.len);
            if ((event.mask & IN_OPEN) != 0)
                ++listeners_;
            else if ((event.mask & (IN_CLOSE_WRITE | IN_CLOSE_NOWRITE)) != 0 && listeners_ > 0)
                lastWent = --listeners_ == 0;
        }
    }
    if (lastWent) {
        // The hold on the other end would keep what a master left behind for the next one: bytes
        // that it never read and, if it was killed, its settings and its claim.
        tcflush(otherEnd_, TCIFLUSH);
        if (listeners_ == 0) {
            makeRaw(otherEnd_);
            ioctl(otherEnd_, TIOCNXCL);
        }
    }
    return lastWent;
}

bool LinePort::hasListener() const
{
    return watch_ < 0 || listeners_ > 0;
}

// Replaces a symbolic link that leads nowhere in one step, so that it is never missing, but nothing
// else: not another controller's, and not a link of somebody's own.
bool LinePort::makeLink(const QString& link, QString* error)
{
    const QFileInfo info(link);
    if (info.exists() && !(info.isSymLink() && info.symLinkTarget() == device_)) {
        if (error)
            *error =
                info.isSymLink()
                    ? QStringLiteral("%1 leads to %2; if that is no controller, remove the "
                                     "link first")
                          .arg(link, info.symLinkTarget())
                    : QStringLiteral("%1: there is something that is no symbolic link").arg(link);
        return false;
    }
    const QString path = info.absoluteFilePath();
    const QString fresh = QStringLiteral("%1.%2").arg(path).arg(getpid());
    QFile::remove(fresh);
    if (!QFile::link(device_, fresh) ||
        rename(QFile::encodeName(fresh).constData(), QFile::encodeName(path).constData()) != 0) {
        const int reason = errno;
        QFile::remove(fresh);
        errno = reason;
        if (error)
            *error = QStringLiteral("%1: %2").arg(link, QString::fromLocal8Bit(strerror(reason)));
        return false;
    }
    link_ = path;
    return true;
}

bool LinePort::giveUp(const QString& what, QString* error)
{
    const QString reason = QString::fromLocal8Bit(strerror(errno));
    close();
    if (error)
        *error = QStringLiteral("%1: %2").arg(what, reason);
    return false;
}

} // namespace dov417::simulator
