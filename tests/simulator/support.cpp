#include "support.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
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

MasterEnd::MasterEnd(const QString& port)
    : m_descriptor(::open(QFile::encodeName(port).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK))
{
    EXPECT_GE(m_descriptor, 0) << port.toStdString();
}

MasterEnd::~MasterEnd()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

bool MasterEnd::isOpen() const
{
    return m_descriptor >= 0;
}

void MasterEnd::send(const QByteArray& bytes)
{
    EXPECT_EQ(::write(m_descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size())),
              bytes.size());
}

QByteArray MasterEnd::receive(int count)
{
    waitFor([&]() {
        m_received += readNow();
        return m_received.size() >= count;
    });
    QByteArray received;
    received.swap(m_received);
    return received;
}

QByteArray MasterEnd::readNow()
{
    char buffer[1024];
    const ssize_t count = ::read(m_descriptor, buffer, sizeof buffer);
    return count > 0 ? QByteArray(buffer, static_cast<int>(count)) : QByteArray();
}

bool MasterEnd::isHungUp() const
{
    pollfd state{m_descriptor, POLLIN, 0};
    return ::poll(&state, 1, 0) > 0 && (state.revents & POLLHUP) != 0;
}

} // namespace dov417
