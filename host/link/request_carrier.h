// The driver's request, carried in parts where it is longer than the station takes.
//
// The driver merges reads up to 128 words. The Modbus protocol ends at 125, and many small
// controllers far below. Such a request goes out in as many frames as are needed, each a
// transmission of its own, and the driver gets one reply, or what became of the first part that
// failed.
//
// How much a station takes is either told, or learned: when it refuses a request, the parts are
// tried at once, and if all of them are answered, it is asked no other way from then on.
#ifndef DOV417_LINK_REQUEST_CARRIER_H
#define DOV417_LINK_REQUEST_CARRIER_H

#include <QByteArray>
#include <array>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "link/exchange.h"
#include "link/request_parts.h"
#include "link/station_names.h"
#include "link/transmission.h"

namespace dov417 {

// The line as the carrier sees it, and whom it asks.
struct CarrierLine {
    std::function<void(const Transmission&, Exchange::Done)> transact;
    std::function<void(const Transmission&)> partEnded;
    std::function<void(const std::string&)> notice;
    std::function<bool(const Request&, int word)> mayCut; // before this word, by its address
    std::function<bool()> isWanted;                       // by the driver, still
    StationNames stationNames = {};                       // for what is said of them
};

class RequestCarrier {
public:
    // maxRegisters: words in one request to any station, or as request_parts.h has it. Never more
    // than the line has room for. ofStations: what stations take that have their own.
    RequestCarrier(const CarrierLine& line, int maxRegisters, int roomOfLine = noMaximum,
                   const std::map<int, int>& ofStations = {});

    // One at a time; calls done once, with the driver's request.
    void carry(const Transmission& request, Exchange::Done done);
    // What was taken for a reply so far may have been another's: parts that were answered are asked
    // for again.
    void doubt();
    // Of the request that is being carried or was the last, if it is of this kind: the words that
    // the station has taken, in words; empty: it has not said so of any.
    std::string takenText(int kind) const;

private:
    struct Station {
        int told = learnedMaximum;      // it is not learned if it is told
        int maximum = noMaximum;        // as learned
        std::array<int, 17> answered{}; // the longest good ones in words, by function
    };

    Station& station();
    int& longestAnswered();
    std::vector<int> lengthsFor(int maximum) const;
    int wordsSent() const;
    void begin(int maximum);
    void sendNext();
    bool isTaken(const Transmission& frame) const;
    void ended(const Transmission& frame);
    void answered(const Transmission& frame);
    QByteArray head() const;
    int nextMaximum(const Transmission& refused);
    void learn();
    void finish(const Transmission& record);
    Transmission joined() const;
    Transmission failed(const Transmission& part) const;
    std::string partText(const Transmission& part) const;
    std::string takenText() const;

    CarrierLine line_;
    std::array<Station, 256> stations_{};
    struct Hopeless {
        Clock::time_point until{};
        std::string where; // what became of the parts
    };
    std::map<QByteArray, Hopeless> hopeless_; // the heads of requests refused in any length

    Transmission request_;
    Exchange::Done done_; // null: nothing is under way
    int words_ = 0;       // of the request; 0: it is not to be cut
    int maximum_ = 0;     // words in a part
    bool isTrial_ = false;
    bool isInDoubt_ = false;             // parts were answered that have to be asked for again
    std::vector<int> lengths_;           // of the parts; empty: it goes out whole
    std::vector<Transmission> answered_; // of these parts
    int frames_ = 0;
    int wordsTaken_ = 0; // of a write, from its first one on, by this attempt or one before
};

} // namespace dov417

#endif
