#include "link/rs485.h"

#include <cerrno>
#include <cstring>
#include <linux/serial.h>
#include <sys/ioctl.h>

namespace dov417 {

namespace {

constexpr unsigned levelsOfRts = SER_RS485_RTS_ON_SEND | SER_RS485_RTS_AFTER_SEND;

// One of the two, as the system describes the board; else the level that most transceivers have.
unsigned levelOfRts(unsigned flags)
{
    const unsigned level = flags & levelsOfRts;
    return level == 0 || level == levelsOfRts ? unsigned(SER_RS485_RTS_ON_SEND) : level;
}

// What a driver without it says, each in its own way.
bool isWithout(int error)
{
    return error == ENOTTY || error == EINVAL || error == EOPNOTSUPP || error == ENOSYS;
}

QString delays(unsigned beforeMs, unsigned afterMs)
{
    return QStringLiteral("%1 ms before and %2 ms after a frame").arg(beforeMs).arg(afterMs);
}

} // namespace

bool driveDirection(int handle, const QString& device, const Rs485& wish, QString* reason,
                    const PortControl& control)
{
    const auto refuse = [&](int error) {
        *reason = isWithout(error)
                      ? QStringLiteral("the driver of port %1 drives no direction: --rs485 is for "
                                       "ports that do; most adapters drive it by themselves, and "
                                       "need no option")
                            .arg(device)
                      : QStringLiteral("the driver of port %1 does not take the direction over: %2")
                            .arg(device, QString::fromLocal8Bit(std::strerror(error)));
        return false;
    };
    serial_rs485 now = serial_rs485();
    if (control(handle, TIOCGRS485, &now) != 0)
        return refuse(errno);
    serial_rs485 wanted = now; // with what else the system knows of the board
    wanted.flags &= ~static_cast<unsigned>(levelsOfRts | SER_RS485_RX_DURING_TX);
    wanted.flags |= SER_RS485_ENABLED | levelOfRts(now.flags);
    wanted.delay_rts_before_send = static_cast<unsigned>(wish.delayBeforeMs);
    wanted.delay_rts_after_send = static_cast<unsigned>(wish.delayAfterMs);
    if (control(handle, TIOCSRS485, &wanted) != 0)
        return refuse(errno);

    // A driver makes of it what its hardware can do, and says so only when asked.
    serial_rs485 taken = serial_rs485();
    if (control(handle, TIOCGRS485, &taken) != 0)
        return refuse(errno);
    if ((taken.flags & SER_RS485_ENABLED) == 0)
        return refuse(ENOTTY);
    if (taken.delay_rts_before_send == static_cast<unsigned>(wish.delayBeforeMs) &&
        taken.delay_rts_after_send == static_cast<unsigned>(wish.delayAfterMs))
        return true;
    *reason = QStringLiteral("the driver of port %1 does not keep the delays of --rs485: it makes "
                             "%2 of %3")
                  .arg(device, delays(taken.delay_rts_before_send, taken.delay_rts_after_send),
                       delays(static_cast<unsigned>(wish.delayBeforeMs),
                              static_cast<unsigned>(wish.delayAfterMs)));
    return false;
}

bool driveDirection(int handle, const QString& device, const Rs485& wish, QString* reason)
{
    return driveDirection(handle, device, wish, reason,
                          [](int port, unsigned long request, void* argument) {
                              return ioctl(port, request, argument);
                          });
}

} // namespace dov417
