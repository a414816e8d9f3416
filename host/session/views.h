// The values on the screen: what each is, how good it is, and what has changed.
#ifndef DOV417_SESSION_VIEWS_H
#define DOV417_SESSION_VIEWS_H

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "driver/library.h"
#include "line/clock.h"
#include "link/transmission.h"
#include "text/addresses.h"

namespace dov417 {

// A bit in one byte, else two bytes a word, as intf_getData() gives them.
using ValueBytes = std::vector<unsigned char>;

enum class Quality {
    neverRead,
    good,
    old,         // its request has been failing, the line is closed, or a part of it was written
    beingWritten // by a write of this session that has no outcome yet
};

// One value, as the controller held it when it was last known. A value that is being written is
// shown once the controller has taken it.
struct View {
    Address address; // of this one value
    bool hasValue = false;
    bool isOld = false;
    int writes = 0; // of this session, under way
    ValueBytes value;
    ValueBytes previous;
    long long changes = 0;
    long long lapses = 0;         // how often it ceased to be good, whoever was told of that or not
    Clock::time_point lastGood{}; // last confirmed by the controller
    Clock::time_point lastChange{};

    Quality quality() const;
};

// A copy of a view as it was when it changed.
struct ViewChange {
    std::size_t index = 0; // in Session::views(), until somebody watches something else
    View view;
    bool isValue = true; // a first or another value; else its quality alone
};
using ViewChanges = std::vector<ViewChange>;

class Views {
public:
    explicit Views(const Library& library);

    const std::vector<View>& all() const;

    // The values of these addresses one by one. What was there before keeps its value, its times,
    // its count and the changes that have not been taken yet. `written`: of all writes under way.
    void replace(const std::vector<Address>& addresses, const std::vector<Address>& written);

    // The controller has just answered this read, or the read was given up. Either counts for the
    // values that lie in it as a whole: two replies may hold halves of two different values.
    void confirm(const Request& read, Clock::time_point asOf);
    void giveUp(const Request& read);
    // What was read may be wrong: it is not known until it has been read again.
    void doubt();
    // The controller made another value of what was written there: what it holds is not known until
    // it has been read again.
    void wasWrittenOtherwise(const Address& address);
    // A write of this address was taken on (+1) or has its outcome (-1).
    void countWrite(const Address& address, int step);

    // The driver has forgotten all values: the next reply decides.
    void driverStartedAnew();
    // Nothing is asked at present.
    void makeOld();
    // What comes next is another controller's.
    void forget();

    // Since the last call.
    ViewChanges takeChanges();
    bool haveChanged() const;

private:
    using UnitKey = std::tuple<int, std::string, int>; // station, area or name, address
    // Station, name, width, first, length: a number and a text may lie in the same words.
    using ValueKey = std::tuple<int, std::string, Width, int, int>;
    using Index = std::map<UnitKey, std::vector<std::size_t>>;

    // What is known of a view besides.
    struct Standing {
        bool isCached = false; // the driver's cache holds what the controller answered
        int writesOfWords = 0; // under way, of the words that it lies in
    };

    void add(const Address& range, const std::map<ValueKey, std::size_t>& places,
             const std::vector<View>& before, const std::vector<Standing>& standing);
    bool read(std::size_t index);
    void forget(std::size_t index);
    bool makeOld(std::size_t index); // was it good?
    void changed(std::size_t index, bool isValue);
    template <typename Call>
    void forEachIn(const Request& words, Call call);
    std::set<std::size_t> inWordsOf(const Address& address);
    void count(const Address& address, int step);

    const Library& library_;
    std::vector<View> views_;
    std::vector<Standing> standing_; // by index
    Index byWord_;                   // by area and word
    ViewChanges changes_;
};

} // namespace dov417

#endif
