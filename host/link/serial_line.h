// One request and its reply on a serial port, with the silences of Modbus RTU around them.
//
// The line is driven by events only: the port's, and one precise timer. It keeps 3.5 characters of
// silence before each frame, collects the reply until it is complete, the line falls silent or the
// time is up, throws away what is nobody's reply, and opens the port again when it comes back.
#ifndef DOV417_LINK_SERIAL_LINE_H
#define DOV417_LINK_SERIAL_LINE_H

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>

#include "line/clock.h"
#include "line/serial_format.h"
#include "line/wake_timer.h"
#include "link/reply_collector.h"
#include "link/transmission.h"

class QSerialPort;

namespace dov417 {

struct LineSettings {
    QString device;
    SerialFormat wire;
    Micros timeout{500000};    // from the end of the request to the first byte of the reply
    Micros turnaround{100000}; // what controllers need to digest a broadcast
};

// What passes on the line, for logs and counters.
struct LineObserver {
    std::function<void(const Transmission&)> sent; // its first byte goes out now
    std::function<void(const Stray&)> stray;
    std::function<void(bool open, const QString& message)> port;
};

// A transmission whose reply has not been seen: it may still come.
struct Unanswered {
    long long number; // 0: of an earlier line
    QByteArray request;
    int replyLength;
    Clock::time_point sentAt;
    Clock::time_point expires;
};

class SerialLine {
public:
    SerialLine(const LineSettings& settings, const LineObserver& observer);
    ~SerialLine();
    SerialLine(const SerialLine&) = delete;
    SerialLine& operator=(const SerialLine&) = delete;

    // Opens the port. False with the reason if it cannot be opened now. Once open, a port that
    // vanishes is opened again as soon as it is back; the observer hears of both.
    bool open(QString* reason);
    bool isOpen() const;

    // Transmits and collects; calls done once, from the event loop. One at a time. If the port
    // vanishes meanwhile, done is not called: the request is to be repeated once the port is back.
    // Of the record the line fills in what it knows: number, times and reception.
    using Done = std::function<void(const Transmission&)>;
    void transact(const Transmission& request, Done done);

    // Transmissions whose replies may still come, when the line is given up; and to be handed to
    // the next one on the same port, which may take them for its own.
    QList<Unanswered> unanswered() const;
    void awaitLate(const QList<Unanswered>& earlier);

    // Time that the bytes sent and received so far took on the wire.
    Micros wireTime() const;

private:
    enum class State {
        closed,
        idle,
        silence,
        awaitingReply,
        awaitingTurnaround
    };

    bool tryOpen(QString* reason);
    void reopen();
    bool applyFormat(QString* reason);
    void lost(const QString& reason);
    void bytesCame();
    void timerDue();
    void beginSilence();
    void transmit();
    void wakeAt(Clock::time_point when);
    void armReplyTimer();
    void finish(LineResult result);
    void takeArrival(Arrival arrival);
    void reportStrays();
    void flushLateBytes(const QByteArray& bytes);
    long long settle(const QByteArray& frame);
    Clock::time_point earliestStart();
    bool bytesWait() const;

    LineSettings settings_;
    LineObserver observer_;
    std::unique_ptr<QSerialPort> port_;
    WakeTimer timer_;
    QTimer reopenTimer_;
    ReplyCollector collector_;
    QList<Unanswered> unanswered_;
    State state_ = State::closed;
    QString lastReason_;
    Micros frameGap_{0}; // silence after which a reply is taken to have ended

    Transmission current_;
    long long transmissions_ = 0;
    Done done_;
    Clock::time_point lastActivity_{}; // end of the last byte on the line, ours or theirs
    Clock::time_point babbleLimit_{};  // when to transmit although the line is not silent
    Clock::time_point deadline_{};
    Micros wireTime_{0};
};

} // namespace dov417

#endif
