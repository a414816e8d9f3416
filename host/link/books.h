// Every transmission that may still be answered.
//
// A reply carries no address: a late one looks exactly like the reply to the next request of the
// same shape. Controllers answer in the order of their requests, each at most once. So a reply
// belongs to the oldest open transmission that it can belong to, and whatever was sent to that
// station before is answered no more.
#ifndef DOV417_LINK_BOOKS_H
#define DOV417_LINK_BOOKS_H

#include <QByteArray>
#include <array>
#include <bitset>
#include <deque>
#include <optional>

#include "line/clock.h"

namespace dov417 {

constexpr int stationNumbers = 256; // that a byte can be

struct OpenTransmission {
    long long number = 0; // counts up over all stations; 0: not sent yet
    QByteArray sent;
    int replyLength = 0; // of the reply, or untoldLength; an exception has its own
    Clock::time_point sentAt{};
};

class Books {
public:
    // horizon: after that long without a reply none comes any more.
    explicit Books(Clock::duration horizon = Clock::duration::zero());
    void setHorizon(Clock::duration horizon);
    // The same, numbered so that all of it went out before number 0: that is not sent yet.
    Books asPast() const;

    const std::deque<OpenTransmission>& open() const;

    // A frame went out; with replyLength 0 nobody answers it.
    void add(const OpenTransmission& transmission);
    // A sound frame came: the transmission that it belongs to, which is closed with all that went
    // to the station before. Nothing if it answers none.
    std::optional<OpenTransmission> take(const QByteArray& frame);
    // The same, closing nothing: for a frame that may answer another program's request.
    std::optional<OpenTransmission> find(const QByteArray& frame) const;
    // Undoes take(): the frame turned out to answer something else.
    void reopen(const OpenTransmission& transmission);
    // Are all transmissions that it can belong to the same request?
    bool isOfOneRequest(const QByteArray& frame) const;
    // Could it be the reply to a transmission that is answered no more? Such a reply is one too
    // many.
    bool fitsWhatIsOver(const QByteArray& frame) const;
    // Forgets transmissions older than the horizon: they are answered no more.
    void expire(Clock::time_point now);

    // Is a reply out that could be taken for the reply to this request, and would be another's?
    bool couldBeMistaken(const QByteArray& request, int replyLength) const;
    // The first of the transmissions that it would be the reply to.
    std::optional<OpenTransmission> mistakable(const QByteArray& request, int replyLength) const;
    std::optional<OpenTransmission> oldestRead(unsigned char station) const;
    // When the last of those can no longer come.
    Clock::time_point certainAt(const QByteArray& request, int replyLength) const;
    // Is a diagnostics echo to this station still to be answered?
    bool isEchoOut(unsigned char station) const;
    // When this very request was sent last, of what is open.
    std::optional<Clock::time_point> lastSent(const QByteArray& request) const;
    // Is a reply out that has this station, function and length?
    bool isOut(const QByteArray& request, int replyLength) const;

    // May the reply to the earlier transmission stand for the later one? Only if they are the same
    // request and nothing else was written to the station between the two.
    bool standsFor(const OpenTransmission& earlier, const OpenTransmission& later) const;

    // It has sent an echo back, or refused it, and will on the next line, too.
    void answersEchoes(unsigned char station);
    bool hasAnsweredEcho(unsigned char station) const;

    // A reply came once more than it was asked for: until then others may.
    void expectCopies(Clock::time_point until);
    Clock::time_point copiesUntil() const;

private:
    struct Written {
        QByteArray last;
        long long lastNumber = 0;
        long long otherNumber = 0; // of the last one that was not this one
    };
    void forgetOldest();
    long long writtenOther(unsigned char station, const QByteArray& request) const;

    Clock::duration horizon_;
    Clock::time_point copiesUntil_{};
    std::deque<OpenTransmission> open_;
    std::deque<OpenTransmission> over_;           // the last that were open
    std::array<Written, stationNumbers> written_; // by station; 0: broadcasts
    std::bitset<stationNumbers> answersEchoes_;   // stations
};

} // namespace dov417

#endif
