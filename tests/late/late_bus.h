// A bus of stations that answer late, in order and each request at most once, in time that is
// handed in. Unlike the simulated controller they never forget a request because the next one
// comes. Where two speak at once the bytes are garbled, as on two wires.
//
// What a register holds names its station and its address, or counts the reads of its station, so
// that a wrong value and an old one are recognised by themselves.
#ifndef DOV417_TESTS_LATE_BUS_H
#define DOV417_TESTS_LATE_BUS_H

#include <QByteArray>
#include <deque>
#include <functional>
#include <map>
#include <random>
#include <vector>

#include "line/clock.h"
#include "line/serial_format.h"

namespace dov417 {

struct LateStation {
    std::function<Micros()> delay; // from the end of a request to the first byte of its reply
    double misses = 0;             // share of requests that it does not hear
    double loses = 0;              // share of replies that never come,
    double garbles = 0;            // that come with wrong bytes,
    double cuts = 0;               // that come without their end,
    double pauses = 0;             // that stop in the middle for longer than a frame is waited for,
    double repeats = 0;            // that come twice, as from a radio modem
    Micros repeatLag{0};           // the maximum from a reply to its copy; before any other reply
    Micros byteGap{0};             // between two bytes of a reply
    bool dropsWhenAskedAgain = false;
    int diagnostics = 1; // 1: echoes, 0: answers with an exception, -1: says nothing

    int echoRequests = 0;
    int counter = 0; // registers with an odd number show it; it is raised by each read
    int answers = 0; // that were heard as a whole
    std::map<int, std::vector<int>> written; // by register, from firstWritten on: all it has held
    struct Due {
        Clock::time_point at;
        QByteArray reply;
        bool isCopy = false;
    };
    std::deque<Due> due;
};

class LateBus {
public:
    static constexpr int firstWritten = 0x1000; // 0 until it is written
    static constexpr int firstRefused = 0x2000;
    // Coils are held by words of sixteen, which are registers from here on for all that is below:
    // the first of them say what they are, those from firstWrittenCoils on can be written.
    static constexpr int firstCoils = 0x10000;
    static constexpr int firstWrittenCoils = firstCoils + 0x800;

    explicit LateBus(unsigned seed);

    // What a register of a station shows if it is none that counts or was written.
    static int ownValue(int station, int address);

    void send(const QByteArray& request, Clock::time_point now);
    // When something happens next; the end of time if nothing does.
    Clock::time_point nextEvent() const;
    // What has arrived by now.
    QByteArray arrived(Clock::time_point now);

    double share();
    int between(int low, int high);
    // A register that can be written holds this value.
    static int heldBy(const LateStation& station, int address);

    SerialFormat wire;
    Micros latency{0};        // of an adapter that hands on what it has got so often
    bool echoes = false;      // the adapter hears what it sends
    double garblesEchoes = 0; // share of what it hears of that with wrong bytes
    std::map<int, LateStation> stations;
    long long copies = 0;     // of replies
    long long garbled = 0;    // frames
    long long chanceFits = 0; // of those had a CRC that fits; they were garbled once more
    std::mt19937 chance;

private:
    bool occupy(Clock::time_point from, Clock::time_point to);
    void garble(QByteArray& frame);
    void queue(LateStation& station, const QByteArray& reply, Clock::time_point earliest);
    Clock::time_point afterwards(const LateStation& station, const LateStation::Due& before) const;
    LateStation* nextToSpeak(Clock::time_point now);
    void speak(LateStation& station);
    void deliver(const QByteArray& bytes, Clock::time_point at);
    QByteArray serve(LateStation& station, const QByteArray& request) const;
    int valueOf(const LateStation& station, int number, int address) const;
    QByteArray serveCoils(LateStation& station, const QByteArray& request) const;

    Clock::time_point busyUntil_{};
    Clock::time_point lastArrival_{};
    std::multimap<Clock::time_point, QByteArray> arrivals_;
};

} // namespace dov417

#endif
