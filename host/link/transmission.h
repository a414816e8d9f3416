// One frame on the line, and everything that is known of it once it has ended. The log, the
// statistics and what a program shows of the line are made from this record alone.
#ifndef DOV417_LINK_TRANSMISSION_H
#define DOV417_LINK_TRANSMISSION_H

#include <QByteArray>
#include <string>
#include <vector>

#include "driver/library.h"
#include "line/clock.h"
#include "link/reasons.h"

namespace dov417 {

enum class LineResult {
    reply,     // bytes that look like the reply: the driver judges them
    exception, // a sound exception reply
    timeout,   // nothing usable came
    heldBack,  // not sent: a reply that is still out could have been taken for its own
    broadcast  // nothing was awaited
};

// What came for a frame.
struct Reception {
    LineResult result = LineResult::timeout;
    QByteArray bytes;
    // Of all that came while the reply was awaited; both are 0 where nothing came.
    Clock::time_point firstByte{};
    Clock::time_point lastByte{};
    Astray astray; // what else came since the frame was sent
};

// The driver's request behind a frame.
struct Request {
    int kind = 0; // what the driver carries for whoever asked: sendCyclicRead, or our number
    int station = 0;
    std::string regName;
    int address = 0;
    int length = 0;
};

// What came in one reply, and so is of one moment.
struct Part {
    Request words;
    Clock::time_point asOf{};
};

struct Transmission {
    long long number = 0; // counts up from 1 on each line that is opened
    Request request;
    QByteArray sent;
    int replyLength = 0;     // bytes that the reply is to have; 0: none is awaited
    bool repeats = false;    // the same frame as before, after a bad or missing reply
    bool isCyclic = false;   // the driver's polling, which nobody waits for
    bool isToSilent = false; // the station, or this request of it, has been silent for some time
    bool isLocal = false;    // not sent: the driver was told at once that there is no reply
    Clock::time_point sendBegin{};
    Clock::time_point sendEnd{}; // when the last byte has left the wire, by the line's speed

    bool isMarker = false; // none of the driver's: see exchange.h
    bool isPart = false;   // carries part of the driver's request: see request_carrier.h
    Micros timeout{0};     // how long after sendEnd the first byte is awaited

    // Known at the end.
    Reception reception;
    // When the controller held at the earliest what a sound reply says: when it came, or, of a late
    // reply to the same request sent before, when that was sent.
    Clock::time_point asOf{};

    // Of a request that was carried in parts: so many frames, each with a record of its own. This
    // record says what the driver was told.
    int frames = 0;
    std::vector<Part> parts; // if all were answered
    std::string where;       // else which failed: reception and replyLength are of that one

    ReplyResult verdict = replyNothingOutstanding; // the driver's
    std::string description;                       // the driver's words for the frame: "1#R_W10(1)"
    Reason why = Reason::none;                     // ours, for a bad reply
    // The same in words: "exception 2 (illegal data address)"; of a good one what is not as asked.
    std::string reason;

    bool isRead() const;
    // Asked only to see whether there is an answer again.
    bool isProbe() const
    {
        return isCyclic && isToSilent;
    }
    // Else it was held back, or what was to go before it was not answered.
    bool wasSent() const
    {
        return number != 0 || frames > 1; // of parts, all but the last were answered
    }
    bool isAbandoned() const
    {
        return verdict == replyAbandoned;
    }
    // "read  1#R_W10(1)"
    std::string name() const;
};

// The station answered, whatever it said.
bool isSound(const Reception& reception);
// The code of an exception reply.
int exceptionCode(const Reception& reception);
// A sound frame of the station itself: not what a gateway says in its place, that it does not
// answer.
bool isOfStation(const Reception& reception);

// What a write was answered with, in words, if that is not what was written: there are controllers
// that make another value of it. Empty: it is, or no such thing was said.
std::string answeredOtherwise(const Transmission& write);

// "R_W:100..107"
std::string wordsText(const Request& request, int first, int words);

// The key of what was wrong with the reply; empty where nothing was.
std::string whyOf(const Transmission& transmission);

// Why the reception is no good reply of so many bytes; and in words, with the time that it was
// awaited if that is to be said: " within 500 ms".
Reason reasonOf(const Reception& reception, int expectedLength);
std::string reasonText(const Reception& reception, int expectedLength,
                       const std::string& within = std::string());

} // namespace dov417

#endif
