// Which stations are silent, and when each is asked again.
//
// A station is dead when a request of it was given up and no sound frame of it has come since. Each
// request to it costs a time-out that all others wait for, so its cyclic reads go out as probes
// only: one transmission, then a pause, each twice as long as the one before. The first sound frame
// of the station ends that. A request that is given up once more although others of its station
// were answered in between stays silent by itself, and is put off alone.
#ifndef DOV417_LINK_STATION_PROBES_H
#define DOV417_LINK_STATION_PROBES_H

#include <QByteArray>
#include <map>

#include "line/clock.h"
#include "link/transmission.h"

namespace dov417 {

struct ProbeSettings {
    Micros firstPause{1000000};
    Micros maxPause{30000000};
};

class StationProbes {
public:
    explicit StationProbes(const ProbeSettings& settings = ProbeSettings());

    enum class Turn {
        asEver,
        probe, // once
        notNow
    };
    struct Answer {
        Turn turn = Turn::asEver;
        Clock::time_point silentSince{}; // when it was first asked in vain
        Clock::time_point notBefore{};   // of notNow: when to ask anew
    };
    // May this cyclic read go out now? A dead station is probed with a different request each time,
    // if it has several: one request may be silent although the station is not.
    Answer mayGoOut(const QByteArray& request, Clock::time_point now);

    // What a person should hear of.
    enum class News {
        none,
        stationSilent, // it did not answer the first probe either
        stationBack,   // after that had been said
        requestSilent, // it alone
        requestBack
    };
    // One has ended; as a marker, too, if it was answered.
    News ended(const Transmission& transmission, Clock::time_point now);
    // A sound frame of the station came, whatever it answers.
    News heard(int station, Clock::time_point now);
    // The port was away: the next cyclic read of each station is its probe.
    void portIsBack(Clock::time_point now);

    bool isDead(int station) const;
    Clock::time_point silentSince(int station) const;
    Clock::time_point silentSince(const QByteArray& request) const;

private:
    struct Silence {
        Clock::time_point since{};
        Clock::time_point notBefore{};
        Micros pause{0};
    };
    struct Station {
        bool isDead = false;
        bool isTold = false;
        Silence silence; // since is 0 while it answers
        QByteArray last; // what it was silent to last
        bool lastStoodBack = false;
    };
    struct Request {
        bool isAlone = false; // given up again although its station had answered others
        Silence silence;
    };

    void putOff(Silence& silence, Clock::time_point now) const;
    News silent(const Transmission& transmission, Clock::time_point now);
    News givenUp(Station& station, const Transmission& transmission, Clock::time_point now);

    ProbeSettings settings_;
    std::map<int, Station> stations_;
    std::map<QByteArray, Request> requests_; // that were given up, until they are answered
};

} // namespace dov417

#endif
