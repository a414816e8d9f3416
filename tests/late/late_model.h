// A master's exchange and two stations in one state that can be copied: events, one after the
// other, and what the master then shows of what the stations held. No time passes but by events.
#ifndef DOV417_TESTS_LATE_MODEL_H
#define DOV417_TESTS_LATE_MODEL_H

#include <array>
#include <chrono>
#include <deque>
#include <string>
#include <vector>

#include "link/exchange.h"

namespace dov417 {

struct LateModelSettings {
    int diagnostics = 1; // 1: echoes, 0: answered with an exception, -1: nothing is said
    bool isTimeoutFixed = false;
    bool isShared = false;
    bool mayMark = true;         // function 8 may be used
    bool refuses = false;        // one of the reads is answered with an exception
    bool dropsWhenAsked = false; // what has not been answered when the next request comes
    bool echoes = false;         // the adapter hears at once what it sends
    // Until a surplus is met nothing is promised where replies come twice.
    bool judgesWhenWary = false;
};

struct LateQuestion {
    const char* name;
    int station;
    bool isWrite;
    int address;
    int count;
    bool isProbe = false; // a read of a station that has been silent for some time
};

// The first can be written; of the others the values tell their station and address.
constexpr int writtenAddress = 0x1000;
constexpr int otherAddress = 0x100;

struct LateEvent {
    enum class Kind {
        ask,                // index: of the question
        replyComes,         // index: of the station, as below
        replyComesAndStays, // to come once more: what nothing is promised for
        replyBegins,        // with amount bytes, at least one; the rest comes later
        replyIsSpoilt,      // by one bit, amount
        replyIsLost,        // or what is left of it
        hearsNoMore,        // the station hears no request until it
        hearsAgain,
        timePasses,  // until the timer is due
        timerIsLate, // by amount ms
        timeGoesBy   // amount ms, or until the timer is due
    };
    Kind kind;
    std::size_t index;
    int amount = 0;
};

class LateModel {
public:
    LateModel(const LateModelSettings& settings, const std::vector<LateQuestion>& questions);

    bool isPossible(const LateEvent& event) const;
    // Only what is possible.
    void apply(const LateEvent& event);

    // Empty, or what is wrong with a value that was shown.
    const std::string& wrong() const;
    long long goodReplies() const;
    bool isAsking() const;
    bool awaitsReply(std::size_t station) const;

private:
    struct Due {
        QByteArray reply;
        Clock::time_point askedAt;
        bool hasBegun = false;
        bool isSpoilt = false;
        bool isCopy = false; // which is the modem's
    };

    static ExchangeLine lineOfCurrent();
    void ask(const LateQuestion& question);
    void come(std::size_t station, int bytes);
    void fire();
    void hearItself();
    void serve(const QByteArray& request);
    int valueOf(int address) const;
    void ended(const Transmission& ended);
    void judgeWord(int address, int word);

    static LateModel* current; // whose event it is

    LateModelSettings settings_;
    const std::vector<LateQuestion>* questions_;
    Exchange exchange_;
    Clock::time_point now_ = Clock::time_point() + std::chrono::hours(1);
    Clock::time_point wake_ = Clock::time_point::max();
    std::array<std::deque<Due>, 2> due_;
    std::array<bool, 2> isDeaf_{};
    QByteArray echo_; // on its way
    const LateQuestion* asked_ = nullptr;
    bool isAsking_ = false;
    bool isWritten_ = false;
    bool isNew_ = false; // the written value was shown, or the write confirmed
    long long goodReplies_ = 0;
    std::string wrong_;
};

} // namespace dov417

#endif
