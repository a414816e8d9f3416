// What came in for one request: is it the reply, and is it all of it?
//
// The driver compares nothing but length and CRC. Whose reply it is, is judged here, before the
// bytes are handed on: a late reply of another station with the right length would otherwise end up
// as a value of this one.
#ifndef DOV417_LINK_REPLY_COLLECTOR_H
#define DOV417_LINK_REPLY_COLLECTOR_H

#include <QByteArray>
#include <QList>

#include "line/clock.h"

namespace dov417 {

enum class StrayKind {
    otherStation,  // a sound frame of another station
    otherFunction, // a sound frame of this station for another function
    otherRequest,  // a sound frame of this station and function that answers something else
    noise,         // no sound frame
    echo,          // the request itself, from a two-wire adapter that hears what it sends
    late,          // the reply to an earlier request, or one that came while none was awaited
    surplus        // a sound frame although all that was asked of its station had been answered
};
constexpr int strayKinds = 7;

// Bytes on the line that are not the awaited reply.
struct Stray {
    StrayKind kind = StrayKind::noise;
    QByteArray bytes;
    Clock::time_point at{};
    long long answers = 0; // number of the earlier transmission that they answer; 0: none is known
};

enum class Arrival {
    incomplete, // nothing to hand on yet
    reply,      // the reply, or what is left of it: the driver judges length and CRC
    exception   // a sound exception reply
};

// Can the reply to this read begin with the request itself? Then it begins like what an adapter
// hears of its own sending.
bool mayOpenLikeItsEcho(const QByteArray& request, int replyLength);

class ReplyCollector {
public:
    // Over Modbus TCP nothing is heard but what others send.
    explicit ReplyCollector(bool mayHearItself = true);

    // Starts over for a request of at least four bytes that awaits replyLength bytes, or
    // untoldLength: then the reply is whole once the line is silent.
    void begin(const QByteArray& request, int replyLength);
    // It goes out: what the adapter echoes of it may come behind its end.
    void sent();
    // What came was no reply to it: the reply is still awaited, as before.
    void goOn();

    Arrival add(const QByteArray& bytes);

    // The reply gap is over: what is here will not grow.
    Arrival endOfFrame();

    // Nothing more is waited for. A frame that confirms another value at the written address is
    // handed on now: some controllers answer with what they made of the value.
    Arrival timeIsUp();

    bool isEmpty() const;
    // Bytes that came and are part of nothing yet.
    int size() const;
    // Are they the front of what looks like the reply?
    bool isReplyUnderWay() const;

    // The bytes to hand on, after reply or exception.
    QByteArray reply() const;

    // What was handed on answers what was sent since begin(): of a read that tells whether the
    // adapter echoes, unless something else came, which may have been a garbled echo.
    void wasAnswer(bool cameAlone);
    // Is this what the adapter had still to echo of what was sent? It comes once.
    bool takeEcho(const QByteArray& bytes);
    // Is it known whether the adapter echoes?
    bool knowsAdapter() const;
    // It may be another one. One that echoed is still taken for one that does.
    void forgetAdapter();
    // As far as is known.
    bool echoes() const;

    // Everything met since the last call that was no reply.
    QList<Stray> takeStrays();

private:
    Arrival judge();
    void stripOwedEchoes();
    bool stripEcho();
    bool isAnswer(const QByteArray& frame) const;
    bool opensLikeAnswer() const;
    StrayKind kindOfPending() const;
    Arrival finish(Arrival arrival, int first, int length);

    QByteArray request_;
    bool mayHearItself_;
    bool isSent_ = false;
    QList<QByteArray> owed_; // echoes of what was sent before, not heard yet
    int replyLength_ = 0;
    QByteArray pending_;
    QByteArray reply_;
    QByteArray almostReply_; // right in everything but the value
    QList<Stray> strays_;
    bool echoStripped_ = false;  // in this transaction
    bool echoIsBehind_ = false;  // what was handed on
    bool adapterEchoes_ = false; // as the last answered read has shown
    bool knowsAdapter_ = false;
};

} // namespace dov417

#endif
