#include "support.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace dov417 {

namespace {

constexpr int inVainMs = 30000;

} // namespace

QByteArray bytesOf(const char* hex)
{
    return QByteArray::fromHex(hex);
}

std::string hexOf(const QByteArray& bytes)
{
    return bytes.toHex(' ').toUpper().toStdString();
}

bool waitFor(const std::function<bool()>& condition)
{
    QElapsedTimer waited;
    waited.start();
    QTimer wake; // conditions that no event announces are looked at now and then
    wake.start(5);
    while (!condition()) {
        if (waited.elapsed() > inVainMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

MasterEnd::MasterEnd(const std::string& port)
    : descriptor_(::open(port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK))
{
    EXPECT_GE(descriptor_, 0) << port;
}

MasterEnd::~MasterEnd()
{
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

bool MasterEnd::isOpen() const
{
    return descriptor_ >= 0;
}

void MasterEnd::send(const QByteArray& bytes)
{
    EXPECT_EQ(::write(descriptor_, bytes.constData(), static_cast<std::size_t>(bytes.size())),
              bytes.size());
}

QByteArray MasterEnd::receive(int count)
{
    waitFor([&]() {
        received_ += readNow();
        return received_.size() >= count;
    });
    QByteArray received;
    received.swap(received_);
    return received;
}

QByteArray MasterEnd::readNow()
{
    char buffer[1024];
    const ssize_t count = ::read(descriptor_, buffer, sizeof buffer);
    return count > 0 ? QByteArray(buffer, static_cast<int>(count)) : QByteArray();
}

bool MasterEnd::isHungUp() const
{
    pollfd state{descriptor_, POLLIN, 0};
    return ::poll(&state, 1, 0) > 0 && (state.revents & POLLHUP) != 0;
}

} // namespace dov417
