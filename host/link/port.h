// What the bytes of a line go through: a serial port of this machine, or a connection to another.
#ifndef DOV417_LINK_PORT_H
#define DOV417_LINK_PORT_H

#include <QByteArray>
#include <QString>
#include <chrono>
#include <functional>

namespace dov417 {

// Called from the event loop.
struct PortEvents {
    std::function<void()> opened;                // a connection that was being made is open
    std::function<void(const QString&)> refused; // it could not be made; why
    // Has the line been of use since it was open: has a sound frame come?
    std::function<bool(const QByteArray&)> came;
    std::function<void()> gone; // it is closed then, and may be opened again
};

enum class Opening {
    done,
    underWay, // the events tell how it ends
    refused
};

class Port {
public:
    virtual ~Port() = default;

    // With the reason where it is refused. Never waits.
    virtual Opening open(QString* reason) = 0;
    // True if it is open then, and not under way. Throws a Failure where it is refused.
    bool opens();

    // To be called while it is open only.
    virtual void write(const QByteArray& bytes) = 0;
    virtual bool bytesWait() const = 0; // that came() has not been told of
    virtual void giveUp() = 0;          // closes it, as if it had vanished

    virtual QString name() const = 0;
    // The device does not exist at present: no other reason need be given.
    virtual bool isAway() const = 0;
    // Until it is tried again.
    virtual std::chrono::milliseconds pause() const = 0;
};

} // namespace dov417

#endif
