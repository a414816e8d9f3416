// One request and its reply on a line: a serial port or a connection, Modbus RTU or Modbus TCP.
//
// The line is driven by events only: the port's, and one precise timer. On a serial port it keeps
// the inter-frame delay before each frame; it collects the reply until it is complete, nothing more
// of it comes or the time is up, throws away what is nobody's reply, and opens the port again when
// it comes back.
#ifndef DOV417_LINK_SERIAL_LINE_H
#define DOV417_LINK_SERIAL_LINE_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTimer>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "line/clock.h"
#include "line/serial_format.h"
#include "line/wake_timer.h"
#include "link/line_protocol.h"
#include "link/port.h"
#include "link/request_parts.h"
#include "link/rs485.h"
#include "link/station_names.h"
#include "link/transmission.h"

namespace dov417 {

struct LineSettings {
    QString device;
    SerialFormat wire;
    // From the end of the request to the first byte of the reply: a station that takes longer is
    // waited for longer, unless the time-out is fixed.
    Micros timeout{500000};
    Micros minTimeout{0}; // of a station that is quicker; 0: the time-out itself
    Micros maxTimeout{15000000};
    bool isTimeoutFixed = false;
    Micros turnaround{100000}; // what controllers need to digest a broadcast
    Micros replyGap{100000};   // silence after which a reply that has begun is taken to have ended
    Micros horizon{30000000};  // a station begins to answer within it, or not at all
    Rs485 direction = {};      // of a serial port
    bool mayMark = true;       // function 8 may be used
    bool isShared = true;      // another program may have asked just before the line was opened
    int maxRegisters = learnedMaximum;      // in one request, or 16 coils for each
    std::map<int, int> stationMaxRegisters; // of stations that have their own
    // Until a silent station is asked again, at first a second or this, whichever is less.
    Micros maxProbePause{30000000};
    StationNames stationNames = {}; // for what is said of them
};

// What passes on the line, for logs and counters.
struct LineObserver {
    std::function<void(const Transmission&)> sent; // its first byte goes out now
    std::function<void(const Transmission&)> markerEnded;
    std::function<void(const Stray&)> stray;
    std::function<void(const std::string&)> notice; // what a person should know, said once
    std::function<void()> doubt; // what was taken for a reply so far may have been another's
    std::function<void(bool open, const QString& message)> port;
};

class SerialLine {
public:
    SerialLine(const LineSettings& settings, const LineObserver& observer);
    ~SerialLine();
    SerialLine(const SerialLine&) = delete;
    SerialLine& operator=(const SerialLine&) = delete;

    // Opens the port. False, with the reason, if it cannot be had. True may also mean that a
    // connection over a network is being made: the observer hears when it is open, or why it is
    // not. Once open, a port that vanishes is opened again as soon as it is back, and a connection
    // that was not made is tried again; the observer hears of both.
    bool open(QString* reason);
    bool isOpen() const;

    // Transmits and collects; calls done once, from the event loop. One at a time. If the port
    // vanishes meanwhile, done is not called: the request is to be repeated once the port is back.
    // Of the record the line fills in what it knows: number, times and reception.
    void transact(const Transmission& request, LineProtocol::Done done);

    // Transmissions that may still be answered when this line is closed. The next line on the port
    // has to know them, so that their late replies are recognised.
    Books unanswered() const;
    void awaitLate(const Books& earlier);

    // When the line is left: nothing is sent any more, and what has not gone out yet is dropped.
    void sendNoMore();
    // When the replies that are out have come, or have had the time that their stations take.
    Clock::time_point quietAt() const;

    // Of the stations that have answered.
    std::vector<StationTime> stationTimes() const;
    // Time that the bytes sent and received so far took on the wire.
    Micros wireTime() const;

private:
    void opened();
    void refused(const QString& reason);
    void reopen();
    void gone();
    void useless();
    void wakeAt(Clock::time_point when);

    LineSettings settings_;
    LineObserver observer_;
    std::unique_ptr<Port> port_;
    WakeTimer timer_;
    QTimer reopenTimer_;
    QString lastReason_;
    bool wasUseless_ = false;
    std::unique_ptr<LineProtocol> exchange_;
};

} // namespace dov417

#endif
