// A bus of stations that answer late, in order and each request at most once, in time that is
// handed in. Unlike the simulated controller they never forget a request because the next one
// comes. Where two speak at once the bytes are garbled, as on two wires.
#ifndef DOV417_TESTS_LATE_BUS_H
#define DOV417_TESTS_LATE_BUS_H

#include <deque>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <vector>

#include "line/clock.h"
#include "line/crc16.h"
#include "line/serial_format.h"

namespace dov417 {

struct LateStation {
    std::function<Micros()> delay; // from the end of a request to the first byte of its reply
    double loses = 0;              // share of replies that never come
    double garbles = 0;            // share of replies that come with a wrong bit
    bool dropsWhenAskedAgain = false;
    int echoRequests = 0;
    int diagnostics = 1; // 1: echoes, 0: answers with an exception, -1: says nothing

    std::map<int, int> written; // registers from 0x1000 on
    int counter = 0;            // registers with an odd number show it; it is raised by each read
    struct Due {
        Clock::time_point at;
        QByteArray reply;
    };
    std::deque<Due> due;
};

class LateBus {
public:
    explicit LateBus(unsigned seed) : chance(seed) {}

    // What a register of a station shows if it is none that counts or was written: it names itself.
    static int ownValue(int station, int address)
    {
        return station << 12 | (address & 0xFFE);
    }

    void send(const QByteArray& request, Clock::time_point now)
    {
        const Clock::time_point end = now + wire.characters(static_cast<int>(request.size()));
        const bool collided = occupy(now, end);
        const auto found = stations.find(request.at(0));
        if (collided || found == stations.end())
            return;
        LateStation& station = found->second;
        if (station.dropsWhenAskedAgain)
            station.due.clear();
        const QByteArray reply = serve(station, request);
        if (reply.isEmpty() || share() < station.loses)
            return;
        Clock::time_point at = end + station.delay();
        if (!station.due.empty())
            at = std::max(at, station.due.back().at + std::chrono::milliseconds(2));
        station.due.push_back({at, reply});
    }

    // When something happens next; the end of time if nothing does.
    Clock::time_point nextEvent() const
    {
        Clock::time_point next = Clock::time_point::max();
        for (const auto& [number, station] : stations)
            if (!station.due.empty())
                next = std::min(next, station.due.front().at);
        return arrivals_.empty() ? next : std::min(next, arrivals_.begin()->first);
    }

    // What has arrived by now.
    QByteArray arrived(Clock::time_point now)
    {
        for (auto& [number, station] : stations) {
            while (!station.due.empty() && station.due.front().at <= now) {
                QByteArray reply = station.due.front().reply;
                const Clock::time_point begin = station.due.front().at;
                station.due.pop_front();
                const Clock::time_point end =
                    begin + wire.characters(static_cast<int>(reply.size()));
                if (occupy(begin, end) || share() < station.garbles)
                    reply[static_cast<int>(reply.size()) / 2] =
                        static_cast<char>(reply.at(reply.size() / 2) ^ 0x10);
                arrivals_.emplace(end, reply);
            }
        }
        QByteArray bytes;
        while (!arrivals_.empty() && arrivals_.begin()->first <= now) {
            bytes += arrivals_.begin()->second;
            arrivals_.erase(arrivals_.begin());
        }
        return bytes;
    }

    double share()
    {
        return std::uniform_real_distribution<>(0, 1)(chance);
    }
    int between(int low, int high)
    {
        return std::uniform_int_distribution<>(low, high)(chance);
    }

    SerialFormat wire;
    std::map<int, LateStation> stations;
    std::mt19937 chance;

private:
    // True if somebody else speaks then.
    bool occupy(Clock::time_point from, Clock::time_point to)
    {
        const bool collides = from < busyUntil_;
        busyUntil_ = std::max(busyUntil_, to);
        return collides;
    }

    static int wordAt(const QByteArray& bytes, int index)
    {
        return static_cast<unsigned char>(bytes.at(index)) * 256 +
               static_cast<unsigned char>(bytes.at(index + 1));
    }

    QByteArray serve(LateStation& station, const QByteArray& request) const
    {
        const int first = wordAt(request, 2);
        const int count = wordAt(request, 4);
        switch (request.at(1)) {
        case 3: {
            QByteArray reply = request.left(2);
            reply.append(static_cast<char>(2 * count));
            ++station.counter;
            for (int address = first; address < first + count; ++address) {
                const int value = address >= 0x1000    ? station.written[address]
                                  : (address & 1) != 0 ? station.counter & 0xFFFF
                                                       : ownValue(request.at(0), address);
                reply.append(static_cast<char>(value >> 8)).append(static_cast<char>(value & 0xFF));
            }
            return withCrc(reply);
        }
        case 6:
            station.written[first] = count;
            return request;
        case 8:
            ++station.echoRequests;
            if (station.diagnostics == 1)
                return request;
            break;
        default:
            break;
        }
        if (request.at(1) == 8 && station.diagnostics < 0)
            return QByteArray();
        QByteArray refusal = request.left(1);
        refusal.append(static_cast<char>(request.at(1) | 0x80)).append('\1');
        return withCrc(refusal);
    }

    Clock::time_point busyUntil_{};
    std::multimap<Clock::time_point, QByteArray> arrivals_;
};

} // namespace dov417

#endif
