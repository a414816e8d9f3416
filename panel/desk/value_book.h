// What the window knows of each value that it watches, by its address and by nothing else. Pure.
//
// A value that is not known to be the controller's present one says so: never read, old, being
// written, or the last write to it failed.
#ifndef DOV417_PANEL_VALUE_BOOK_H
#define DOV417_PANEL_VALUE_BOOK_H

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "panel/desk/line_batch.h"

namespace dov417 {

enum class ValueState {
    neverRead,
    good,
    old,
    beingWritten,
    failed // the last write to it; what is shown is good or old all the same, see isOld
};

struct ValueStanding {
    ValueState state = ValueState::neverRead;
    bool isOld = false;
    std::string reason; // why the write failed
};

class ValueBook {
public:
    // From now on these are watched, under this generation. What was known of addresses that stay
    // is kept.
    void watch(int generation, const std::vector<Address>& addresses);
    // Another line, maybe another controller: nothing is known any more, and what becomes of writes
    // to the one before says nothing of it.
    void forget();
    // The line's thread says nothing: nothing is known to be good.
    void setSilent(bool isSilent);
    // It speaks again, since then: what was read before is old until it is read once more.
    void heardAgain(Clock::time_point at);
    bool isSilent() const
    {
        return isSilent_;
    }

    // The addresses whose value or quality is another one now. Values of an older generation, and
    // of addresses that are not watched, are dropped. Without an open line none is good.
    std::vector<Address> apply(const LineBatch& batch);

    // A write of these single values was asked for, and what became of it.
    void writeBegan(long long number, const std::vector<Address>& values);
    // The addresses of the write, if they are watched.
    std::vector<Address> writeEnded(const WriteOutcome& outcome);

    // Null where no value ever came, or where it is not watched.
    const View* find(const Address& address) const;
    ValueStanding standing(const Address& address) const;
    bool isOld(const Address& address) const; // as its standing has it
    bool isWatched(const Address& address) const;
    std::vector<Address> addresses() const; // in no order

private:
    struct Entry {
        View view;
        int writes = 0; // asked for here, without an outcome
        std::string failure;
    };

    bool isOld(const View& view) const;

    int generation_ = 0;
    bool isSilent_ = false;
    Clock::time_point notBefore_{}; // what was read before that is old
    bool isOpen_ = true;            // the line, as last told
    std::unordered_map<Address, Entry, AddressHash> entries_;
    std::map<long long, std::vector<Address>> writes_;
};

} // namespace dov417

#endif
