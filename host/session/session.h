// A panel's dealings with the driver: what it watches, writes, reads once and moves as a recipe.
//
// The driver knows lists and frames; a person knows values and writes. The session stands between:
// it gives every value that is watched its place, and every write an outcome of its own.
//
// It lives in one thread with everything below it, which may be another than a window's: it is
// made, called and destroyed there, and what it tells other threads goes through queued
// connections. No call throws but the constructor. Listeners and done functions are called in that
// thread: from its event loop, and from within open(), close(), setSettings(), endRequests() and
// tellAll(). They may call everything here (to destroy the session they use deleteLater()). They
// must not throw: where one does, the session goes on and says so.
#ifndef DOV417_SESSION_SESSION_H
#define DOV417_SESSION_SESSION_H

#include <QObject>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "driver/library.h"
#include "line/failure.h"
#include "link/link_runner.h"
#include "session/pending_requests.h"
#include "session/pieces.h"
#include "session/recipe_transfer.h"
#include "session/tellings.h"
#include "session/views.h"
#include "session/whole_values.h"

namespace dov417 {

struct SessionSettings {
    int retries; // bad or missing replies until the driver gives up
    int gap;     // words
};

extern const char* const repliesAreDoubtful;

class Session : public QObject {
    Q_OBJECT

public:
    // One at a time, as the library has one driver: throws a std::logic_error where the driver is
    // in use. The line is closed.
    Session(const Library& library, const SessionSettings& settings);
    // Nothing that is under way is told any more.
    ~Session() override;

    // Closes the line that was open, and forgets what was read there: the next may lead to another
    // controller. Refused with the reason if the port cannot be had; the line is closed then.
    Result open(const LineSettings& line);
    // Ends every write, read and recipe with this reason and tells it before it returns; called
    // from a listener, once that listener has returned.
    void close(const std::string& reason = "the line was closed");
    bool isOpen() const; // also while the port is away
    // For a program that is to end: sends nothing more and calls done once the line is quiet, so
    // that whoever asks there next hears no reply of ours. What is still out is awaited as long as
    // its station has been seen to take, and no longer than two seconds; what comes meanwhile is
    // told as ever. What has no outcome by then is ended by close(), which may be called before
    // that, too.
    void finish(std::function<void()> done);
    // The same, by itself, at the end of so many cycles from now.
    void finishAfterCycles(long long cycles, std::function<void()> done);
    // Counts how often everything under way was ended. An outcome may be told when that has already
    // happened: who goes on after it, to write what was read first, compares.
    int generation() const
    {
        return generation_;
    }

    // Counts how often replies turned out to be another request's, maybe. Who has collected what
    // was read meanwhile compares.
    int doubts() const
    {
        return doubts_;
    }

    const Library& library() const
    {
        return library_;
    }
    const SessionSettings& settings() const;
    // Other settings end every write, read and recipe, too, but the values are the same
    // controller's still: they are old until they have been read again.
    void setSettings(const SessionSettings& settings);
    // Ends what is under way in the same manner, and keeps the settings.
    void endRequests(const std::string& reason);
    // For who has been told that the port is away, and why: what is under way would go out to
    // whatever is at its end when it is back.
    void endWithPort(const std::string& message);

    // Polls these addresses from now on, and nothing else; the views are their values one by one.
    // Values, times and counts of addresses that stay are kept. Refused if one of them cannot be
    // read: nothing is watched then.
    Result watch(const std::vector<Address>& addresses);
    const std::vector<View>& views() const;

    // From now on a cycle begins so long after the one before, or at once where that is over then,
    // which is noticed. What somebody waits for is not held up. 0: one cycle follows the other.
    void setCycleInterval(std::chrono::milliseconds interval);

    // Each is ended once, by done; refused where the line is closed, where the address cannot be
    // used so, and where the driver would make more than one request of it (see writePieces() and
    // readPieces()).
    void write(const Write& piece, Done done);
    void readOnce(const Address& words, Done done);
    void transferRecipe(const RecipeLayout& layout, RecipeDirection direction,
                        const RecipeWords& words, RecipeDone done);
    // Of the recipe that is under way or was the last: words that the controller has answered for.
    std::size_t recipeWordsMoved() const;
    // Writes that have no outcome yet.
    std::size_t writesUnderWay() const;

    // The values of an address as the driver's cache holds them; it is emptied when the line is
    // closed and when the settings are changed.
    std::vector<unsigned char> cachedBytes(const Address& address) const;
    // Of the line since it was opened, also after it was closed.
    const LinkStatistics& statistics();
    // Tells at once what waits to be told, for a program whose event loop has ended.
    void tellAll();

signals:
    // All changes since the last of these signals, in their order.
    void changed(const dov417::ViewChanges& changes);
    void cycleEnded(long long cycles);
    void abandoned(const std::string& request, const std::string& reason, dov417::Reason why);
    // A port that was lost is opened again as soon as it is back, and everything goes on.
    void portChanged(bool open, const std::string& message);
    // What a person should know of the line or a station, said once.
    void noticed(const std::string& text);

    void transmissionBegan(const dov417::Transmission& transmission);
    void transmissionEnded(const dov417::Transmission& transmission);
    void strayCame(const dov417::Stray& stray);

private:
    void end(const std::string& reason);
    void startDriver();
    void restartDriver(const std::string& reason);
    bool driverHasAFrame() const;
    void planViews();
    void began(const Transmission& transmission);
    void tellEnded(const Transmission& transmission);
    bool mayCut(const Request& request, int word) const;
    void ended(const Transmission& transmission);
    void settle(const Transmission& transmission);
    std::optional<long long> cycleUnderWay() const; // none where nothing is watched
    void countCycle();
    void pace(Clock::time_point now);
    void doubt();
    void listenerThrew(const std::string& what);
    void portWas(bool open, const std::string& message);
    Result refusal() const;
    Result refusal(const Address& address, Access access, bool isOnePiece) const;
    void feed();
    void tellChanges();

    const Library& library_;
    DriverClaim claim_; // nobody plans or learns on a driver that polls
    SessionSettings settings_;
    Tellings tellings_;
    bool isTellingWhatWasThrown_ = false;
    Views views_;
    PendingRequests requests_;
    RecipeTransfer recipe_;
    std::vector<Address> watched_;
    WholeValues wholeValues_; // of these

    int plannedRequests_ = 0;
    int requestsThisCycle_ = 0;
    bool isOfPlanBefore_ = false; // the request under way
    int generation_ = 0;
    int doubts_ = 0;
    long long cycles_ = 0;
    long long lastCycle_ = 0; // 0: none is the last one
    std::function<void()> afterLastCycle_;
    Clock::time_point cycleStart_{};
    std::chrono::milliseconds cycleInterval_{0};
    bool isTooLong_ = false; // a cycle was, for its interval: once said, it is known

    LinkRunner runner_;
};

} // namespace dov417

#endif
