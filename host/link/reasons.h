// Why a request has no good reply: the one vocabulary of messages, the log, the counters and of
// programs that read them.
#ifndef DOV417_LINK_REASONS_H
#define DOV417_LINK_REASONS_H

#include "link/reply_collector.h"

namespace dov417 {

enum class Reason {
    none,          // a good reply, or none was due
    silence,       // no byte came
    noFrame,       // bytes came, and no sound frame
    otherStation,  // another station answered
    otherFunction, // the station answered another function
    otherRequest,  // the station answered something else
    late,          // what came belongs to an earlier request
    heldBack,      // not sent: a reply that is still out could be taken for its own
    badCrc,
    cutShort,
    exception,
    broadcast // nobody answers it
};
constexpr int reasonCount = 12;

// For people, as in "2 x bad CRC"; each message about the reason contains it.
const char* nameOf(Reason reason);
// For programs, as in {"badCrc": 2}.
const char* keyOf(Reason reason);

// Why these bytes are not the reply; none for the echo of an adapter.
Reason reasonOf(StrayKind kind);
// "another station"; "echo of the request".
const char* nameOf(StrayKind kind);
const char* keyOf(StrayKind kind);

// What came while a reply was awaited, and was none.
struct Astray {
    int noise = 0;               // bytes that were no sound frame
    Reason frame = Reason::none; // of the last sound frame
    int from = 0;                // its station, or its function; its length, where it is cut short
    int due = 0;                 // the length that it was to have
    bool lineWasSound = false;   // a sound frame has come since the line was opened

    // Another request is sent.
    void begin();
    void add(const Stray& stray);
    // The reply to what was sent first, to tell late replies.
    void addGarbled(const QByteArray& reply, int expectedLength);
    // Does it tell less than the other? Bytes tell more than silence, a frame more than bytes.
    bool saysLessThan(const Astray& other) const;
};

} // namespace dov417

#endif
