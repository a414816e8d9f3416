#include "late_bus.h"

#include <algorithm>

#include "line/crc16.h"
#include "line/frame_bytes.h"

namespace dov417 {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds longPause(300);

QByteArray wordOf(int value)
{
    return QByteArray().append(static_cast<char>(value >> 8)).append(static_cast<char>(value));
}

void write(LateStation& station, int address, int value)
{
    std::vector<int>& held = station.written[address];
    if (LateBus::heldBy(station, address) != value)
        held.push_back(value);
}

} // namespace

LateBus::LateBus(unsigned seed) : chance(seed) {}

int LateBus::ownValue(int station, int address)
{
    return station << 12 | (address >= firstCoils ? 0x800 : 0) | (address & 0xFFE);
}

int LateBus::heldBy(const LateStation& station, int address)
{
    const auto found = station.written.find(address);
    return found == station.written.end() || found->second.empty() ? 0 : found->second.back();
}

double LateBus::share()
{
    return std::uniform_real_distribution<>(0, 1)(chance);
}

int LateBus::between(int low, int high)
{
    return std::uniform_int_distribution<>(low, high)(chance);
}

void LateBus::send(const QByteArray& request, Clock::time_point now)
{
    const Clock::time_point end = now + wire.characters(static_cast<int>(request.size()));
    const bool collided = occupy(now, end);
    if (echoes) {
        QByteArray echo = request;
        if (garblesEchoes > 0 && share() < garblesEchoes)
            garble(echo);
        deliver(echo, end);
    }
    for (auto& [number, station] : stations) {
        const bool isBroadcast = request.at(0) == 0;
        if (collided || (!isBroadcast && number != static_cast<unsigned char>(request.at(0))))
            continue;
        if (station.misses > 0 && share() < station.misses)
            continue;
        if (station.dropsWhenAskedAgain)
            station.due.clear();
        const QByteArray reply = serve(station, request);
        if (!isBroadcast && !reply.isEmpty() && share() >= station.loses)
            queue(station, reply, end + station.delay());
    }
}

void LateBus::queue(LateStation& station, const QByteArray& reply, Clock::time_point earliest)
{
    const Clock::time_point at = station.due.empty()
                                     ? earliest
                                     : std::max(earliest, afterwards(station, station.due.back()));
    station.due.push_back({at, reply, false});
}

// When a station can speak again after this reply.
Clock::time_point LateBus::afterwards(const LateStation& station,
                                      const LateStation::Due& before) const
{
    const auto length = static_cast<int>(before.reply.size());
    return before.at + wire.characters(length) + length * station.byteGap + milliseconds(2);
}

Clock::time_point LateBus::nextEvent() const
{
    Clock::time_point next = Clock::time_point::max();
    for (const auto& [number, station] : stations)
        if (!station.due.empty())
            next = std::min(next, station.due.front().at);
    return arrivals_.empty() ? next : std::min(next, arrivals_.begin()->first);
}

QByteArray LateBus::arrived(Clock::time_point now)
{
    while (LateStation* const station = nextToSpeak(now))
        speak(*station);
    QByteArray bytes;
    while (!arrivals_.empty() && arrivals_.begin()->first <= now) {
        bytes += arrivals_.begin()->second;
        arrivals_.erase(arrivals_.begin());
    }
    return bytes;
}

LateStation* LateBus::nextToSpeak(Clock::time_point now)
{
    LateStation* first = nullptr;
    for (auto& [number, station] : stations)
        if (!station.due.empty() && station.due.front().at <= now &&
            (first == nullptr || station.due.front().at < first->due.front().at))
            first = &station;
    return first;
}

void LateBus::speak(LateStation& station)
{
    const LateStation::Due due = station.due.front();
    station.due.pop_front();
    QByteArray reply = due.reply;
    auto length = static_cast<int>(reply.size());
    const Micros pause = share() < station.pauses ? Micros(longPause) : Micros(0);
    const Clock::time_point end =
        due.at + wire.characters(length) + length * station.byteGap + pause;
    const bool collides = occupy(due.at, end);
    bool isWhole = !collides && pause == Micros(0);
    if (collides || share() < station.garbles) {
        garble(reply);
        isWhole = false;
    }
    if (share() < station.cuts) {
        length = between(1, length - 1);
        reply.truncate(length);
        isWhole = false;
    }
    station.answers += isWhole && !due.isCopy ? 1 : 0;
    if (station.byteGap == Micros(0) && pause == Micros(0)) {
        deliver(reply, end);
    } else {
        Clock::time_point at = due.at;
        for (int i = 0; i < length; ++i) {
            at += wire.characters(1) + station.byteGap + (i == length / 2 ? pause : Micros(0));
            deliver(reply.mid(i, 1), at);
        }
    }
    if (share() < station.repeats) {
        const Clock::time_point at =
            end + milliseconds(2) + Micros(between(0, static_cast<int>(station.repeatLag.count())));
        station.due.push_front({at, due.reply, true});
        // What the station says next comes after the copy.
        for (std::size_t i = 1; i < station.due.size(); ++i)
            station.due.at(i).at =
                std::max(station.due.at(i).at, afterwards(station, station.due.at(i - 1)));
        ++copies;
    }
}

void LateBus::deliver(const QByteArray& bytes, Clock::time_point at)
{
    if (latency > Micros(0)) {
        const auto since = at.time_since_epoch();
        at += (latency - since % latency) % latency;
    }
    at = std::max(at, lastArrival_);
    lastArrival_ = at;
    arrivals_.emplace(at, bytes);
}

// True if somebody else speaks then, whose bytes are garbled too.
bool LateBus::occupy(Clock::time_point from, Clock::time_point to)
{
    const bool collides = from < busyUntil_;
    busyUntil_ = std::max(busyUntil_, to);
    if (collides)
        for (auto& [at, bytes] : arrivals_)
            if (at > from + latency)
                garble(bytes);
    return collides;
}

void LateBus::garble(QByteArray& frame)
{
    ++garbled;
    do {
        const int first = between(0, static_cast<int>(frame.size()) - 1);
        const int last = std::min<int>(static_cast<int>(frame.size()) - 1, first + between(0, 5));
        for (int i = first; i <= last; ++i)
            frame[i] = static_cast<char>(between(0, 255));
        if (!hasGoodCrc(frame))
            return;
        ++chanceFits;
    } while (true);
}

QByteArray LateBus::serve(LateStation& station, const QByteArray& request) const
{
    const int function = request.at(1);
    const int first = wordAt(request, 2);
    const int count = wordAt(request, 4);
    char refusal = 1;
    if (function == 8) {
        ++station.echoRequests;
        if (station.diagnostics != 0)
            return station.diagnostics > 0 ? request : QByteArray();
    } else if (first >= firstRefused) {
        refusal = 2;
    } else if (function == 1 || function == 15) {
        return serveCoils(station, request);
    } else if (function == 3) {
        QByteArray reply = request.left(2);
        reply.append(static_cast<char>(2 * count));
        ++station.counter;
        for (int address = first; address < first + count; ++address)
            reply.append(wordOf(valueOf(station, request.at(0), address)));
        return withCrc(reply);
    } else if (function == 6) {
        write(station, first, count);
        return request;
    } else if (function == 16) {
        for (int i = 0; i < count; ++i)
            write(station, first + i, wordAt(request, 7 + 2 * i));
        return withCrc(request.left(6));
    }
    QByteArray reply = request.left(1);
    reply.append(static_cast<char>(function | 0x80)).append(refusal);
    return withCrc(reply);
}

int LateBus::valueOf(const LateStation& station, int number, int address) const
{
    const bool isWritten =
        address >= firstWrittenCoils || (address >= firstWritten && address < firstCoils);
    return isWritten            ? heldBy(station, address)
           : (address & 1) != 0 ? station.counter & 0xFFFF
                                : ownValue(number, address);
}

// Whole words of them: the first coil is the lowest bit.
QByteArray LateBus::serveCoils(LateStation& station, const QByteArray& request) const
{
    const int first = firstCoils + wordAt(request, 2) / 16;
    const int words = wordAt(request, 4) / 16;
    if (request.at(1) == 15) {
        for (int i = 0; i < words; ++i)
            write(station, first + i,
                  static_cast<unsigned char>(request.at(7 + 2 * i)) |
                      static_cast<unsigned char>(request.at(8 + 2 * i)) << 8);
        return withCrc(request.left(6));
    }
    QByteArray reply = request.left(2);
    reply.append(static_cast<char>(2 * words));
    ++station.counter;
    for (int i = 0; i < words; ++i) {
        const int value = valueOf(station, request.at(0), first + i);
        reply.append(static_cast<char>(value & 0xFF)).append(static_cast<char>(value >> 8));
    }
    return withCrc(reply);
}

} // namespace dov417
