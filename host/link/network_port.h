// A connection to another machine: a serial device server, as ser2net in raw mode, or a controller.
//
// Nothing here waits: the name is looked up and the connection made beside the event loop.
//
// A server that serves one at a time takes a second connection and closes it at once, and so does
// what forwards a port to a host that is not there. So a connection is open only once it has stayed
// for a moment; ten times as long after one that ended without having been of use.
#ifndef DOV417_LINK_NETWORK_PORT_H
#define DOV417_LINK_NETWORK_PORT_H

#include <QTcpSocket>
#include <QTimer>
#include <memory>

#include "link/network_address.h"
#include "link/port.h"

namespace dov417 {

class NetworkPort : public Port {
public:
    NetworkPort(const QString& name, const NetworkAddress& address, const PortEvents& events);
    ~NetworkPort() override;

    Opening open(QString* reason) override;
    void write(const QByteArray& bytes) override;
    bool bytesWait() const override;
    QString name() const override;
    bool isAway() const override;
    std::chrono::milliseconds pause() const override;

private:
    void connected();
    void stayed();
    void ended(const QString& reason);
    QString why(QAbstractSocket::SocketError error) const;

    QString name_;
    NetworkAddress address_;
    PortEvents events_;
    QTimer patience_; // for a connection
    QTimer trial_;    // of one that was made
    bool isOpen_ = false;
    bool wasOfUse_ = false; // since it was open
    std::unique_ptr<QTcpSocket> socket_;
};

} // namespace dov417

#endif
