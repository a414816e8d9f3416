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

#include "line/failure.h"
#include "line/pseudo_terminal.h"

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

void LinePort::openPseudoTerminal(const std::string& link)
{
    close();
    descriptor_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    char device[64] = "";
    if (descriptor_ < 0 || grantpt(descriptor_) != 0 || unlockpt(descriptor_) != 0 ||
        ptsname_r(descriptor_, device, sizeof device) != 0)
        giveUp("no pseudo-terminal");
    device_ = QFile::decodeName(device);
    otherEnd_ = ::open(device, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (otherEnd_ < 0 || !makeRaw(otherEnd_))
        giveUp(device);
    watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (watch_ >= 0 &&
        inotify_add_watch(watch_, device, IN_OPEN | IN_CLOSE_WRITE | IN_CLOSE_NOWRITE) < 0) {
        ::close(watch_);
        watch_ = -1;
    }
    if (!link.empty())
        makeLink(QString::fromStdString(link));
}

void LinePort::openDevice(const std::string& device, const SerialFormat& format)
{
    close();
    const Speed* speed = speedOf(format.baudRate);
    if (!speed)
        throw Failure(device + ": " + std::to_string(format.baudRate) +
                      " baud is no rate of a serial device");
    device_ = QString::fromStdString(device);
    descriptor_ =
        ::open(QFile::encodeName(device_).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor_ < 0 ||
        !(isPseudoTerminal(device_) ? makeRaw(descriptor_)
                                    : configure(descriptor_, format, speed->code)))
        giveUp(device);
    tcflush(descriptor_, TCIOFLUSH);
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

std::string LinePort::name() const
{
    return (link_.isEmpty() ? device_ : link_).toStdString();
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
void LinePort::makeLink(const QString& link)
{
    const std::string name = link.toStdString();
    const QFileInfo info(link);
    const QString target = info.isSymLink() ? info.symLinkTarget() : QString();
    if (info.exists() && target != device_) {
        close();
        throw Failure(name + (target.isEmpty() ? ": there is something that is no symbolic link"
                                               : " leads to " + target.toStdString() +
                                                     "; if that is no controller, remove the link "
                                                     "first"));
    }
    const QString path = info.absoluteFilePath();
    const QString fresh = path + QLatin1Char('.') + QString::number(getpid());
    QFile::remove(fresh);
    if (!QFile::link(device_, fresh) ||
        rename(QFile::encodeName(fresh).constData(), QFile::encodeName(path).constData()) != 0) {
        const int reason = errno;
        QFile::remove(fresh);
        errno = reason;
        giveUp(name);
    }
    link_ = path;
}

void LinePort::giveUp(const std::string& what)
{
    const std::string reason = strerror(errno);
    close();
    throw Failure(what + ": " + reason);
}

} // namespace dov417::simulator
