// What a master has been heard to ask for: a row for each station, function and range of addresses,
// with how often, how regularly, and what became of it.
#ifndef DOV417_LINK_HEARD_TABLE_H
#define DOV417_LINK_HEARD_TABLE_H

#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "line/areas.h"
#include "link/link_statistics.h"
#include "link/listener.h"
#include "link/station_names.h"

namespace dov417 {

struct HeardRow {
    int station = 0;
    int function = 0;
    int first = -1; // coil, input or register; -1: the function has no address that we know
    int count = 0;
    long long asked = 0;
    long long answered = 0;
    long long refused = 0; // of these: exceptions
    long long silent = 0;  // the next request came without an answer
    long long alike = 0;   // frames that repeat it, or answer it
    Durations cycle;       // from one to the next, repetitions left out
    Durations answer;      // from its end to the first byte of the reply
    Clock::time_point last{};
};

class HeardTable {
public:
    void add(const Heard& heard);

    // By station, function and address.
    std::vector<HeardRow> rows() const;
    long long noise() const;   // bytes
    long long unclear() const; // replies that belong to one of several requests, or to none
    long long frames() const;
    // Requests beyond the rows that are kept.
    long long others() const;

private:
    using Key = std::tuple<int, int, int, int>;

    HeardRow* rowOf(const QByteArray& request);

    std::map<Key, HeardRow> rows_;
    std::optional<Key> last_; // request
    long long noise_ = 0;
    long long unclear_ = 0;
    long long frames_ = 0;
    long long others_ = 0;
};

// "R_W:0..9", "registers 0..9", "-".
std::string heardAddresses(const HeardRow& row, const std::vector<Area>& areas);

// A heading, a line for each row, and what else was heard.
std::vector<std::string> heardLines(const HeardTable& table, const std::vector<Area>& areas,
                                    const StationNames& names);

} // namespace dov417

#endif
