#include "simulator/controller.h"

#include "line/crc16.h"
#include "line/frame_bytes.h"

namespace dov417::simulator {

namespace {

constexpr int noException = 0;
constexpr int coilOn = 0xFF00;
constexpr int coilOff = 0x0000;
constexpr int writeHeader = 7; // station, function, address, quantity, byte count

enum class Units {
    coils,
    registers
};
enum class Access {
    readRun,
    writeOne,
    writeRun
};

// The functions of this controller.
struct Function {
    int code;
    Units units;
    Access access;
    int Limits::*maxCount;
};
constexpr Function functions[] = {
    {1, Units::coils, Access::readRun, &Limits::readCoils},
    {3, Units::registers, Access::readRun, &Limits::readRegisters},
    {5, Units::coils, Access::writeOne, nullptr},
    {6, Units::registers, Access::writeOne, nullptr},
    {15, Units::coils, Access::writeRun, &Limits::writeCoils},
    {16, Units::registers, Access::writeRun, &Limits::writeRegisters},
};

const Function* functionOf(int code)
{
    for (const Function& function : functions) {
        if (function.code == code)
            return &function;
    }
    return nullptr;
}

// Checks length, quantity and values of the frame, without the memory.
bool isSensible(const Function& function, const QByteArray& frame, int count, const Limits& limits)
{
    if (requestLength(frame) != frame.size())
        return false;
    if (function.access != Access::writeOne)
        return count >= 1 && count <= limits.*function.maxCount;
    if (function.units == Units::registers)
        return true;
    const int value = wordAt(frame, 4);
    return value == coilOn || value == coilOff;
}

bool isThere(const Function& function, int address, int count)
{
    return function.units == Units::coils ? StationMemory::hasCoils(address, count)
                                          : StationMemory::hasRegisters(address, count);
}

QByteArray readCoils(const StationMemory& memory, int address, int count)
{
    QByteArray data((count + 7) / 8, '\0');
    for (int i = 0; i < count; ++i) {
        if (memory.coil(address + i))
            data[i / 8] = static_cast<char>(byteAt(data, i / 8) | 1 << (i % 8));
    }
    return data;
}

QByteArray readRegisters(const StationMemory& memory, int address, int count)
{
    QByteArray data;
    for (int i = 0; i < count; ++i)
        appendWord(data, memory.registerValue(address + i));
    return data;
}

void write(StationMemory& memory, const Function& function, const QByteArray& frame, int address,
           int count)
{
    const bool one = function.access == Access::writeOne;
    for (int i = 0; i < count; ++i) {
        if (function.units == Units::registers) {
            const int value = wordAt(frame, one ? 4 : writeHeader + 2 * i);
            memory.setRegister(address + i, static_cast<std::uint16_t>(value));
        } else {
            const bool on = one ? wordAt(frame, 4) == coilOn
                                : (byteAt(frame, writeHeader + i / 8) >> (i % 8) & 1) != 0;
            memory.setCoil(address + i, on);
        }
    }
}

QByteArray readReply(const StationMemory& memory, const Function& function, const Answer& answer)
{
    const QByteArray data = function.units == Units::coils
                                ? readCoils(memory, answer.address, answer.count)
                                : readRegisters(memory, answer.address, answer.count);
    QByteArray reply;
    reply.append(static_cast<char>(answer.station));
    reply.append(static_cast<char>(answer.function));
    reply.append(static_cast<char>(data.size() & 0xFF)); // 256 bytes count as 0
    return withCrc(reply + data);
}

// Diagnostics, sub-function 0: sends back what it was sent.
bool isEchoRequest(const QByteArray& request)
{
    constexpr int length = 8;
    return request.size() == length && byteAt(request, 1) == 8 && wordAt(request, 2) == 0;
}

QByteArray exceptionReply(const Answer& answer)
{
    QByteArray reply;
    reply.append(static_cast<char>(answer.station));
    reply.append(static_cast<char>(answer.function | 0x80));
    reply.append(static_cast<char>(answer.exception));
    return withCrc(reply);
}

} // namespace

Limits Limits::strict()
{
    Limits limits;
    limits.readRegisters = 125;
    limits.readCoils = 2000;
    limits.writeRegisters = 123;
    limits.writeCoils = 1968;
    return limits;
}

Controller::Controller(Memory& memory, const Limits& limits) : memory_(memory), limits_(limits) {}

Answer Controller::serve(const QByteArray& request)
{
    Answer answer = decide(request);
    ++counters_.frames;
    switch (answer.outcome) {
    case Outcome::answered:
        ++counters_.answered;
        break;
    case Outcome::refused:
        ++counters_.refused;
        break;
    case Outcome::broadcast:
        ++counters_.broadcasts;
        break;
    case Outcome::otherStation:
        ++counters_.otherStation;
        break;
    case Outcome::badFrame:
        ++counters_.badFrames;
        break;
    }
    return answer;
}

Answer Controller::decide(const QByteArray& request)
{
    Answer answer;
    if (!hasGoodCrc(request))
        return answer;
    answer.station = byteAt(request, 0);
    answer.function = byteAt(request, 1);
    const Function* function = functionOf(answer.function);
    if (function && request.size() >= 4 + 2 + crcLength) {
        answer.address = wordAt(request, 2);
        answer.count = function->access == Access::writeOne ? 1 : wordAt(request, 4);
    }

    const bool broadcast = answer.station == broadcastStation;
    if (!broadcast && !memory_.has(answer.station)) {
        answer.outcome = Outcome::otherStation;
        return answer;
    }

    if (!broadcast && isEchoRequest(request)) {
        answer.outcome = Outcome::answered;
        answer.reply = request;
        return answer;
    }
    if (!function)
        answer.exception = illegalFunction;
    else if (!isSensible(*function, request, answer.count, limits_))
        answer.exception = illegalValue;
    else if (!isThere(*function, answer.address, answer.count))
        answer.exception = illegalAddress;

    const bool execute = answer.exception == noException;
    if (broadcast) {
        answer.outcome = Outcome::broadcast;
        if (execute && function->access != Access::readRun) {
            for (int station : memory_.stations())
                write(*memory_.station(station), *function, request, answer.address, answer.count);
            ++counters_.writes;
        }
        return answer;
    }
    if (!execute) {
        answer.outcome = Outcome::refused;
        answer.reply = exceptionReply(answer);
        return answer;
    }

    answer.outcome = Outcome::answered;
    StationMemory& memory = *memory_.station(answer.station);
    if (function->access == Access::readRun) {
        answer.reply = readReply(memory, *function, answer);
    } else {
        write(memory, *function, request, answer.address, answer.count);
        ++counters_.writes;
        // A single write is echoed whole, a run is acknowledged by its address and quantity.
        answer.reply = withCrc(request.left(6));
    }
    return answer;
}

QByteArray Controller::answer(const QByteArray& request)
{
    return serve(request).reply;
}

Memory& Controller::memory()
{
    return memory_;
}

const ControllerCounters& Controller::counters() const
{
    return counters_;
}

} // namespace dov417::simulator
