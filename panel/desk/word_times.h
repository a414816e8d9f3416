// When words were read first, since a moment. Pure.
#ifndef DOV417_PANEL_WORD_TIMES_H
#define DOV417_PANEL_WORD_TIMES_H

#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "link/transmission.h"
#include "text/addresses.h"

namespace dov417 {

class WordTimes {
public:
    void clear();
    // A read has been answered; asOf: when the controller held that at the earliest.
    void add(const Request& read, Clock::time_point asOf);
    // What is known of the address is no older; nothing where not all of it was read.
    std::optional<Clock::time_point> of(const Address& address) const;

private:
    std::map<std::tuple<int, std::string, int>, Clock::time_point> times_; // station, area, word
};

} // namespace dov417

#endif
