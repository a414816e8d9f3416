// A session on a pseudo-terminal whose far end the test plays.
#ifndef DOV417_TESTS_SESSION_WORLD_H
#define DOV417_TESTS_SESSION_WORLD_H

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "line/crc16.h"
#include "loaded_library.h"
#include "pty_slave.h"
#include "session/session.h"

namespace dov417 {

inline Address words(const char* regName, int first, int length = 1, int station = 1)
{
    Address address;
    address.station = station;
    address.regName = regName;
    address.first = first;
    address.length = length;
    return address;
}

inline Address doubleWords(const char* regName, int first, int length = 2)
{
    Address address = words(regName, first, length);
    address.width = Width::doubleWord;
    return address;
}

inline Address bits(const char* regName, int first, int length = 1)
{
    Address address = words(regName, first, length);
    address.width = Width::bit;
    return address;
}

inline Write wordWrite(const char* regName, int address, unsigned char value)
{
    return {words(regName, address), {value, 0}};
}

class SessionOnALine : public LoadedLibrary {
protected:
    SessionOnALine()
    {
        line.device = slave.port();
        line.isShared = false;
        // The slave repeats every request, which confirms a single write.
        slave.arrived = [this](const QByteArray& bytes) {
            received += bytes;
            slave.send(bytes);
        };
    }

    void SetUp() override
    {
        session = std::make_unique<Session>(library, SessionSettings{2, 20});
        ASSERT_TRUE(session->open(line).accepted);
    }

    // Answers reads and writes of registers from `registers` (by their number on the line,
    // 0x0500 + R_W), refuses those in `illegal` and more than `maxRegisters` at once; says nothing
    // while it `isSilent` or for stations in `silentStations`.
    void beAController()
    {
        slave.arrived = [this](const QByteArray& bytes) {
            pending += bytes;
            while (pending.size() >= lengthOf(pending)) {
                const QByteArray request = pending.left(lengthOf(pending));
                pending.remove(0, request.size());
                received += request;
                answer(request);
            }
        };
    }

    // Outcomes by number, in the order in which they came.
    Done outcome(int number)
    {
        return [this, number](const Result& result) {
            outcomes[number] = result.accepted ? "accepted" : result.reason;
        };
    }

    bool waitForOutcomes(std::size_t count)
    {
        return waitUntil([this, count]() { return outcomes.size() == count; });
    }

    int number(const View& view) const
    {
        return view.value.at(0) + 256 * view.value.at(1);
    }

    PtySlave slave;
    LineSettings line;
    QByteArray received;
    QByteArray pending;
    std::map<int, int> registers;
    std::set<int> illegal;
    int maxRegisters = 128;
    std::vector<int> counts; // registers in each request
    int requests = 0;
    bool isSilent = false;
    std::function<void(const QByteArray&)> sendReply = [this](const QByteArray& bytes) {
        slave.send(bytes);
    };
    std::set<int> silentStations;
    std::map<int, std::string> outcomes;
    std::unique_ptr<Session> session;

private:
    static int number(const QByteArray& bytes, int at)
    {
        return static_cast<unsigned char>(bytes.at(at)) * 256 +
               static_cast<unsigned char>(bytes.at(at + 1));
    }

    // Of the request at the front; a write of several registers counts its bytes.
    static int lengthOf(const QByteArray& bytes)
    {
        constexpr int shortest = 8;
        constexpr int withoutData = 9;
        return bytes.size() < shortest || bytes.at(1) != 16
                   ? shortest
                   : withoutData + static_cast<unsigned char>(bytes.at(6));
    }

    void answer(const QByteArray& request)
    {
        ++requests;
        if (isSilent || silentStations.count(request.at(0)) > 0)
            return;
        if (request.at(1) == 8) {
            sendReply(request);
            return;
        }
        const int first = number(request, 2);
        const int count = request.at(1) == 6 ? 1 : number(request, 4);
        counts.push_back(count);
        const auto refused = illegal.lower_bound(first);
        const bool isIllegal = refused != illegal.end() && *refused < first + count;
        if (isIllegal || count > maxRegisters) {
            QByteArray exception = request.left(1);
            exception.append(static_cast<char>(request.at(1) | 0x80));
            exception.append(isIllegal ? '\2' : '\3');
            sendReply(withCrc(exception));
            return;
        }
        if (request.at(1) == 6) {
            registers[first] = number(request, 4);
            sendReply(request);
            return;
        }
        if (request.at(1) == 16) {
            for (int i = 0; i < count; ++i)
                registers[first + i] = number(request, 7 + 2 * i);
            sendReply(withCrc(request.left(6)));
            return;
        }
        QByteArray values = request.left(2);
        values.append(static_cast<char>(2 * count));
        for (int i = 0; i < count; ++i) {
            values.append(static_cast<char>(registers[first + i] >> 8));
            values.append(static_cast<char>(registers[first + i] & 0xFF));
        }
        sendReply(withCrc(values));
    }
};

} // namespace dov417

#endif
