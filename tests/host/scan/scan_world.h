// Slaves on a line whose time is in the hands of the test, and what a scan finds there.
#ifndef DOV417_TESTS_SCAN_WORLD_H
#define DOV417_TESTS_SCAN_WORLD_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "line/crc16.h"
#include "scan/station_scan.h"

namespace dov417 {

// Coils 0 to 15, register 384.
inline ScanQuestions questionsOfTheTest()
{
    return questionsFrom({{"I_W", true, 0, 128}, {"Q_W", true, 2048, 128}, {"T", false, 384, 128}});
}

struct Slave {
    int station = 1;
    std::string line = "38400,8,EVEN,1";
    int delayMs = 5;
    std::string answer; // in hex, without its CRC; empty: as a controller does
    bool isBroken = false;
    bool knowsRegisters = true;
    int copies = 1;
};

class ScanWorld : public ::testing::Test {
protected:
    ScanWorld()
    {
        settings.lines = {parseRtuFormat("38400,8,EVEN,1")};
        settings.stations = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    }

    void begin()
    {
        ScanEvents events;
        events.setLine = [this](const SerialFormat& line) {
            current = toText(line);
            lines.push_back(current);
            return current != refusedLine;
        };
        events.write = [this](const QByteArray& frame) { goesOut(frame); };
        events.wakeAt = [this](Clock::time_point when) { wake_ = when; };
        events.received = [this](const ScanPiece& piece) { pieces.push_back(piece); };
        events.found = [this](const Found& each) {
            found.push_back((each.line ? toText(*each.line) : "network") + " " +
                            std::to_string(each.station) + (each.isSlow ? " slow" : "") +
                            (each.isConfirmed ? "" : " once"));
            times[each.station] = each.took;
        };
        events.heard = [this](const ScanHeard& each) { heard.push_back(each); };
        events.done = [this]() { isDone = true; };
        scan = std::make_unique<StationScan>(settings, questionsOfTheTest(), events);
        startedAt = now;
        scan->start(now);
    }

    // So much time goes by, or all that the scan takes.
    void pass(Clock::duration time)
    {
        const Clock::time_point until = now + time;
        while (!isDone) {
            const bool isByte = !underWay_.empty() && underWay_.begin()->first <= wake_;
            const Clock::time_point next = isByte ? underWay_.begin()->first : wake_;
            if (next > until)
                break;
            now = std::max(now, next);
            if (isByte) {
                const Lump lump = underWay_.begin()->second;
                underWay_.erase(underWay_.begin());
                scan->bytesCame(lump.line == current || !isWire ? lump.bytes : garbled(lump.bytes),
                                now);
            } else {
                wake_ = Clock::time_point::max();
                scan->timerDue(now);
            }
        }
        if (!isDone)
            now = until;
    }
    void run()
    {
        begin();
        pass(std::chrono::hours(1));
        EXPECT_TRUE(isDone);
    }

    // Somebody else sends this, without a CRC, after so many milliseconds from now on.
    void sendFrame(int milliseconds, const char* frame, const char* line = "38400,8,EVEN,1")
    {
        sendBytes(milliseconds, withCrc(QByteArray::fromHex(frame)), line);
    }
    void sendBytes(int milliseconds, const QByteArray& bytes, const char* line = "38400,8,EVEN,1")
    {
        underWay_.insert({now + std::chrono::milliseconds(milliseconds), {line, bytes}});
    }

    std::vector<HeardKind> heardKinds() const
    {
        std::vector<HeardKind> kinds;
        for (const ScanHeard& each : heard)
            kinds.push_back(each.kind);
        return kinds;
    }
    long long elapsedMs() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(now - startedAt).count();
    }

    ScanSettings settings;
    std::vector<Slave> slaves;
    bool isWire = true;  // garbles what is sent at other settings
    bool echoes = false; // the adapter hears what it sends
    QByteArray glitch;   // before each answer
    std::string refusedLine;
    std::unique_ptr<StationScan> scan;
    Clock::time_point now = Clock::time_point() + std::chrono::hours(1);
    Clock::time_point startedAt{};
    std::string current;            // empty: over a network
    std::vector<std::string> lines; // that were set
    std::vector<QByteArray> sent;
    std::vector<ScanPiece> pieces;
    std::vector<std::string> found;
    std::map<int, Micros> times;
    std::vector<ScanHeard> heard;
    bool isDone = false;

private:
    struct Lump {
        std::string line;
        QByteArray bytes;
    };

    static QByteArray garbled(const QByteArray& bytes)
    {
        QByteArray result = bytes;
        for (char& byte : result)
            byte = static_cast<char>(byte ^ 0x5A);
        return result;
    }

    void goesOut(const QByteArray& frame)
    {
        sent.push_back(frame);
        const auto end =
            current.empty() ? now : now + parseRtuFormat(current).characters(frame.size());
        if (echoes)
            underWay_.insert({end, {current, frame}});
        for (const Slave& slave : slaves) {
            if (slave.line != current || slave.station != static_cast<unsigned char>(frame.at(0)))
                continue;
            const QByteArray answer = answerOf(slave, frame);
            for (int copy = 1; copy <= slave.copies && !answer.isEmpty(); ++copy)
                underWay_.insert({end + copy * std::chrono::milliseconds(slave.delayMs),
                                  {slave.line, glitch + answer}});
        }
    }

    static QByteArray answerOf(const Slave& slave, const QByteArray& frame)
    {
        if (frame.at(1) == 3 && !slave.knowsRegisters)
            return QByteArray();
        const QByteArray whole =
            withCrc(slave.answer.empty() ? frame.left(2) + QByteArray::fromHex("021234")
                                         : QByteArray::fromHex(slave.answer.c_str()));
        return slave.isBroken ? garbled(whole) : whole;
    }

    Clock::time_point wake_ = Clock::time_point::max();
    std::multimap<Clock::time_point, Lump> underWay_;
};

} // namespace dov417

#endif
