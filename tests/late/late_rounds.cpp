#include "late_rounds.h"

#include <algorithm>
#include <cstdio>

#include "line/crc16.h"
#include "link/station_probes.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;

constexpr int attempts = 3;
constexpr int maxUnseenAnswers = 100;
constexpr int othersValue = 0xF00D;
constexpr int firstOfBits = 16; // behind what is written as a whole

// What was shown of one station.
struct Shown {
    int counter = 0;
    std::map<int, std::size_t> place; // in what a register has held: shown or confirmed
    int answersSeen = 0;              // when something was shown last
};

class Rounds {
public:
    explicit Rounds(LateWorld& world) : world_(world), bus_(world.bus)
    {
        world.doubted = [this]() { doubt(); };
        began_ = world.now;
    }

    Tally play(int requests, bool isMixed)
    {
        for (int i = 0; i < requests; ++i) {
            if ((isPortLost || isReopened) && bus_.share() < 0.04)
                losePort();
            const int station = bus_.between(1, static_cast<int>(bus_.stations.size()));
            const double what = bus_.share();
            if (isMixed && what >= 0.4)
                askMore(station, what);
            else if (what < 0.2)
                write(station);
            else if (what < 0.22)
                world_.write(0, written(), ++lastValue_ & 0xFFFF);
            else
                read(station, what < 0.25);
            if (bus_.share() < 0.05)
                world_.pass(milliseconds(bus_.between(0, 3000)));
            countSilence();
        }
        world_.doubted = nullptr;
        tally_.markers = world_.markers;
        tally_.copies = bus_.copies;
        tally_.chanceFits = bus_.chanceFits;
        tally_.seconds =
            std::chrono::duration_cast<std::chrono::seconds>(world_.now - began_).count();
        return tally_;
    }

    // As the driver polls, with stations that are switched off and on again.
    Tally playProbes(int requests)
    {
        world_.heard = [this](int station) { probes_.heard(station, world_.now); };
        for (int i = 0; i < requests; ++i) {
            const int station = bus_.between(1, static_cast<int>(bus_.stations.size()));
            switchSome();
            if (bus_.share() < 0.1)
                write(station);
            else
                poll(station);
            world_.pass(milliseconds(bus_.between(0, 100)));
            countSilence();
        }
        return play(0, false);
    }

    bool isPortLost = false; // now and then
    bool isReopened = false; // by this program, or by another, which knows nothing of this one

private:
    // Do all stations say as much to an echo?
    bool saysToEchoes(int least) const
    {
        return world_.settings.mayMark &&
               std::all_of(bus_.stations.begin(), bus_.stations.end(),
                           [least](const auto& each) { return each.second.diagnostics >= least; });
    }

    // What comes meanwhile is heard by nobody, and another program may ask. Where it asks for more
    // than one length, a station that is slow to answer an echo may be shown wrong.
    void losePort()
    {
        world_.exchange->stop();
        const int length = bus_.between(1, 3);
        for (int i = saysToEchoes(0) ? bus_.between(0, 2) : 0; i > 0; --i) {
            world_.pass(milliseconds(bus_.between(20, 1000)));
            const int station = bus_.between(1, static_cast<int>(bus_.stations.size()));
            const int count = isReopened ? length : bus_.between(1, 3);
            bus_.send(withCrc(readRequestOf(station, bus_.between(0, 9), count)), world_.now);
        }
        world_.pass(milliseconds(bus_.between(20, 1500)));
        if (isReopened)
            world_.reopen(saysToEchoes(1) && isOneLengthOut(5 + 2 * length) && bus_.share() < 0.7);
        world_.start();
        world_.pass(milliseconds(bus_.between(0, 1) * bus_.between(0, 3000)));
    }

    // Of what this program has asked.
    bool isOneLengthOut(int replyLength) const
    {
        const auto& open = world_.exchange->books().open();
        return std::all_of(open.begin(), open.end(), [replyLength](const OpenTransmission& each) {
            return each.replyLength == replyLength;
        });
    }

    void switchSome()
    {
        for (auto& [number, station] : bus_.stations) {
            Switched& switched = switched_[number];
            if (world_.now < switched.until)
                continue;
            std::swap(switched.loses, station.loses);
            switched.until = world_.now + milliseconds(bus_.between(1000, 60000));
        }
    }

    void poll(int station)
    {
        const int first = bus_.share() < 0.3 ? written() : bus_.between(0, 9);
        const int count = bus_.between(1, 2);
        Transmission request;
        request.sent = withCrc(readRequestOf(station, first, count));
        request.replyLength = 5 + 2 * count;
        request.request.station = station;
        request.request.length = count;
        request.isCyclic = true;
        for (int attempt = 1; attempt <= attempts; ++attempt) {
            const StationProbes::Turn turn = probes_.mayGoOut(request.sent, world_.now).turn;
            if (turn == StationProbes::Turn::notNow)
                return;
            request.isToSilent = turn == StationProbes::Turn::probe;
            Transmission ended = world_.run(request);
            ended.verdict = isGood(ended)         ? replyAccepted
                            : attempt == attempts ? replyAbandoned
                                                  : replyBad;
            probes_.ended(ended, world_.now);
            for (int n = 0; isGood(ended) && n < count; ++n)
                show(station, first + n, wordOf(ended, n));
            if (isGood(ended))
                return;
        }
        ++tally_.givenUp;
    }

    int written()
    {
        return LateBus::firstWritten + bus_.between(0, 3);
    }

    template <typename Ask>
    Transmission repeat(Ask ask)
    {
        Transmission ended;
        for (int attempt = 0; attempt < attempts && !isGood(ended); ++attempt)
            ended = ask();
        tally_.givenUp += isGood(ended) ? 0 : 1;
        return ended;
    }

    void write(int station)
    {
        const int address = written();
        const int value = ++lastValue_ & 0xFFFF;
        const Transmission ended = repeat([&]() { return world_.write(station, address, value); });
        if (!isGood(ended))
            return;
        ++tally_.writes;
        const long long before = tally_.lies();
        // Nobody else writes any more, and what is answered is what was written.
        const LateStation& asked = bus_.stations.at(station);
        const bool isDone = LateBus::heldBy(asked, address) == value;
        tally_.wronglyWritten += isDone && answeredOtherwise(ended).empty() ? 0 : 1;
        shown_[station].place[address] = lastPlace(asked, address, value);
        countEarly(before);
    }

    void askMore(int station, double what)
    {
        if (what < 0.5)
            writeWords(station, written());
        else if (what < 0.6)
            writeWords(station, LateBus::firstWrittenCoils + bus_.between(0, 3));
        else if (what < 0.75)
            writeBit(station);
        else if (what < 0.85)
            readCoils(station, LateBus::firstWrittenCoils + bus_.between(0, 3));
        else
            readCoils(station, LateBus::firstCoils + bus_.between(0, 9));
    }

    void writeWords(int station, int first)
    {
        std::vector<int> values(static_cast<std::size_t>(bus_.between(1, 3)));
        for (int& value : values)
            value = ++lastValue_ & 0xFFFF;
        const Transmission ended =
            repeat([&]() { return world_.writeWords(station, first, values); });
        if (!isGood(ended))
            return;
        ++tally_.writes;
        const long long before = tally_.lies();
        const LateStation& asked = bus_.stations.at(station);
        for (std::size_t i = 0; i < values.size(); ++i) {
            const int address = first + static_cast<int>(i);
            tally_.wronglyWritten += LateBus::heldBy(asked, address) == values[i] ? 0 : 1;
            shown_[station].place[address] = lastPlace(asked, address, values[i]);
        }
        shown_[station].answersSeen = asked.answers;
        countEarly(before);
    }

    // As the driver does it: the word is read, one of its bits is changed, and it is written.
    void writeBit(int station)
    {
        const int address = LateBus::firstWritten + firstOfBits + bus_.between(0, 1);
        const LateStation& asked = bus_.stations.at(station);
        const long long doubts = tally_.doubts;
        const Transmission ended = repeat([&]() { return world_.read(station, address, 1); });
        if (!isGood(ended) || tally_.doubts != doubts)
            return;
        const int held = LateBus::heldBy(asked, address); // nobody else writes
        const int patched = wordOf(ended, 0) ^ 1 << bus_.between(0, 15);
        bool isDone = false;
        for (int attempt = 0; attempt < attempts && !isDone && tally_.doubts == doubts; ++attempt)
            isDone = isGood(world_.write(station, address, patched));
        tally_.givenUp += isDone ? 0 : 1;
        if (!isDone)
            return;
        ++tally_.writes;
        const long long before = tally_.lies();
        shown_[station].answersSeen = asked.answers;
        const bool areOthersKept = wordOf(ended, 0) == held;
        tally_.wronglyWritten +=
            areOthersKept && LateBus::heldBy(asked, address) == patched ? 0 : 1;
        countEarly(before);
    }

    void readCoils(int station, int first)
    {
        const int count = bus_.between(1, 3);
        const Transmission ended =
            repeat([&]() { return world_.readWords(station, first, count); });
        for (int n = 0; isGood(ended) && n < count; ++n)
            show(station, first + n, coilsOf(ended, n));
    }

    void read(int station, bool refused)
    {
        const int first = refused              ? LateBus::firstRefused
                          : bus_.share() < 0.3 ? written()
                                               : bus_.between(0, 9);
        const int count = bus_.between(1, 3);
        const Transmission ended = repeat([&]() { return world_.read(station, first, count); });
        for (int n = 0; isGood(ended) && n < count; ++n)
            show(station, first + n, wordOf(ended, n));
    }

    void show(int station, int address, int value)
    {
        const LateStation& asked = bus_.stations.at(station);
        Shown& shown = shown_[station];
        ++tally_.values;
        const long long before = tally_.lies();
        shown.answersSeen = asked.answers;
        const bool areCoils = address >= LateBus::firstCoils;
        if (address >= LateBus::firstRefused && !areCoils) {
            ++tally_.wrong;
        } else if (address >= (areCoils ? LateBus::firstWrittenCoils : LateBus::firstWritten)) {
            const std::size_t place = lastPlace(asked, address, value);
            std::size_t& last = shown.place[address];
            if (place == 0 && value != 0)
                ++tally_.wrong;
            else if (place < last)
                ++tally_.old;
            last = std::max(last, place);
        } else if ((address & 1) != 0) {
            if (value == 0 || value > asked.counter)
                ++tally_.wrong;
            else if (value < shown.counter)
                ++tally_.old;
            else
                shown.counter = value;
        } else if (value != LateBus::ownValue(station, address)) {
            ++tally_.wrong;
        }
        countEarly(before);
    }

    void countEarly(long long before)
    {
        tally_.beforeDoubt += world_.exchange->isWary(world_.now) ? 0 : tally_.lies() - before;
    }

    // Nothing is shown any more, and what is from here on is compared with what is from here on.
    void doubt()
    {
        ++tally_.doubts;
        for (auto& [station, shown] : shown_) {
            shown.counter = 0;
            shown.place.clear();
        }
    }

    // 1 for the first value that it has held, and so on; 0: none, or not written yet.
    static std::size_t lastPlace(const LateStation& station, int address, int value)
    {
        const auto found = station.written.find(address);
        if (found == station.written.end())
            return 0;
        const auto& held = found->second;
        const auto last = std::find(held.rbegin(), held.rend(), value);
        return static_cast<std::size_t>(std::distance(last, held.rend()));
    }

    void countSilence()
    {
        for (const auto& [number, station] : bus_.stations) {
            int& seen = shown_[number].answersSeen;
            if (station.answers < seen + maxUnseenAnswers)
                continue;
            seen = station.answers;
            // A time-out that is fixed below what a station takes may keep all values away.
            tally_.silent += world_.settings.timeout.isFixed ? 0 : 1;
        }
    }

    // What a station loses when it is switched the next time.
    struct Switched {
        double loses = 1;
        Clock::time_point until{};
    };

    LateWorld& world_;
    LateBus& bus_;
    StationProbes probes_;
    std::map<int, Switched> switched_; // by station
    std::map<int, Shown> shown_;       // by station
    int lastValue_ = 0;
    Clock::time_point began_{};
    Tally tally_;
};

std::function<Micros()> delayOf(LateWorld& world, int kind)
{
    LateBus& bus = world.bus;
    const int typical = bus.between(1, kind == 0 ? 50 : 10000); // 20 times the initial time-out
    return [&world, &bus, kind, typical]() -> Micros {
        switch (kind) {
        case 0:
        case 1:
            return milliseconds(typical);
        case 2:
            return milliseconds(bus.between(1, 10000));
        case 3: // jumps
            return milliseconds(bus.share() < 0.1 ? bus.between(600, 10000) : 10);
        case 4: { // bursts: it answers all at once, every so often
            const auto period = milliseconds(1000 + typical);
            const auto since = (world.now.time_since_epoch()) % period;
            return std::chrono::duration_cast<Micros>(bus.share() < 0.1 ? period - since
                                                                        : milliseconds(5));
        }
        case 5: // fast for some time, slow for some time
            return milliseconds(world.now.time_since_epoch() % std::chrono::seconds(60) <
                                        std::chrono::seconds(30)
                                    ? 5
                                    : typical);
        default:
            return milliseconds(bus.share() < 0.5 ? 5 : bus.between(400, 700));
        }
    };
}

} // namespace

void Tally::add(const Tally& other)
{
    values += other.values;
    wrong += other.wrong;
    old += other.old;
    writes += other.writes;
    wronglyWritten += other.wronglyWritten;
    givenUp += other.givenUp;
    markers += other.markers;
    silent += other.silent;
    doubts += other.doubts;
    beforeDoubt += other.beforeDoubt;
    copies += other.copies;
    chanceFits += other.chanceFits;
    seconds += other.seconds;
}

std::string textOf(const Tally& tally)
{
    const auto text = [](long long count) { return std::to_string(count); };
    return "values " + text(tally.values) + ", wrong " + text(tally.wrong) + ", old " +
           text(tally.old) + ", writes " + text(tally.writes) + ", confirmed wrongly " +
           text(tally.wronglyWritten) + ", given up " + text(tally.givenUp) + ", markers " +
           text(tally.markers) + ", silent " + text(tally.silent) + ", copies " +
           text(tally.copies) + ", doubts " + text(tally.doubts) + ", lies before " +
           text(tally.beforeDoubt) + ", CRC by chance " + text(tally.chanceFits) + ", in " +
           text(tally.seconds) + " s";
}

void populate(LateWorld& world)
{
    LateBus& bus = world.bus;
    const int stations = bus.between(1, 3);
    for (int number = 1; number <= stations; ++number) {
        LateStation& station = bus.stations[number];
        station.delay = delayOf(world, bus.between(0, 6));
        station.loses = bus.share() < 0.5 ? 0 : 0.1;
        station.garbles = bus.share() < 0.5 ? 0 : 0.1;
        station.cuts = bus.share() < 0.7 ? 0 : 0.1;
        station.pauses = bus.share() < 0.8 ? 0 : 0.1;
        station.byteGap = bus.share() < 0.8 ? Micros(0) : Micros(bus.between(100, 20000));
        station.dropsWhenAskedAgain = bus.share() < 0.3;
        station.diagnostics = bus.between(-1, 1);
    }
    bus.latency = bus.share() < 0.7 ? Micros(0) : Micros(bus.between(1000, 60000));
    world.settings.mayMark = bus.share() < 0.8;
    world.settings.timeout.isFixed = bus.share() < 0.2;
}

Tally askAtRandom(LateWorld& world, int requests)
{
    return Rounds(world).play(requests, false);
}

Tally askOfAllKinds(LateWorld& world, int requests)
{
    return Rounds(world).play(requests, true);
}

namespace {

Tally playOn(LateWorld& world, int requests, bool isMixed = false)
{
    for (auto& [number, station] : world.bus.stations) {
        // Another program's request: what is told of a station that says nothing to an echo is
        // less.
        if (!world.settings.mayMark || station.diagnostics < 0 || world.bus.share() < 0.5)
            continue;
        world.bus.send(withCrc(readRequestOf(number, world.bus.between(0, 9), 1)), world.now);
        world.pass(milliseconds(10));
    }
    world.start();
    return isMixed ? askOfAllKinds(world, requests) : askAtRandom(world, requests);
}

// On a line that echoes or not, and is lost or opened again now and then.
Tally playWithBreaks(unsigned seed, int requests, bool Rounds::*of)
{
    LateWorld world(seed);
    populate(world);
    world.bus.echoes = world.bus.share() < 0.5;
    world.start();
    Rounds rounds(world);
    rounds.*of = true;
    return rounds.play(requests, false);
}

void putBehindNetwork(LateWorld& world)
{
    world.bus.latency = milliseconds(world.bus.between(1, 600));
    world.settings.bytesTakeTime = false;
    world.settings.replyGap = milliseconds(500);
}

void missSomeRequests(LateBus& bus)
{
    for (auto& [number, station] : bus.stations)
        station.misses = bus.share() < 0.5 ? 0 : 0.1;
}

} // namespace

Tally playRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    populate(world);
    return playOn(world, requests);
}

Tally playMixedRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    populate(world);
    missSomeRequests(world.bus);
    return playOn(world, requests, true);
}

// All that can be written, so that whatever is written first here has been written by the other.
Tally playOthersRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    populate(world);
    LateBus& bus = world.bus;
    for (auto& [number, station] : bus.stations) {
        station.misses = 0.3;
        for (int i = 0; i < 12; ++i) {
            const int first =
                (i % 4) + (bus.share() < 0.7 ? LateBus::firstWritten : LateBus::firstWrittenCoils);
            const std::vector<int> values(static_cast<std::size_t>(1 + i / 4), othersValue);
            bus.send(withCrc(i < 10 || first >= LateBus::firstCoils
                                 ? writeWordsRequestOf(number, first, values)
                                 : writeRequestOf(number, first, othersValue)),
                     world.now);
            world.pass(milliseconds(10));
        }
    }
    world.start();
    return askOfAllKinds(world, std::min(requests, 30)); // soon all stations are known
}

Tally playNetworkRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    populate(world);
    putBehindNetwork(world);
    return playOn(world, requests);
}

Tally playEchoRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    populate(world);
    world.bus.echoes = true;
    return playOn(world, requests);
}

Tally playAwayRound(unsigned seed, int requests)
{
    return playWithBreaks(seed, requests, &Rounds::isPortLost);
}

Tally playReopenedRound(unsigned seed, int requests)
{
    return playWithBreaks(seed, requests, &Rounds::isReopened);
}

Tally playGarbledEchoRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    populate(world);
    missSomeRequests(world.bus);
    world.bus.echoes = true;
    world.bus.garblesEchoes = world.bus.share() < 0.5 ? 0.02 : 0.2;
    return playOn(world, requests, world.bus.share() < 0.5);
}

Tally playEchoNetworkRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    populate(world);
    missSomeRequests(world.bus);
    world.bus.echoes = true;
    putBehindNetwork(world);
    return playOn(world, requests, world.bus.share() < 0.5);
}

Tally playProbeRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    populate(world);
    world.start();
    return Rounds(world).playProbes(requests);
}

namespace {

void putBehindModem(LateWorld& world)
{
    LateBus& bus = world.bus;
    const int stations = bus.between(1, 3);
    for (int number = 1; number <= stations; ++number) {
        LateStation& station = bus.stations[number];
        station.delay = delayOf(world, bus.share() < 0.7 ? 0 : bus.between(1, 6));
        station.repeats = bus.share() < 0.5 ? 0.01 : 0.2;
        station.repeatLag = milliseconds(bus.between(1, 300));
        station.loses = bus.share() < 0.5 ? 0 : 0.1;
        station.diagnostics = bus.between(-1, 1);
    }
}

} // namespace

Tally playModemRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    putBehindModem(world);
    world.start();
    return askAtRandom(world, requests);
}

Tally playMixedModemRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    putBehindModem(world);
    missSomeRequests(world.bus);
    world.start();
    return askOfAllKinds(world, requests);
}

Tally playLumpRound(unsigned seed, int requests)
{
    LateWorld world(seed);
    putBehindModem(world);
    world.bus.latency = milliseconds(world.bus.between(1, 60));
    world.start();
    return askAtRandom(world, requests);
}

} // namespace dov417
