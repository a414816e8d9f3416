// What goes wrong is said once: what repeats is counted, and what many have in common is one line.
#ifndef DOV417_TOOL_TROUBLES_H
#define DOV417_TOOL_TROUBLES_H

#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "line/clock.h"
#include "link/reasons.h"

namespace dov417 {

struct Trouble {
    std::string what; // "1#R_W100(8)"
    Reason why = Reason::none;
    std::string reason;
    long long times = 0;
};

// Requests that were given up, by request and kind of reason.
class Troubles {
public:
    // So many are said at most within a minute.
    explicit Troubles(std::size_t maxNews) : maxNews_(maxNews) {}

    // True if it is to be said: the first time, and where it comes back after a minute without.
    bool isNews(const std::string& what, Reason why, const std::string& reason,
                Clock::time_point now);

    long long times(const std::string& what, Reason why) const;
    // The last of the news for now: the rest is only counted.
    bool isFull() const;

    // What was not said each time, in the order of the first time, with the latest reason.
    std::vector<Trouble> unsaid() const;

private:
    struct Entry {
        Trouble trouble;
        Clock::time_point last{};
        long long said = 0;
    };
    std::size_t maxNews_;
    std::deque<Clock::time_point> news_; // of the last minute
    std::map<std::pair<std::string, Reason>, std::size_t> places_;
    std::vector<Entry> entries_;
};

// "a, b, c, d and 7 more"
std::string listed(const std::vector<std::string>& names);

// Things and what is wrong with each: a line for each wrong, "a, b and c: no value came", in the
// order of the first.
std::vector<std::string>
grouped(const std::vector<std::pair<std::string, std::string>>& thingsAndWrongs);

} // namespace dov417

#endif
