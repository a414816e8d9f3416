#include "link/station_probes.h"

#include <algorithm>
#include <utility>

#include "line/frame_bytes.h"

namespace dov417 {

namespace {

constexpr Clock::time_point never{};

} // namespace

StationProbes::StationProbes(const ProbeSettings& settings) : settings_(settings)
{
    settings_.firstPause = std::min(settings.firstPause, settings.maxPause);
}

StationProbes::Answer StationProbes::mayGoOut(const QByteArray& request, Clock::time_point now)
{
    const auto asked = stations_.find(stationOf(request));
    const bool isDead = asked != stations_.end() && asked->second.isDead;
    const auto alone = requests_.find(request);
    if (!isDead && (alone == requests_.end() || !alone->second.isAlone))
        return Answer();
    const Silence& silence = isDead ? asked->second.silence : alone->second.silence;
    if (now < silence.notBefore)
        return {Turn::notNow, silence.since, silence.notBefore};
    if (isDead && asked->second.last == request && !asked->second.lastStoodBack) {
        asked->second.lastStoodBack = true;
        return {Turn::notNow, silence.since, now};
    }
    return {Turn::probe, silence.since, now};
}

StationProbes::News StationProbes::ended(const Transmission& transmission, Clock::time_point now)
{
    if (transmission.replyLength == 0)
        return News::none; // nobody answers a broadcast
    if (!isOfStation(transmission.reception))
        return transmission.isMarker ? News::none : silent(transmission, now);
    const auto found = requests_.find(transmission.sent);
    const bool wasAlone = found != requests_.end() && found->second.isAlone;
    if (found != requests_.end())
        requests_.erase(found);
    const News news = heard(stationOf(transmission.sent), now);
    return news == News::none && wasAlone ? News::requestBack : news;
}

StationProbes::News StationProbes::silent(const Transmission& transmission, Clock::time_point now)
{
    Station& station = stations_[stationOf(transmission.sent)];
    if (station.silence.since == never) // what was held back was not sent
        station.silence.since = transmission.number == 0 ? now : transmission.sendBegin;
    if (!station.isDead)
        return givenUp(station, transmission, now);
    if (!transmission.isProbe())
        return News::none;
    station.last = transmission.sent;
    station.lastStoodBack = false;
    putOff(station.silence, now);
    const bool isNews = !station.isTold;
    station.isTold = true;
    return isNews ? News::stationSilent : News::none;
}

StationProbes::News StationProbes::givenUp(Station& station, const Transmission& transmission,
                                           Clock::time_point now)
{
    const auto known = requests_.find(transmission.sent);
    if (known != requests_.end() && known->second.isAlone) {
        if (transmission.isProbe())
            putOff(known->second.silence, now);
        return News::none;
    }
    if (!transmission.isAbandoned())
        return News::none;
    if (known != requests_.end()) {
        known->second.isAlone = true;
        putOff(known->second.silence, now);
        return News::requestSilent;
    }
    station.isDead = true;
    station.isTold = false;
    station.last = transmission.sent;
    station.lastStoodBack = false;
    station.silence.pause = Micros(0);
    putOff(station.silence, now);
    if (transmission.isCyclic) // what somebody waits for is never put off
        requests_[transmission.sent].silence.since = station.silence.since;
    return News::none;
}

StationProbes::News StationProbes::heard(int station, Clock::time_point now)
{
    const Station before = std::exchange(stations_[station], Station());
    if (before.isDead)
        for (auto& [request, given] : requests_)
            if (stationOf(request) == station)
                given.silence.notBefore = now;
    return before.isTold ? News::stationBack : News::none;
}

void StationProbes::portIsBack(Clock::time_point now)
{
    for (auto& [number, station] : stations_) {
        station.silence.notBefore = now;
        station.silence.pause = Micros(0);
    }
    for (auto& [request, given] : requests_) {
        given.silence.notBefore = now;
        given.silence.pause = Micros(0);
    }
}

bool StationProbes::isDead(int station) const
{
    const auto found = stations_.find(station);
    return found != stations_.end() && found->second.isDead;
}

Clock::time_point StationProbes::silentSince(int station) const
{
    const auto found = stations_.find(station);
    return found != stations_.end() ? found->second.silence.since : never;
}

Clock::time_point StationProbes::silentSince(const QByteArray& request) const
{
    const auto found = requests_.find(request);
    return found != requests_.end() ? found->second.silence.since : never;
}

void StationProbes::putOff(Silence& silence, Clock::time_point now) const
{
    silence.pause = silence.pause == Micros(0) ? settings_.firstPause
                                               : std::min(2 * silence.pause, settings_.maxPause);
    silence.notBefore = now + silence.pause;
}

} // namespace dov417
