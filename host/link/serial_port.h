// A serial port of this machine, set to the line's format and kept from other programs.
#ifndef DOV417_LINK_SERIAL_PORT_H
#define DOV417_LINK_SERIAL_PORT_H

#include <memory>

#include "line/serial_format.h"
#include "link/port.h"
#include "link/rs485.h"

class QSerialPort;

namespace dov417 {

enum class PortUse {
    talking,
    listening // nothing can be written
};

class SerialPort : public Port {
public:
    // A bare name is one of /dev.
    SerialPort(const QString& device, const SerialFormat& format, const PortEvents& events,
               PortUse use = PortUse::talking, const Rs485& direction = {});
    ~SerialPort() override;

    Opening open(QString* reason) override;
    void write(const QByteArray& bytes) override;
    bool bytesWait() const override;
    void giveUp() override;
    // Of the open port: another one from now on.
    bool setFormat(const SerialFormat& format, QString* reason);
    QString name() const override;
    bool isAway() const override;
    std::chrono::milliseconds pause() const override;

private:
    bool applyFormat(QString* reason);
    void lost();

    QString device_;
    SerialFormat format_;
    PortEvents events_;
    PortUse use_;
    Rs485 direction_;
    std::unique_ptr<QSerialPort> port_;
};

} // namespace dov417

#endif
