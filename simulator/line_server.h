// The controller on a line: a pseudo-terminal that it opens itself, or a serial device.
//
//     Memory memory({1});
//     Controller controller(memory);
//     Faults faults;
//     LineServer server(controller, faults, LineServerOptions());
//     server.open();
//     master.setPortName(server.portName()); // "/dev/pts/5", or the link that was asked for
//
// Event driven: it lives in the thread that it was made in or moved to before open(), needs a Qt
// event loop there, and has no thread of its own. Signals come from that thread.
//
// A request is taken as soon as it is complete (length known from its bytes, CRC right); a run of
// bytes that never becomes one is dropped at the next silence. On a pseudo-terminal the other side
// may close and reopen as it likes: what it left unread is gone, as on a real line. close() is the
// pulled plug: the other side sees a hang-up, the link disappears; open() puts it back.
//
// `paced`: bytes in both directions take the time that they would take on the configured line. The
// reply begins 3.5 characters (1.75 ms above 19200 baud) and the response time after the last byte
// of the request has passed, and its bytes arrive one character time apart (handed over in lumps of
// about a millisecond). Unpaced, a reply leaves after the response time alone, by default at once.
#ifndef DOV417_SIMULATOR_LINE_SERVER_H
#define DOV417_SIMULATOR_LINE_SERVER_H

#include <QByteArray>
#include <QMetaType>
#include <QObject>
#include <QString>
#include <cstdint>
#include <memory>
#include <string>

#include "line/serial_format.h"
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/line_event.h"

namespace dov417::simulator {

struct LineServerOptions {
    std::string device;     // serial device; empty: a pseudo-terminal of its own
    std::string link;       // symbolic link to the pseudo-terminal; empty: none
    SerialFormat line;      // a serial device is set to it; else it tells how long a byte takes
    bool paced = false;     // see above; leave it off on a real serial line
    int responseTimeMs = 0; // what the controller takes before it answers
    // On a pseudo-terminal of its own: what passes while the other side has set another speed is
    // garbled, as on a wire. Parity is nothing that a pseudo-terminal keeps.
    bool ownSpeedOnly = false;
    // Bytes come with the hiccups of the sender's process, not with the evenness of a wire: an
    // unfinished request is given at least this long, the line's inter-frame delay if that is
    // longer.
    int minSilenceMs = 50;
};

struct LineServerCounters {
    std::uint64_t bytesReceived = 0;
    std::uint64_t bytesSent = 0;
    std::uint64_t requests = 0; // frames that the controller took
    std::uint64_t replies = 0;  // transmissions begun, faulty ones included
    std::uint64_t dropped = 0;  // runs of bytes that were no frame
    std::uint64_t unheard = 0;  // replies that nobody was there for
};

class LineServer : public QObject {
    Q_OBJECT

public:
    // Controller and faults are borrowed and must outlive the server.
    LineServer(Controller& controller, Faults& faults, const LineServerOptions& options,
               QObject* parent = nullptr);
    ~LineServer() override;

    // Throws a Failure when the line cannot be had.
    void open();
    void close();
    bool isOpen() const;

    // Of replies to requests that come from now on.
    void setResponseTime(int milliseconds);
    // Switched off, the controller takes nothing in and says nothing, not even the rest of a reply.
    void setOn(bool isOn);

    // What a master has to open: the link if there is one, else the device. Empty while closed.
    std::string portName() const;

    const LineServerCounters& counters() const;

signals:
    void logged(const simulator::LineEvent& event);
    // The controller has dealt with a request; nothing of its reply has left yet.
    void served(const simulator::Answer& answer);
    // The serial device is gone (unplugged); the server has closed itself.
    void lost(const QString& reason);

private:
    class Private;
    std::unique_ptr<Private> d_;
};

} // namespace dov417::simulator

Q_DECLARE_METATYPE(dov417::simulator::Answer)

#endif
