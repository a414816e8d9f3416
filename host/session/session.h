// A panel's dealings with the driver: what it watches, writes, reads once and moves as a recipe.
//
// The driver knows lists and frames; a person knows values and writes. The session stands between:
// it gives every value that is watched its place, and every write an outcome of its own. What a
// person must not trip over is settled here:
// - a run of coil bits in one write goes out without its area's base address: bits are written one
//   at a time;
// - single reads of bit registers are never framed: they read the words that hold the bits;
// - equal writes replace each other in the driver's queue, and the queue drops writes when it is
//   full: only so many are handed in, and an equal one only after the first has its outcome;
// - a write that cannot be framed would block the queue for ever: it is refused before;
// - a failed single read empties the driver's whole list of them: they are handed in one by one;
// - the merge gap is also the largest piece of a write: 32-bit values are handed in so that no
//   piece ends within one.
#ifndef DOV417_SESSION_SESSION_H
#define DOV417_SESSION_SESSION_H

#include <QMutex>
#include <QObject>
#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "driver/library.h"
#include "link/link_runner.h"
#include "session/pieces.h"
#include "session/recipe_layout.h"
#include "text/addresses.h"

namespace dov417 {

// A bit in one byte, a word in two, a double word in four.
using ValueBytes = std::array<unsigned char, 4>;

// One value on the screen.
struct View {
    Address address; // of this one value
    bool arrived = false;
    ValueBytes value{}; // as intf_getData() gives them
    ValueBytes previous{};
    long long changes = 0;
    Clock::time_point refreshed{}; // last confirmed by the controller
};

struct SessionSettings {
    int retries; // bad or missing replies until the driver gives up
    int gap;     // words
};

// What became of a write or a single read, by its number.
using TicketEvent = std::function<void(int number, bool accepted, const std::string& reason)>;

struct SessionEvents {
    std::function<void(const View&, std::size_t index)> changed; // also the first arrival
    TicketEvent written;
    TicketEvent readOnce;
    std::function<void(bool accepted, const std::string& reason)> recipeEnded;
    std::function<void(long long cycles)> cycleEnded;
    std::function<void(const std::string& request, const std::string& reason)> abandoned;
};

enum class RecipeTransfer {
    upload,  // controller to buffer
    download // buffer to controller
};

class Session {
public:
    Session(const Library& library, const SessionSettings& settings, const LineSettings& line,
            const SessionEvents& events, const RunnerEvents& runnerEvents);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    LinkRunner& runner();
    const std::vector<View>& views() const;

    // Polls these addresses from now on; the views are their values one by one.
    void watch(const std::vector<Address>& addresses);
    // Adds views without polling them: single reads fill them.
    void show(const std::vector<Address>& addresses);

    // Queues one piece; the outcome comes as an event with the number returned here.
    int write(const Write& piece);
    int readOnce(const Address& words);
    // Writes that have no outcome yet.
    std::size_t writesUnderWay() const;

    // One transfer at a time; its end comes as an event. A download takes its words from the recipe
    // buffer, an upload leaves them there. Throws a UsageFailure if the layout does not fit.
    void transferRecipe(const RecipeLayout& layout, RecipeTransfer transfer);
    std::vector<std::uint16_t>& recipeBuffer();

private:
    struct Ticket {
        int number;
        Address address;
        std::vector<unsigned char> data;
    };
    using UnitKey = std::tuple<int, std::string, int>; // station, area or name, address

    static void valueChanged(int tag, int station, QString& regName, int address);
    void initialise();
    void outcome(const Outcome& event);
    void settleTicket(const Outcome& event);
    void settleRecipe(const Outcome& event);
    void countCycle();
    void refresh(const FRAME_PRO& frame);
    void refreshChanged();
    void readView(std::size_t index);
    void feed();
    bool feedWrites();
    bool feedSingleRead();
    void refuse(const TicketEvent& event, int number);
    void nextRecipeRound();
    void endRecipe(bool accepted, const std::string& reason);

    const Library& library_;
    SessionSettings settings_;
    SessionEvents events_;

    std::vector<View> views_;
    std::map<UnitKey, std::vector<std::size_t>> viewsByName_; // as the driver announces them
    std::map<UnitKey, std::vector<std::size_t>> viewsByWord_; // by area and word
    std::vector<std::size_t> changed_;

    int plannedRequests_ = 0;
    int requestsThisCycle_ = 0;
    long long cycles_ = 0;
    Clock::time_point cycleStart_{};

    int nextTicket_;
    std::deque<Ticket> waitingWrites_;
    std::map<int, Ticket> handedInWrites_;
    std::deque<Ticket> waitingReads_;
    bool readHandedIn_ = false; // the first of them

    QMutex blockMutex_;
    std::vector<unsigned char> block_;
    std::vector<std::uint16_t> recipeWords_;
    std::deque<std::vector<RecipeRecord>> recipeRounds_; // still to be moved, the current one first
    std::size_t recipeFlag_ = 0;                         // offset in the block
    bool recipeRuns_ = false;                            // the flag is set

    QObject later_; // for what is told from the event loop
    LinkRunner runner_;
};

// The values of an address as the driver's cache holds them.
std::vector<unsigned char> cachedBytes(const Library& library, const Address& address);

} // namespace dov417

#endif
