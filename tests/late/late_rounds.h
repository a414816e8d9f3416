// Requests at random to stations of all kinds, each value that would be shown compared with what
// the station can have held.
#ifndef DOV417_TESTS_LATE_ROUNDS_H
#define DOV417_TESTS_LATE_ROUNDS_H

#include <string>

#include "late_world.h"

namespace dov417 {

struct Tally {
    long long values = 0;
    long long wrong = 0;          // another register's, or nobody's
    long long old = 0;            // older than one that was shown before, or than a write since
    long long writes = 0;         // confirmed
    long long wronglyWritten = 0; // confirmed, and not done
    long long givenUp = 0;        // requests
    long long markers = 0;
    long long silent = 0;      // times that a station answered so often and nothing of it was shown
    long long doubts = 0;      // times that a surplus was met
    long long beforeDoubt = 0; // of the lies: shown while no surplus had been met for long
    long long copies = 0;
    long long chanceFits = 0;
    long long seconds = 0; // that all this took, in handed-in time

    long long lies() const
    {
        return wrong + old + wronglyWritten;
    }
    void add(const Tally& other);
};

std::string textOf(const Tally& tally);

// A mixture of stations for each seed.
void populate(LateWorld& world);

// Asks as the driver does: the same request again until it is answered or given up.
Tally askAtRandom(LateWorld& world, int requests);

// The same with coils, writes of several words, and bits of words that are read before.
Tally askOfAllKinds(LateWorld& world, int requests);

// Both, from a start on a line where another program may just have asked.
Tally playRound(unsigned seed, int requests);

// The same of all kinds, and behind a radio modem.
Tally playMixedRound(unsigned seed, int requests);
Tally playMixedModemRound(unsigned seed, int requests);

// The same where another program has just written.
Tally playOthersRound(unsigned seed, int requests);

// As the driver polls, with stations that are switched off and on again.
Tally playProbeRound(unsigned seed, int requests);

// The same over a network that hands on at intervals of up to 600 ms what has come by then.
Tally playNetworkRound(unsigned seed, int requests);

// The same with an adapter that hears what it sends.
Tally playEchoRound(unsigned seed, int requests);

// The same, half of them with such an adapter, where the port is away now and then.
Tally playAwayRound(unsigned seed, int requests);

// The same where the line is closed and opened again, by this program or the next.
Tally playReopenedRound(unsigned seed, int requests);

// With an adapter that hears what it sends, and some of that wrong; or hears it over a network.
Tally playGarbledEchoRound(unsigned seed, int requests);
Tally playEchoNetworkRound(unsigned seed, int requests);

// The same behind a radio modem that sends some replies twice.
Tally playModemRound(unsigned seed, int requests);

// The same with an adapter that hands on in one piece what came within some time.
Tally playLumpRound(unsigned seed, int requests);

} // namespace dov417

#endif
