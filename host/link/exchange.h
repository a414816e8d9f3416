// Modbus RTU: one request and its reply.
//
// It keeps the inter-frame delay before each frame, collects the reply until it is complete, the
// line falls silent or the time is up, and throws away what is nobody's reply. What it hands on as
// a reply is the reply to that very request: see books.h. Where a late reply could be mistaken for
// it, a marker is sent first, a diagnostics echo with a number of its own: as controllers answer in
// order, nothing older comes once it is back.
//
// All this holds as long as each request is answered at most once. A radio modem that sends a reply
// twice breaks it: the copy looks like the reply to the next request, and that one's like the reply
// to the one after it. From the first sound frame that answers nothing, a surplus, what was taken
// so far is in doubt, and a marker precedes every request to any station
// until none has come for some time. What holds then: no copy is taken for another request's reply,
// if copies come before whatever the station says afterwards (as from a modem that repeats a frame
// until it is acknowledged). A copy that is overtaken by the marker's reply cannot be told from the
// reply to the request behind it.
#ifndef DOV417_LINK_EXCHANGE_H
#define DOV417_LINK_EXCHANGE_H

#include <QByteArray>
#include <array>
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
        listening, // to a station that is late, before anything is sent to it
        silence,
        awaitingReply,
        holdingBack, // a reply that came too soon, until another could have come
        awaitingTurnaround
    };

    struct Station {
        StationTimeout timeout;
        ReplyPace pace;
        Clock::time_point listenUntil{};
        bool isUnknown = true;           // another program may have asked it just now
        int marksUnanswered = 0;         // since then
        bool hasAnsweredRead = false;    // as a marker, once since then
        bool numbersEchoes = false;      // it has sent one back
        bool answeredEchoBefore = false; // on an earlier line: it need only be waited for
        bool markFailed = false;         // the last marker was not answered
        int marksIgnored = 0;            // so often it answered something else afterwards
        OpenTransmission lastAsked;      // that was no echo
        OpenTransmission lastAnswered;   // whose reply may come once more
        bool isNamed = false;            // as slow
        // By an echo, before it was known whether it was the adapter that was heard.
        std::vector<OpenTransmission> closedByEcho;
        bool wasAdapters = false; // it was that, and no marker has been answered since
        int marksAtOnce(bool knowsAdapter) const; // for one request
        bool mayEcho(bool beforeRead) const;      // as a marker
        void markWasAnswered(const OpenTransmission& marker);
    };

    static OpenTransmission openOf(const Transmission& transmission);
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
    void beginSilence(Clock::time_point now);
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
    std::array<Station, 256> stations_{};
    State state_ = State::stopped;
    bool sendsNoMore_ = false;

    Transmission current_; // what was asked for
    Transmission marker_;
    bool isMarking_ = false;    // the frame to be sent or on the line is the marker
    bool isAlone_ = false;      // no other echo is to be answered besides the marker
    bool trustsEchoes_ = false; // some ended a doubt while the adapter was not known
    bool wasSilent_ = false;    // nothing came at all to what was sent last for this request
    bool isForAdapter_ = false; // the marker is one that the adapter's echo cannot be taken for
    int markersLeft_ = 0;       // that may go out for the current request
    long long transmissions_ = 0;
    long long earlier_ = 0; // of them, when the line was not there: others may have asked since
    unsigned short nextMark_ = 1;
    Done done_;
    Clock::time_point lastActivity_{}; // end of the last byte on the line, ours or theirs
    Clock::time_point babbleLimit_{};  // when to transmit although the line is not silent
    Clock::time_point deadline_{};
    Clock::time_point listenEnd_{};
    Clock::time_point holdEnd_{};    // of a request that is held back; 0: it has not been yet
    Clock::time_point foreignEnd_{}; // until then replies to others' requests of before may begin
    Clock::time_point doubtedAt_{};  // the first surplus was met
    int doubts_ = 0;                 // times that this was so
    int doubtsBefore_ = 0;           // the current request was asked for
    bool surplusWasSaid_ = false;
    LineResult heldResult_ = LineResult::timeout;
    Clock::time_point heldUntil_{};
    QByteArray behind_;                         // came at once with a frame, and after it
    std::optional<OpenTransmission> otherwise_; // answered, with another value than was written
    QByteArray answeredOtherwise_;              // namely
    int bytesCame_ = 0;                         // since the frame was sent
    Astray astray_;                             // of them, what was no reply
    Astray markersAstray_;                      // of the marker before this request that says most
    Micros wireTime_{0};
};

} // namespace dov417

#endif
