// Modbus RTU: one request and its reply.
//
// It keeps the inter-frame delay before each frame and collects the reply until it is complete, the
// line falls silent or the time is up. Frames that answer nothing of ours are thrown away. What is
// handed on as a reply is the reply to that very request: see books.h. Where a late reply could be
// mistaken for it, a marker is sent first: a diagnostics echo with a number of its own, or a read
// that no other reply looks like. Controllers answer in order, so nothing older comes once the
// marker is answered.
//
// All this holds as long as each request is answered at most once. A radio modem that sends a reply
// twice breaks it: the copy looks like the reply to the next request, and from then on each reply
// is taken for that to the request after its own. A sound frame that answers nothing, a surplus,
// shows that this has happened. What was taken so far is in doubt then, and a marker precedes every
// request, to any station, until no surplus has come for ten minutes.
//
// With these markers no copy is taken for another request's reply, as long as copies come before
// whatever else the station says: a modem repeats a frame until it is acknowledged. A copy that
// comes only after the marker's reply cannot be told from the reply to the request that follows.
#ifndef DOV417_LINK_EXCHANGE_H
#define DOV417_LINK_EXCHANGE_H

#include <QByteArray>
#include <map>
#include <string>
#include <vector>

#include "line/clock.h"
#include "link/books.h"
#include "link/line_protocol.h"
#include "link/reply_collector.h"
#include "link/reply_gap.h"
#include "link/reply_pace.h"
#include "link/station_timeout.h"
#include "link/transmission.h"

namespace dov417 {

class Exchange : public LineProtocol {
public:
    explicit Exchange(const ExchangeLine& line);

    void start(const ExchangeSettings& settings, Clock::time_point now) override;
    void stop() override;
    bool isRunning() const override;
    bool wasSound() const override;
    void transact(const Transmission& request, Done done, Clock::time_point now) override;
    void bytesCame(const QByteArray& bytes, Clock::time_point now) override;
    void timerDue(Clock::time_point now) override;
    const Books& books() const override;
    void awaitLate(const Books& earlier) override;
    void sendNoMore() override;
    Clock::time_point quietAt() const override;
    std::vector<StationTime> stationTimes() const override;
    Micros wireTime() const override;

    // Does a marker precede each request?
    bool isWary(Clock::time_point now) const;

private:
    enum class State {
        stopped,
        idle,
        listening,       // to a station that is late, before anything is sent to it
        interFrameDelay, // before a frame
        awaitingReply,
        holdingBack, // a reply that came too soon: the very reply may still follow
        awaitingTurnaround
    };

    // What is known of one station. "Unknown" stations may still have to answer another program
    // that used this line before.
    struct Station {
        StationTimeout timeout;
        ReplyPace pace;
        Clock::time_point listenUntil{}; // nothing is sent to it before: it may still be answering
        bool isUnknown = true;
        int marksUnanswered = 0; // markers without an answer since it became unknown
        // While it is unknown: has it answered one read that was a marker? The second one counts.
        bool hasAnsweredRead = false;
        bool numbersEchoes = false;      // it has sent an echo back: it knows function 8
        bool answeredEchoBefore = false; // on an earlier line: its echo need only be waited for
        bool markFailed = false;         // the last marker was not answered
        int marksIgnored = 0;          // times that it left a marker unanswered and answered later
        OpenTransmission lastAsked;    // the frame sent to it last that was no echo
        OpenTransmission lastAnswered; // a copy of this reply may still come
        bool isNamed = false;          // a notice has said that it is slow
        // What its echoes have closed while it was not known whether the adapter hears its own
        // sending. If it does, the echoes may have been the adapter's and all of this is opened
        // again.
        std::vector<OpenTransmission> closedByEcho;
        // Its echoes were the adapter's, and no marker has been answered since: nothing is taken
        // for its reply.
        bool wasAdapters = false;
        int marksAtOnce(bool knowsAdapter) const; // markers that one request may cost
        bool mayEcho(bool beforeRead) const;      // is an echo a marker for it, not a read?
        void markWasAnswered(const OpenTransmission& marker);
    };

    static OpenTransmission openOf(const Transmission& transmission);
    Station& known(unsigned char station);
    const Station& known(unsigned char station) const;
    Station& station();
    void next(Clock::time_point now);
    void drop();
    bool mark(Clock::time_point now);
    bool repeatOpenRead();
    bool knowsAdapter() const;
    bool couldConfirmItself() const;
    bool couldOpenLikeItsEcho() const;
    bool mayBeOwnEcho(const QByteArray& frame) const;
    bool mayHaveBeenEchoed();
    void learnOfAdapter();
    void rememberClosedBy(const QByteArray& frame, Clock::time_point now);
    bool isDropped(bool isBehindEcho, Clock::time_point now);
    void beginDelay(Clock::time_point now);
    void transmit(Clock::time_point now);
    void armReplyTimer();
    void listen(Clock::time_point until);
    bool isInDoubt(Clock::time_point now);
    bool isOfDoubt(const Transmission& frame) const;
    bool endsDoubt(const OpenTransmission& answered, LineResult result, Clock::time_point now);
    void deadlinePassed(Clock::time_point now);
    void finish(LineResult result);
    void markerAnswered(LineResult result);
    void markerFinished(LineResult result, Clock::time_point now);
    void takeArrival(Arrival arrival, Clock::time_point now);
    void awaitMore(Clock::time_point now);
    bool takeFrame(Arrival arrival, Clock::time_point now);
    void garbledCame(LineResult result, Clock::time_point now);
    Clock::time_point waitEnd() const;
    void waitIsOver(Clock::time_point now);
    bool isBabble(Clock::time_point now) const;
    void takeBabble(Clock::time_point now);
    bool takeReply(LineResult result, Clock::time_point now);
    void handOn(LineResult result, const OpenTransmission& answered, Clock::time_point now);
    void report(const Stray& stray);
    void nameIfSlow(unsigned char station, Micros delay);
    void reportStrays(Clock::time_point now);
    bool isToBeHeldBack(Clock::time_point now);
    void holdBack(LineResult result);
    void heldBackGoesOn(Arrival arrival, Clock::time_point now);
    void flushBehind(Clock::time_point now);
    void flushLateBytes(const QByteArray& bytes, Clock::time_point now);
    struct Settled {
        std::optional<OpenTransmission> answered;
        bool isSurplus = false;
        long long number() const;
        StrayKind kindOr(StrayKind kind) const;
    };
    Settled settle(const QByteArray& frame, Clock::time_point now);
    bool mayBeOthers(const QByteArray& frame, Clock::time_point now) const;
    bool isSurplus(const QByteArray& frame, Clock::time_point now);
    void surplusCame(int station, Clock::time_point now);
    void noteAnswer(const OpenTransmission& answered, Clock::time_point now);
    Micros onTheWire(int bytes) const;
    Micros maxReplyTime() const;

    ExchangeLine line_;
    ExchangeSettings settings_;
    ReplyCollector collector_;
    ReplyGap gap_;
    Books books_;
    std::map<unsigned char, Station> stations_; // that were asked, or heard
    Station unheard_;                           // what is assumed of the others
    State state_ = State::stopped;
    bool sendsNoMore_ = false;

    Transmission current_;        // the request that was asked for
    Transmission marker_;         // the last marker that was made for it
    bool isMarking_ = false;      // the marker is on the line, or goes before the request
    bool isAlone_ = false;        // what answers an echo can answer no other one
    bool trustsEchoes_ = false;   // echoes ended doubts while the adapter was not known
    bool wasSilent_ = false;      // to the last frame nothing came at all, so no echo of an adapter
    bool isForAdapter_ = false;   // the marker is a read, as a write's echo could be the adapter's
    int markersLeft_ = 0;         // how many more may be sent for the current request
    long long transmissions_ = 0; // number of the frame sent last
    long long earlier_ = 0;       // its value when the line was opened last
    unsigned short nextMark_ = 1; // number in the next echo
    Done done_;                   // takes the current request's outcome
    Clock::time_point lastActivity_{}; // end of the last byte on the line, ours or theirs
    Clock::time_point babbleLimit_{};  // when to transmit although the line is not silent
    Clock::time_point deadline_{};     // until then the first byte of the reply may come
    Clock::time_point listenEnd_{};    // of State::listening
    Clock::time_point holdEnd_{};      // when to give up a request that is not sent; 0: not held
    Clock::time_point foreignEnd_{};   // until then replies to another program may begin
    Clock::time_point doubtedAt_{};    // when the first surplus came
    int doubts_ = 0;                   // how often a first surplus came
    int doubtsBefore_ = 0;             // of these, before the current request was asked for
    bool surplusWasSaid_ = false;      // a notice has said it
    LineResult heldResult_ = LineResult::timeout; // of the reply that is held back
    Clock::time_point heldUntil_{};               // until then its successor may come
    QByteArray behind_;                           // bytes that came together with a frame, after it
    // A reply to the current write that carries another value: taken if no better one comes.
    std::optional<OpenTransmission> otherwise_; // the write
    QByteArray answeredOtherwise_;              // the reply
    int bytesCame_ = 0;                         // since the last frame was sent
    Astray astray_;                             // of these, what was no reply
    Astray markersAstray_; // the most telling of those of this request's markers
    Micros wireTime_{0};   // time that bytes of both directions took
};

} // namespace dov417

#endif
