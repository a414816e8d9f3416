// One request and its reply, as the kind of line has it, without a port and without time of its
// own: both are handed in. See exchange.h for Modbus RTU and tcp_exchange.h for Modbus TCP.
#ifndef DOV417_LINK_LINE_PROTOCOL_H
#define DOV417_LINK_LINE_PROTOCOL_H

#include <QByteArray>
#include <functional>
#include <string>
#include <vector>

#include "line/clock.h"
#include "line/serial_format.h"
#include "link/books.h"
#include "link/station_names.h"
#include "link/station_timeout.h"
#include "link/transmission.h"

namespace dov417 {

// Bytes wait in the kernel: let the port's event come first.
constexpr Micros rereadDelay(200);

struct ExchangeSettings {
    SerialFormat wire;
    TimeoutSettings timeout; // from the end of the request to the first byte of the reply
    Micros turnaround{0};    // what controllers need to digest a broadcast
    Micros replyGap{0};      // silence after which a reply that has begun has ended, at first
    Micros horizon{0};       // a station begins to answer within it, or not at all
    bool mayMark = true;     // function 8 may be used
    bool isShared = true;    // others may have asked just before the start
    // On a serial line. Over a network the end of a frame is when it was handed over: when its
    // bytes were on the wire of the far end is not known.
    bool bytesTakeTime = true;
    StationNames stationNames = {}; // for messages
};

// The line as the exchange sees it, and what it tells of itself.
struct ExchangeLine {
    std::function<void(const QByteArray&)> write;
    std::function<bool()> bytesWait;               // came and not handed in yet
    std::function<void(Clock::time_point)> wakeAt; // one call of timerDue(), in place of any before
    std::function<void()> sleep;                   // no such call
    std::function<void(const Transmission&)> sent; // its first byte goes out now
    std::function<void(const Transmission&)> markerEnded;
    std::function<void(const Stray&)> stray;
    std::function<void(const std::string&)> notice; // what a person should know, said once
    std::function<void()> doubt;   // what was taken for a reply so far may have been another's
    std::function<void()> useless; // what comes cannot be understood: the line is to be given up
};

class LineProtocol {
public:
    virtual ~LineProtocol() = default;

    // The line is there, and nothing of ours is under way on it; of others there may be.
    virtual void start(const ExchangeSettings& settings, Clock::time_point now) = 0;
    // The line has gone; done is not called any more.
    virtual void stop() = 0;
    virtual bool isRunning() const = 0;
    // Has a sound frame come since the start?
    virtual bool wasSound() const = 0;

    // Transmits and collects; calls done once, never from within. One at a time. Of the record it
    // fills in what it knows: number, times and reception. The request may end without having been
    // sent: by the reply to the very same request that was sent before, or because a late reply
    // could be mistaken for its own.
    using Done = std::function<void(const Transmission&)>;
    virtual void transact(const Transmission& request, Done done, Clock::time_point now) = 0;

    virtual void bytesCame(const QByteArray& bytes, Clock::time_point now) = 0;
    virtual void timerDue(Clock::time_point now) = 0;

    // What may still be answered, when the line is given up; and for the next one on the same port.
    virtual const Books& books() const = 0;
    virtual void awaitLate(const Books& earlier) = 0;

    // Nothing is sent any more. What has not gone out yet is dropped: its done is not called.
    virtual void sendNoMore() = 0;
    // When the replies that are out have come, or have had the time that their stations take.
    virtual Clock::time_point quietAt() const = 0;

    // Of the stations that have answered.
    virtual std::vector<StationTime> stationTimes() const = 0;
    // Time that the bytes sent and received so far took on the wire.
    virtual Micros wireTime() const = 0;

protected:
    LineProtocol() = default;
    LineProtocol(const LineProtocol&) = default;
    LineProtocol& operator=(const LineProtocol&) = default;
};

} // namespace dov417

#endif
