// A two-wire line on a port whose direction the kernel drives: its driver turns the transmitter on
// before a frame and off after it.
#ifndef DOV417_LINK_RS485_H
#define DOV417_LINK_RS485_H

#include <QString>
#include <functional>

namespace dov417 {

constexpr int maxRs485DelayMs = 100; // what the kernel takes

struct Rs485 {
    bool isWanted = false;
    int delayBeforeMs = 0; // from turning the transmitter on to the first bit
    int delayAfterMs = 0;  // from the last bit to turning it off
};

// As ioctl(): 0, or -1 with errno.
using PortControl = std::function<int(int handle, unsigned long request, void* argument)>;

// Has the driver of the open port drive its direction. With the reason where it does not, or not as
// it is wished. Which level of RTS means sending stays as the system has it, if it says so.
bool driveDirection(int handle, const QString& device, const Rs485& wish, QString* reason);
bool driveDirection(int handle, const QString& device, const Rs485& wish, QString* reason,
                    const PortControl& control);

} // namespace dov417

#endif
