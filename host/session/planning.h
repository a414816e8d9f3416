// What the driver will put on the line for a set of addresses, and how long that takes there.
#ifndef DOV417_SESSION_PLANNING_H
#define DOV417_SESSION_PLANNING_H

#include <QByteArray>
#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "driver/library.h"
#include "line/serial_format.h"
#include "link/request_parts.h"
#include "session/whole_values.h"
#include "text/addresses.h"

namespace dov417 {

// What the Modbus application protocol lets a strict controller answer.
const int maxCoils = maxWordsOfARead * 16;

// A frame and its reply.
struct PlannedPart {
    int address; // words
    int length;
    QByteArray bytes;
    int replyLength;
    std::chrono::microseconds time; // on the wire, inter-frame delays and response time included
};

struct PlannedRequest {
    int station;
    std::string regName; // a word type
    int address;         // words
    int length;
    QByteArray bytes;
    int replyLength;
    std::chrono::microseconds time;
    std::vector<PlannedPart> parts; // that it goes out in; empty: as it is

    int maxWords() const; // words in one frame
    int coils() const;    // in one frame; 0 for registers
    bool isAboveLimit() const;
};

struct Plan {
    std::vector<PlannedRequest> requests;
    std::chrono::microseconds cycle{0};
};

// The same plan comes out for every gap from first to last.
struct GapOutcome {
    int firstGap;
    int lastGap; // -1: and all above
    int requests;
    int aboveLimit;
    int uncoveredWords;
    std::chrono::microseconds cycle;
};

// A stretch of words of an address.
struct Stretch {
    int station;
    std::string regName; // as the address was named
    int first;           // words
    int count;
};

class Planner {
public:
    // maximum: registers in one request, or 16 coils for each; ofStations: of those that have their
    // own.
    Planner(const Library& library, const std::vector<Address>& addresses, const SerialFormat& wire,
            std::chrono::microseconds responseTime, int maximum = noMaximum,
            std::map<int, int> ofStations = {});

    // Configures the driver anew, plans, and walks the plan once with made-up replies. Throws a
    // std::logic_error while a session has the driver: beside one, a child process plans, see
    // live/plan_process.h.
    Plan plan(int gap) const;

    // Every gap there is, in order.
    std::vector<GapOutcome> outcomes() const;

    // Words that no request reads: merging can pull the start of a run back when a shorter run lies
    // inside a longer one that was cut, and the end of the longer one is then read by nobody.
    std::vector<Stretch> uncovered(const Plan& plan) const;

    // Values of several words that come with different requests.
    std::vector<Stretch> divided(const Plan& plan) const;

private:
    int maximumOf(int station) const;
    void cut(PlannedRequest& request) const;

    const Library& library_;
    std::vector<Address> addresses_;
    SerialFormat wire_;
    std::chrono::microseconds responseTime_;
    int maximum_;
    std::map<int, int> ofStations_;
    WholeValues wholeValues_;
};

// The best outcome: nothing left out if that can be had, then the shortest cycle, then the smallest
// gap. -1 for none.
int bestOutcome(const std::vector<GapOutcome>& outcomes);

} // namespace dov417

#endif
