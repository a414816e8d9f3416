// The descriptor below the line server: a pseudo-terminal of its own or a serial device.
#ifndef DOV417_SIMULATOR_LINE_PORT_H
#define DOV417_SIMULATOR_LINE_PORT_H

#include <QByteArray>
#include <QString>
#include <string>

#include "line/serial_format.h"

namespace dov417::simulator {

class LinePort {
public:
    LinePort() = default;
    ~LinePort(); // closes
    LinePort(const LinePort&) = delete;
    LinePort& operator=(const LinePort&) = delete;

    // Both throw a Failure when it cannot be had; nothing stays open then.
    void openPseudoTerminal(const std::string& link);
    void openDevice(const std::string& device, const SerialFormat& format);
    void close();

    bool isOpen() const;
    std::string name() const; // the link if there is one, else the device
    int descriptor() const;

    // What has arrived; empty for nothing. `lost` becomes true when the line is gone for good.
    QByteArray read(bool* lost);
    // How many bytes were taken; fewer than all when nobody empties the other end.
    int write(const QByteArray& bytes);

    // Pseudo-terminal only: becomes readable when the other side opens or closes it, -1 if that
    // cannot be told.
    int watchDescriptor() const;
    // Brings hasListener() up to date. True when the last listener went since the last call; what
    // it had not read is gone, and the terminal is as raw and free as it was at first.
    bool updateListeners();
    bool hasListener() const;

private:
    void makeLink(const QString& link);
    // Closes it; the system's latest error is the reason.
    [[noreturn]] void giveUp(const std::string& what);

    int descriptor_ = -1;
    // The own hold on the other end: without it the first close by a master would hang up.
    int otherEnd_ = -1;
    int watch_ = -1;
    int listeners_ = 0;
    QString device_;
    QString link_;
};

} // namespace dov417::simulator

#endif
