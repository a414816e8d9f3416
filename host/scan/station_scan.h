// Who answers on a line, at which settings, without a port and without time of its own: both are
// handed in. A line behind a network is scanned as it is set there.
//
// One station after the other is asked and given the time-out, at one line setting after the other.
// An answer is its station's by the number that it carries, whenever it comes: a slow station is
// found too. A station that has answered is asked once more, with a question of another kind: its
// answer shows that it is there at these settings, and that the first was no late reply to what it
// was asked at the settings before. Without a second answer it is told as not confirmed.
//
// Before the first question the line is listened to. Where others speak nothing is asked: they
// would be disturbed.
#ifndef DOV417_SCAN_STATION_SCAN_H
#define DOV417_SCAN_STATION_SCAN_H

#include <QByteArray>
#include <array>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "line/clock.h"
#include "line/serial_format.h"
#include "scan/scan_frames.h"

namespace dov417 {

// None: over a network, where the far end has its own. When bytes are on its wire is not known, so
// a frame ends there when it is handed over.
using ScanLine = std::optional<SerialFormat>;

struct ScanSettings {
    std::vector<ScanLine> lines;
    std::vector<int> stations;
    Micros timeout{50000};    // from the end of a question to the first byte of its answer
    Micros listening{500000}; // before the first question
    Micros lastWait{500000};  // for what is late, before the settings are changed
    Micros replyGap{50000};   // silence after which what has begun has ended
    bool asksAnyway = false;  // where others speak
    bool isModbusTcp = false; // a gateway may say that a station does not answer
};

struct Found {
    ScanLine line;
    int station = 0;
    Micros took{0};          // the longer of its answers
    bool isSlow = false;     // longer than the time-out
    bool isConfirmed = true; // it has answered twice
};

enum class HeardKind {
    inUse,         // others speak
    noFrame,       // bytes come whoever is asked, and no frame
    garbled,       // bytes come when this station is asked, and no frame
    answeredTwice, // what it was asked once
    otherLine      // a late answer to what was asked at these settings: it is asked there again
};

struct ScanHeard {
    HeardKind kind = HeardKind::inUse;
    ScanLine line;
    int station = 0;
    int bytes = 0;            // of inUse and garbled
    std::set<int> stations{}; // of inUse: whose frames were sound
};

// Called from within, each at once.
struct ScanEvents {
    std::function<bool(const SerialFormat&)> setLine; // false: the port does not do that
    std::function<void(const QByteArray&)> write;
    std::function<void(Clock::time_point)> wakeAt; // one call of timerDue(), in place of any before
    std::function<void(const ScanPiece&)> received;
    std::function<void(const Found&)> found;
    std::function<void(const ScanHeard&)> heard;
    std::function<void()> done;
};

struct ScanProgress {
    ScanLine line;
    int station = 0; // that was asked last; 0: none yet
    Micros elapsed{0};
    Micros left{0}; // as it looks now
};

class StationScan {
public:
    StationScan(const ScanSettings& settings, const ScanQuestions& questions,
                const ScanEvents& events);

    void start(Clock::time_point now);
    void bytesCame(const QByteArray& bytes, Clock::time_point now);
    void timerDue(Clock::time_point now);
    // Asks nothing more; ends when the answer that is awaited has come, or has had its time.
    void stop(Clock::time_point now);

    ScanProgress progress(Clock::time_point now) const;

private:
    enum class State {
        listening,
        pausing, // the inter-frame delay
        awaiting,
        closing, // what is late may come
        done
    };
    struct Turn { // at one line setting
        ScanLine line;
        std::vector<int> stations;
        Micros timeout{0};
    };
    struct Ask {
        int station = 0;
        std::size_t question = 0;
        Micros timeout{0};
        int tries = 1;
    };
    struct Question {
        Clock::time_point askedAt{}; // end of the question sent last
        int asked = 0;
        int answers = 0;
        bool isOpen = false;
    };
    struct Station { // in this turn
        std::array<Question, 2> questions;
        Micros took{0};
        int answers = 0;
        Clock::time_point firstAnswer{};
        int noise = 0; // bytes that came when it was asked and did not answer
        bool isTold = false;
        bool hasAnsweredTwice = false;
    };

    void beginTurn(Clock::time_point now);
    void endListening(Clock::time_point now);
    void next(Clock::time_point now);
    void ask(Clock::time_point now);
    void pause(Clock::time_point now);
    void close(Clock::time_point now);
    void endTurn(Clock::time_point now);
    void hear(bool isSilent, Clock::time_point now);
    void judge(const ScanPiece& piece, Clock::time_point now);
    void answered(const ScanPiece& piece, Clock::time_point now);
    void unasked(const ScanPiece& piece, Clock::time_point now);
    void absent(const ScanPiece& piece, Clock::time_point now);
    void windowIsOver(Clock::time_point now);
    void foreignCame(int station, int bytes);
    void tellGarbled(int station, int noise);
    bool askAgainAtEarlierLine(int station, Clock::time_point came);
    void tellOnce(int station, Station& of);
    void tell(int station, Station& of, bool isConfirmed);
    void wake(Clock::time_point now);
    bool mayAsk() const;
    bool waitsForTheRest() const;
    Micros timeOf(const Turn& turn, std::size_t questions) const;

    ScanSettings settings_;
    ScanQuestions questions_;
    ScanEvents events_;
    ScanEar ear_;
    State state_ = State::done;
    Clock::time_point startedAt_{};
    Clock::time_point until_{};
    Clock::time_point firstByte_{}; // of what the ear holds
    Clock::time_point lastByte_{};
    std::deque<Turn> turns_; // the first is under way
    std::map<int, Station> stations_;
    std::map<int, Station> earlierStations_; // of the turn before
    Turn earlier_;
    std::deque<Ask> queue_;
    Ask ask_;
    int windowNoise_ = 0;      // bytes
    bool isDisturbed_ = false; // the awaited answer may have been lost through another frame
    int noisyStations_ = 0;
    int foreignFrames_ = 0;
    int unaskedBytes_ = 0;
    std::set<int> speakers_;
    bool hasListened_ = false;
    bool isInUse_ = false;
    bool isStopping_ = false;
};

} // namespace dov417

#endif
