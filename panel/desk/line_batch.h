// What the line's thread tells the window: copies, so that neither has to wait for the other.
#ifndef DOV417_PANEL_LINE_BATCH_H
#define DOV417_PANEL_LINE_BATCH_H

#include <QMetaType>
#include <QString>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "line/clock.h"
#include "line/failure.h"
#include "link/link_statistics.h"
#include "link/transmission.h"
#include "live/controller_orders.h"
#include "session/views.h"

namespace dov417 {

// Something that passed on the line, in the order in which it did.
struct Passed {
    enum class What {
        began, // the transmission, as far as it is known then
        ended, // with all that is known of it
        stray,
        note
    };
    What what = What::note;
    Clock::time_point at{};
    Transmission transmission;
    Stray stray;
    std::string text;    // of the note
    long long cycle = 0; // that was under way: so many had ended
};

enum class LinePhase {
    closed,
    opening, // a connection is being made
    open,
    away,   // the port has gone; it is opened again as soon as it is back
    refused // it could not be had; the state's reason says why
};

// Why nothing is written then.
QString portIsAway();

struct LineState {
    LinePhase phase = LinePhase::closed;
    bool isSimulated = false;
    bool isUnlocked = false; // writing
    bool isGood = true;      // until a request is given up, and again with the next good reply
    std::string port;
    std::string wire; // "38400,8,EVEN,1"; empty over a network
    std::string reason;
    long long cycles = 0;
    Micros cycle{0}; // the last one
    std::size_t writesUnderWay = 0;
    int doubts = 0; // how often all that was read so far turned out to be another request's, maybe
};

// What became of a write that the window has asked for.
struct WriteOutcome {
    long long number = 0;
    Result result;
};

struct LineBatch {
    int line = 0;       // counts the lines that the window has asked for
    int generation = 0; // counts what it has asked to watch; the values are of that
    Clock::time_point made{};
    // In their order. While the window keeps up, each change; else the latest of each value.
    std::vector<View> values;
    std::vector<Passed> passed;
    long long notTold = 0; // what passed before these and was dropped: the window was too slow
    std::vector<WriteOutcome> outcomes;
    LineState state;
    std::shared_ptr<const LinkStatistics> statistics; // about once a second, else null
    // Of the own controller: about once a second and after each order, else null.
    std::shared_ptr<const ControllerReport> controller;
};

// How a value is found again, whatever else is watched.
struct AddressHash {
    std::size_t operator()(const Address& address) const
    {
        constexpr std::size_t factor = 1000003;
        std::size_t hash = std::hash<std::string>()(address.regName);
        for (const int number :
             {address.station, address.first, address.length, static_cast<int>(address.width)})
            hash = hash * factor + static_cast<std::size_t>(number);
        return hash;
    }
};

} // namespace dov417

Q_DECLARE_METATYPE(dov417::LineBatch)

#endif
